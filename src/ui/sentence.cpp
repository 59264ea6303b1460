#include "ui/sentence.h"

namespace ui {

QLabel* makeSentence(const QString& text) {
  auto* label = new QLabel(text);
  label->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  label->setWordWrap(true);  // after the policy: it is told there that the height follows the width
  return label;
}

}  // namespace ui
