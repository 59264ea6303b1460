#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSpinBox>
#include <future>

#include "foundation/refusal_text.h"
#include "mail/address.h"
#include "platform/progress.h"
#include "schedule/mail_settings.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/settings/watch_pages.h"

namespace ui {

namespace {

using schedule::MailSettings;

constexpr int kMostPort = 65535;

struct EncryptionText {
  mail::Encryption encryption;
  const char* key;
};
constexpr EncryptionText kEncryptions[] = {{mail::Encryption::StartTls, "IDS_MAIL_STARTTLS"},
                                           {mail::Encryption::Tls, "IDS_MAIL_TLS"},
                                           {mail::Encryption::None, "IDS_MAIL_PLAIN"}};

// How this workstation sends mail.
class MailForm : public QWidget {
 public:
  MailForm(server::CServerDoc& document, const Texts& texts)
      : document_(document),
        texts_(texts),
        stored_(schedule::storedMailSettings(document.app().config())),
        host_(named(new QLineEdit(toQt(stored_.server.host)), "mailServer")),
        port_(named(new QSpinBox, "mailPort")),
        encryption_(named(new QComboBox, "mailEncryption")),
        user_(named(new QLineEdit(toQt(stored_.server.user)), "mailUser")),
        password_(named(new QLineEdit, "mailPassword")),
        from_(named(new QLineEdit(toQt(stored_.from)), "mailFrom")),
        authorities_(named(new QLineEdit(toQt(stored_.server.authorities)), "mailAuthorities")),
        testTo_(named(new QLineEdit, "mailTestTo")) {
    host_->setPlaceholderText("smtp.example.com");
    from_->setPlaceholderText("tallybook@example.com");
    testTo_->setPlaceholderText("ana@example.com");
    port_->setRange(1, kMostPort);
    port_->setValue(stored_.server.port);
    for (const EncryptionText& each : kEncryptions) encryption_->addItem(texts(each.key));
    for (int i = 0; i < encryption_->count(); ++i) {
      if (kEncryptions[i].encryption == stored_.server.encryption) encryption_->setCurrentIndex(i);
    }
    password_->setEchoMode(QLineEdit::Password);
    if (!stored_.server.password.empty()) password_->setPlaceholderText(texts("IDS_PASSWORD_UNCHANGED"));
    auto* hint = new QLabel(texts("IDS_HINT_MAIL"));
    hint->setWordWrap(true);
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(texts("IDS_MAIL_SERVER"), host_);
    form->addRow(texts("IDS_MAIL_ENCRYPTION"), encryption_);
    form->addRow(texts("IDS_MAIL_PORT"), port_);
    form->addRow(texts("IDS_MAIL_FROM"), from_);
    form->addRow(texts("IDS_MAIL_USER"), user_);
    form->addRow(texts("IDS_PASSWORD"), password_);
    form->addRow(texts("IDS_MAIL_AUTHORITIES"), authorities_);
    auto* test = named(new QPushButton(texts("IDS_MAIL_TEST")), "mailTest");
    auto* testLine = new QHBoxLayout;
    testLine->addWidget(testTo_, 1);
    testLine->addWidget(test);
    auto* testLabel = new QLabel(texts("IDS_MAIL_TEST_TO"));
    testLabel->setBuddy(testTo_);
    form->addRow(testLabel, testLine);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(hint);
    layout->addLayout(form);
    layout->addStretch();
    testTo_->setAccessibleName(texts("IDS_MAIL_TEST_TO"));
    connect(encryption_, &QComboBox::activated, this, [this] {
      constexpr int kTlsPort = 465;
      constexpr int kSubmissionPort = 587;
      port_->setValue(encryption() == mail::Encryption::Tls ? kTlsPort : kSubmissionPort);
    });
    connect(test, &QPushButton::clicked, this, [this] { sendTest(); });
  }

  [[nodiscard]] bool changed() const {
    const MailSettings now = settings();
    return now.server.host != stored_.server.host || now.server.port != stored_.server.port ||
           now.server.encryption != stored_.server.encryption || now.server.user != stored_.server.user ||
           now.server.password != stored_.server.password || now.server.authorities != stored_.server.authorities ||
           now.from != stored_.from;
  }

  [[nodiscard]] QString problem() const { return changed() ? faultOf(settings()) : QString(); }

  void save() {
    if (!changed()) return;
    const MailSettings edited = settings();
    if (!schedule::writeMailSettings(document_.app().config(), edited)) {
      throw std::runtime_error(texts_.language().TranslateFormat(
          "IDS_CANTWRITEFILE", document_.app().config().machineStore().file().string()));
    }
    stored_ = edited;
    password_->clear();
  }

 private:
  [[nodiscard]] mail::Encryption encryption() const { return kEncryptions[encryption_->currentIndex()].encryption; }

  [[nodiscard]] MailSettings settings() const {
    MailSettings now;
    now.server.host = fromQt(host_->text().trimmed());
    now.server.port = port_->value();
    now.server.encryption = encryption();
    now.server.user = fromQt(user_->text().trimmed());
    // Without a login there is nothing to keep a password for.
    if (!now.server.user.empty()) {
      now.server.password = password_->text().isEmpty() ? stored_.server.password : fromQt(password_->text());
    }
    now.server.authorities = fromQt(authorities_->text().trimmed());
    now.from = fromQt(from_->text().trimmed());
    return now;
  }

  [[nodiscard]] QString faultOf(const MailSettings& settings) const {
    const auto fault = schedule::mailFault(settings);
    return fault ? texts_.format("IDS_MAIL_FAULT", foundation::refusalText(*fault, texts_.language())) : QString();
  }

  // With what the form says now, saved or not.
  void sendTest() {
    const MailSettings now = settings();
    if (const QString fault = faultOf(now); !fault.isEmpty()) return warn(this, texts_, fault);
    mail::Message message{.from = now.from,
                          .to = fromQt(testTo_->text().trimmed()),
                          .subject = "Tallybook",
                          .text = fromQt(texts_("IDS_MAIL_TEST_TEXT")) + "\n"};
    if (!mail::isAddress(message.to)) return warn(this, texts_, texts_("IDS_MAIL_TEST_NOBODY"));
    const bool sent = attempt(this, texts_, [&] {
      platform::Operator& person = document_.app().surroundings().person;
      const platform::Progress progress(person, fromQt(texts_("IDS_MAIL_TEST")),
                                        fromQt(texts_("IDS_SCHEDULE_SENDING")));
      auto transfer = std::async(std::launch::async, [&] { mail::send(now.server, message); });
      while (transfer.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) person.progressPulse();
      transfer.get();
    });
    if (sent) inform(this, texts_, texts_.format("IDS_MAIL_TEST_SENT", now.server.host, message.to));
  }

  server::CServerDoc& document_;
  const Texts& texts_;
  MailSettings stored_;
  QLineEdit* host_;
  QSpinBox* port_;
  QComboBox* encryption_;
  QLineEdit* user_;
  QLineEdit* password_;
  QLineEdit* from_;
  QLineEdit* authorities_;
  QLineEdit* testTo_;
};

}  // namespace

SettingsPage mailPage(server::CServerDoc& document, const Texts& texts) {
  auto* form = new MailForm(document, texts);
  SettingsPage page;
  page.caption = texts("IDS_PAGE_MAIL");
  page.widget = form;
  page.check = [form] { return form->problem(); };
  page.changed = [form] { return form->changed(); };
  page.save = [form] { form->save(); };
  return page;
}

}  // namespace ui
