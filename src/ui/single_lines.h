#pragma once

namespace ui {

// From now on what is pasted into a field of one line is one line: line breaks at its ends, as a cell copied from a
// spreadsheet has one, go; others become spaces. They would be stored or looked for without being seen.
void keepLinesSingle();

}  // namespace ui
