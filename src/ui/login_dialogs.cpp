#include "ui/login_dialogs.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/dialogs/mnemonics.h"
#include "ui/icons.h"
#include "ui/translate_window.h"

namespace ui {

namespace {

constexpr int kPictureSize = 48;

// Its texts are keys in brackets until the window is translated.
class FormDialog : public QDialog {
 public:
  FormDialog(QWidget* parent, const char* caption) : QDialog(parent) {
    setWindowTitle(caption);
    setWindowIcon(icon(Icon::Program));
    auto* picture = new QLabel;
    picture->setPixmap(icon(Icon::Program).pixmap(kPictureSize));
    form_ = new QFormLayout;
    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    top->addWidget(picture, 0, Qt::AlignTop);
    top->addLayout(form_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText("<IDS_OK>");
    buttons->button(QDialogButtonBox::Ok)->setObjectName("ok");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("cancel");
    buttons->button(QDialogButtonBox::Cancel)->setText("<IDS_CANCEL>");
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setMinimumWidth(fontMetrics().averageCharWidth() * 50);
  }

  QLineEdit* addField(const char* label, const char* name, bool secret) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    if (secret) edit->setEchoMode(QLineEdit::Password);
    form_->addRow(label, edit);
    return edit;
  }

 private:
  QFormLayout* form_;
};

}  // namespace

std::optional<security::Credentials> QtLoginPrompt::askLogin(const std::string& proposedName) {
  FormDialog dialog(parent_, "<IDS_LOGIN>");
  dialog.setObjectName("loginDialog");
  auto* name = dialog.addField("<IDS_USER>", "userName", false);
  auto* password = dialog.addField("<IDS_PASSWORD>", "password", true);
  name->setText(toQt(proposedName));
  if (!proposedName.empty()) password->setFocus();
  translateWindow(dialog, language_());
  assignMnemonics(dialog);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  security::Credentials given{fromQt(name->text()), fromQt(password->text())};
  config_.WriteConfigString(given.name, "LastUser", "general", foundation::StoreMachine);
  return given;
}

std::optional<security::PasswordChange> QtLoginPrompt::askPasswordChange(const std::string& userName, bool) {
  FormDialog dialog(parent_, "<IDS_CHANGE_PASSWORD>");
  dialog.setObjectName("passwordDialog");
  auto* current = dialog.addField("<IDS_CURRENT_PASSWORD>", "current", true);
  auto* wanted = dialog.addField("<IDS_NEW_PASSWORD>", "wanted", true);
  auto* repeated = dialog.addField("<IDS_REPEAT_PASSWORD>", "repeated", true);
  translateWindow(dialog, language_());
  assignMnemonics(dialog);
  dialog.setWindowTitle(dialog.windowTitle() + " - " + toQt(userName));
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return security::PasswordChange{fromQt(current->text()), fromQt(wanted->text()), fromQt(repeated->text())};
}

}  // namespace ui
