#pragma once

namespace ui {

// Boxes and circles to tick get an edge that is seen on every palette: the style that comes with Qt draws theirs darker
// than the window, which on a dark one is nothing. Other styles are left as they are. After the application is made.
void useReadableStyle();

}  // namespace ui
