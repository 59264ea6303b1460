#include "ui/login_dialogs.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/mnemonics.h"
#include "ui/icons.h"
#include "ui/translate_window.h"

namespace ui {

namespace {

constexpr int kPictureSize = 36;
constexpr int kSpace = 16;  // pixels beside the picture and above the buttons

// Its texts are keys in brackets until the window is translated.
class PasswordForm : public QDialog {
 public:
  PasswordForm(QWidget* parent, const char* caption) : QDialog(parent) {
    setWindowTitle(caption);
    setWindowIcon(icon(Icon::Program));
    auto* picture = new QLabel;
    picture->setPixmap(icon(Icon::Program).pixmap(kPictureSize));
    form_ = new QFormLayout;
    auto* top = new QHBoxLayout;
    top->setSpacing(kSpace);
    top->addWidget(picture, 0, Qt::AlignTop);
    top->addLayout(form_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addStretch();
    layout->addSpacing(kSpace);
    buttons_ = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    named(buttons_->button(QDialogButtonBox::Ok), "ok")->setText("<IDS_OK>");
    named(buttons_->button(QDialogButtonBox::Cancel), "cancel")->setText("<IDS_CANCEL>");
    layout->addWidget(buttons_);
    connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setMinimumWidth(fontMetrics().averageCharWidth() * 50);
  }

  // Once the fields are there.
  void translate(const foundation::LanguageFile& language) {
    translateWindow(*this, language);
    assignMnemonics(*this);
    focusButtonsLast(*buttons_);
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
  QDialogButtonBox* buttons_;
};

}  // namespace

std::optional<security::Credentials> QtLoginPrompt::askLogin(const std::string& proposedName) {
  if (known_) return std::exchange(known_, std::nullopt);
  PasswordForm dialog(parent_, "<IDS_LOGIN>");
  dialog.setObjectName("loginDialog");
  auto* name = dialog.addField("<IDS_USER>", "userName", false);
  auto* password = dialog.addField("<IDS_PASSWORD>", "password", true);
  name->setText(toQt(proposedName));
  if (!proposedName.empty()) password->setFocus();
  dialog.translate(language_());
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  security::Credentials given{fromQt(name->text()), fromQt(password->text())};
  config_.WriteConfigString(given.name, foundation::keys::LastUser);
  return given;
}

std::optional<security::PasswordChange> QtLoginPrompt::askPasswordChange(const std::string& userName, bool) {
  PasswordForm dialog(parent_, "<IDS_CHANGE_PASSWORD>");
  dialog.setObjectName("passwordDialog");
  auto* current = dialog.addField("<IDS_CURRENT_PASSWORD>", "current", true);
  auto* wanted = dialog.addField("<IDS_NEW_PASSWORD>", "wanted", true);
  auto* repeated = dialog.addField("<IDS_REPEAT_PASSWORD>", "repeated", true);
  dialog.translate(language_());
  dialog.setWindowTitle(dialog.windowTitle() + " - " + toQt(userName));
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return security::PasswordChange{fromQt(current->text()), fromQt(wanted->text()), fromQt(repeated->text())};
}

}  // namespace ui
