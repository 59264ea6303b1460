#pragma once

#include <QPalette>

namespace ui {

// The colour at `part` (0..1) of the way from one to the other.
[[nodiscard]] QColor mixed(const QColor& from, const QColor& to, double part);

// How much two colours differ in brightness, as the accessibility guidelines of the web count it: from 1, alike, to 21.
[[nodiscard]] double contrastOf(const QColor& text, const QColor& ground);
// What a text needs.
inline constexpr double kReadable = 4.5;

// The palette with the colours of texts changed as little as makes them readable: of selected rows, hints and links,
// which light and dark palettes of desktops leave too faint. Greyed-out texts stay as they are.
[[nodiscard]] QPalette readablePalette(QPalette palette);

// Gives the application such a palette, and again whenever the desktop changes its own.
void keepPaletteReadable();

}  // namespace ui
