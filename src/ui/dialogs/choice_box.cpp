#include "ui/dialogs/choice_box.h"

#include <QCompleter>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>

#include "ui/dialogs/messages.h"

namespace ui {

ChoiceBox::ChoiceBox(Source source, const Texts& texts, QWidget* parent)
    : QComboBox(parent), source_(std::move(source)), texts_(texts) {
  setEditable(true);
  setInsertPolicy(NoInsert);
  // The list may hold long names; it does not decide how wide the dialog is.
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(16);
  completer()->setCompletionMode(QCompleter::PopupCompletion);
  lineEdit()->setPlaceholderText(texts("IDS_FILTER_NONE"));
  connect(lineEdit(), &QLineEdit::textEdited, this, &ChoiceBox::edited);
  connect(this, &QComboBox::activated, this, &ChoiceBox::edited);
}

void ChoiceBox::setValue(const QString& value, const QString& shown) {
  given_ = {shown, value};
  setEditText(shown);
  lineEdit()->setCursorPosition(0);
}

QString ChoiceBox::value() const {
  const QString text = currentText().trimmed();
  if (text == given_.shown) return given_.value;
  const auto found = std::find_if(choices_.begin(), choices_.end(), [&](const auto& c) { return c.shown == text; });
  return found == choices_.end() ? text : found->value;
}

QString ChoiceBox::shownValue() {
  loadList();
  const QString wanted = value();
  const auto found = std::find_if(choices_.begin(), choices_.end(), [&](const auto& c) { return c.value == wanted; });
  return found == choices_.end() ? wanted : found->shown;
}

void ChoiceBox::loadList() {
  if (loaded_) return;
  loaded_ = true;  // already now: the source may let events through
  choices_.clear();
  loaded_ = attempt(this, texts_, [this] { choices_ = source_(); });
  const QString text = currentText();
  clear();
  for (const Choice& choice : choices_) addItem(choice.shown);
  setCurrentIndex(findText(text));
  setEditText(text);
}

// Typing takes the place of what was proposed. After the event: a click would set the cursor.
void ChoiceBox::focusInEvent(QFocusEvent* event) {
  QComboBox::focusInEvent(event);
  if (event->reason() != Qt::PopupFocusReason) QTimer::singleShot(0, lineEdit(), &QLineEdit::selectAll);
}

void ChoiceBox::showPopup() {
  loadList();
  QComboBox::showPopup();
}

void ChoiceBox::keyPressEvent(QKeyEvent* event) {
  // The keys that go through the entries or open them.
  if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up || event->key() == Qt::Key_F4) loadList();
  QComboBox::keyPressEvent(event);
}

}  // namespace ui
