#pragma once

namespace ui {

// From now on lists, texts and other areas that the style draws alike with and without the focus have an outline while
// they have it.
void showFocusOutlines();

}  // namespace ui
