#include "ui/narrow_page.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>

namespace ui {

namespace {

// Letters of a choice that are seen without opening the list, and the room of its arrow in letters.
constexpr int kLettersOfChoice = 8;
constexpr int kLettersOfArrow = 4;

}  // namespace

void makeNarrow(QWidget& page) {
  for (auto* form : page.findChildren<QFormLayout*>()) form->setRowWrapPolicy(QFormLayout::WrapAllRows);
  for (auto* label : page.findChildren<QLabel*>()) {
    if (label->pixmap().isNull()) label->setWordWrap(true);
  }
  for (auto* box : page.findChildren<QComboBox*>()) {
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(kLettersOfChoice);
    // A box that was asked for its least width before remembers it.
    box->setMinimumWidth(box->fontMetrics().averageCharWidth() * (kLettersOfChoice + kLettersOfArrow));
  }
}

}  // namespace ui
