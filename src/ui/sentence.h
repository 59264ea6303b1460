#pragma once

#include <QLabel>

namespace ui {

// A text that takes the width there is, and as many lines as it needs then.
[[nodiscard]] QLabel* makeSentence(const QString& text = {});

}  // namespace ui
