#include "ui/dialogs/form_dialog.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTreeWidget>
#include <algorithm>

#include "ui/dialogs/mnemonics.h"
#include "ui/manual.h"
#include "ui/screen_fit.h"
#include "ui/scroll_page.h"

namespace ui {

void focusButtonsLast(QDialogButtonBox& buttons) {
  QWidget& dialog = *buttons.window();
  // A new widget comes last.
  buttons.setParent(nullptr);
  dialog.layout()->addWidget(&buttons);
  // Enter is never another button, even while OK cannot be pressed.
  buttons.button(QDialogButtonBox::Ok)->setDefault(true);
}

FormDialog::FormDialog(const Texts& texts, const char* captionKey, const char* name, QWidget* parent)
    : QDialog(parent),
      texts_(texts),
      body_(new QVBoxLayout),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)) {
  setObjectName(name);
  setWindowTitle(texts(captionKey).remove("..."));
  named(okButton(), "ok")->setText(texts("IDS_OK"));
  named(cancelButton(), "cancel")->setText(texts("IDS_CANCEL"));
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(body_);
  layout->addWidget(buttons_);
  auto* help = named(buttons_->addButton(QDialogButtonBox::Help), "help");
  help->setText(texts("IDS_HELP"));
  connect(buttons_, &QDialogButtonBox::helpRequested, this, [this] { askForManual(*this); });
  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QPushButton* FormDialog::addButton(const char* key, const char* name) {
  return named(buttons_->addButton(texts_(key), QDialogButtonBox::ResetRole), name);
}

void FormDialog::setVisible(bool visible) {
  if (visible && !prepared_) {  // now the dialog is whole
    assignMnemonics(*this);
    scrollWhatIsTooLarge();
    focusButtonsLast(*buttons_);
    prepared_ = true;
    resize(roomySize());
    fitToScreen(*this);
  }
  QDialog::setVisible(visible);
}

// High enough for its sentences on as many lines as they take: QWidget::adjustSize() would stop at two thirds of the
// screen, and cut them.
QSize FormDialog::roomySize() const {
  QSize size = testAttribute(Qt::WA_Resized) ? this->size() : sizeHint();
  if (!layout()->hasHeightForWidth()) return size;
  const int needed = testAttribute(Qt::WA_Resized) ? layout()->totalMinimumHeightForWidth(size.width())
                                                   : layout()->totalHeightForWidth(size.width());
  return size.expandedTo({0, needed});
}

// The body alone: the buttons stay in sight.
void FormDialog::scrollWhatIsTooLarge() {
  layout()->activate();
  QSize least = layout()->totalMinimumSize();
  if (layout()->hasHeightForWidth()) {
    const int width = std::max(roomySize().width(), least.width());
    least = least.expandedTo({0, layout()->totalMinimumHeightForWidth(width)});
  }
  const QSize available = availableSize(*this);
  if (least.width() <= available.width() && least.height() <= available.height()) return;
  auto* outer = static_cast<QVBoxLayout*>(layout());
  outer->removeItem(body_);
  body_->setParent(nullptr);
  auto* holder = new QWidget;
  holder->setLayout(body_);
  outer->insertWidget(0, new ScrollPage(holder), 1);
  setMinimumSize(0, 0);
  resize(available);
}

void FormDialog::allowOnlyLooking() {
  for (auto* line : findChildren<QLineEdit*>()) line->setReadOnly(true);
  for (auto* text : findChildren<QPlainTextEdit*>()) text->setReadOnly(true);
  for (auto* box : findChildren<QComboBox*>()) box->setEnabled(false);
  for (auto* box : findChildren<QAbstractSpinBox*>()) box->setEnabled(false);
  for (auto* tree : findChildren<QTreeWidget*>()) tree->setEnabled(false);
  for (auto* list : findChildren<QListWidget*>()) list->setEnabled(false);
  for (auto* button : findChildren<QAbstractButton*>()) button->setEnabled(button == cancelButton());
  body_->addWidget(makeHint(texts_("IDS_MAY_ONLY_LOOK")));
}

QLabel* FormDialog::makeHint(const QString& text) {
  auto* label = new QLabel(text);
  label->setWordWrap(true);
  return label;
}

QCheckBox* FormDialog::makeCheckBox(const char* key, const char* name) {
  return named(new QCheckBox(texts_(key)), name);
}

}  // namespace ui
