#include "ui/dialogs/form_dialog.h"

namespace ui {

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
  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QPushButton* FormDialog::addButton(const char* key, const char* name) {
  auto* button = named(buttons_->addButton(texts_(key), QDialogButtonBox::ResetRole), name);
  button->setAutoDefault(false);
  return button;
}

QCheckBox* FormDialog::makeCheckBox(const char* key, const char* name) {
  return named(new QCheckBox(texts_(key)), name);
}

}  // namespace ui
