#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTabWidget>

#include "base/characters.h"
#include "security/rights.h"
#include "security/session.h"
#include "security/users.h"
#include "ui/dialogs.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/mask_fields.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/restriction_picker.h"

namespace ui {

namespace {

constexpr int kGroupRole = Qt::UserRole;

// A user of the database: names, password, flags, groups and the condition on the calls that they may see.
class UserEditDlg : public FormDialog {
 public:
  UserEditDlg(server::CServerDoc& document, security::UserRecord user, bool allowed, const Texts& texts,
              QWidget* parent)
      : FormDialog(texts, "IDS_USER", "userDialog", parent), directory_(document.users()), user_(std::move(user)) {
    auto* form = new QFormLayout;
    name_ = addLine(*form, "IDS_USER", "userName", toQt(user_.Name));
    name_->setMaxLength(static_cast<int>(security::kMaxUserName));
    fullName_ = addLine(*form, "IDS_USERNAME_TEXT", "fullName", toQt(user_.Fullname));
    password_ = addLine(*form, "IDS_PASSWORD", "password", {});
    repeated_ = addLine(*form, "IDS_REPEAT_PASSWORD", "repeated", {});
    for (QLineEdit* secret : {password_, repeated_}) {
      secret->setEchoMode(QLineEdit::Password);
      if (user_.RecordID != 0) secret->setPlaceholderText(texts("IDS_PASSWORD_UNCHANGED"));
    }
    mustChange_ = addFlag(*form, "IDS_USER_MUST_CHANGE", "mustChange", security::UserMustChangePassword);
    disabled_ = addFlag(*form, "IDS_USER_DISABLED", "disabled", security::UserDisabled);
    addGroups(*form);
    restriction_ = new RestrictionPicker(document.smdr().parties(), toQt(user_.SQLSubquery), texts);
    auto* tabs = named(new QTabWidget, "tabs");
    auto* account = new QWidget;
    auto* accountLayout = new QVBoxLayout(account);
    accountLayout->addLayout(form);
    accountLayout->addStretch();
    tabs->addTab(account, texts("IDS_USER"));
    auto* sight = new QWidget;
    auto* sightLayout = new QVBoxLayout(sight);
    sightLayout->addWidget(restriction_);
    mask_ = new MaskFields(user_.mask, texts);
    sightLayout->addWidget(mask_);
    tabs->addTab(sight, texts("IDS_USER_SIGHT"));
    body()->addWidget(tabs);
    name_->setFocus();
    if (!allowed) allowOnlyLooking();
    resize(sizeHint().expandedTo({fontMetrics().averageCharWidth() * 90, 0}));
  }

  void accept() override {
    if (password_->text() != repeated_->text()) {
      warn(this, texts(), texts()("IDS_NOREENTER"));
      password_->setFocus();
      return;
    }
    security::UserRecord edited = gather();
    if (const QString text = problem(edited); !text.isEmpty()) return warn(this, texts(), text);
    // Saved on purpose, for a user who is to log in later.
    if (security::groupIds(edited.Groups).empty() &&
        ask(this, texts(), texts()("IDS_USER_WITHOUT_GROUPS")) != Answer::Yes) {
      groups_->setFocus();
      return;
    }
    std::optional<std::string> newPassword;
    if (!password_->text().isEmpty()) newPassword = fromQt(password_->text());
    // A new user without a password has the empty one.
    if (user_.RecordID == 0 && !newPassword) newPassword.emplace();
    security::SaveResult result = security::SaveResult::Missing;
    if (!attempt(this, texts(), [&] { result = directory_.SaveUser(edited, newPassword); })) return;
    if (explainRefusal(result, fromQt(name_->text()), texts(), this)) return;
    QDialog::accept();
  }

 private:
  QLineEdit* addLine(QFormLayout& form, const char* key, const char* name, const QString& text) {
    auto* line = named(new QLineEdit(text), name);
    form.addRow(texts()(key), line);
    return line;
  }

  QCheckBox* addFlag(QFormLayout& form, const char* key, const char* name, security::UserFlag flag) {
    QCheckBox* box = makeCheckBox(key, name);
    box->setChecked((user_.Flags & flag) != 0);
    form.addRow(QString(), box);
    return box;
  }

  void addGroups(QFormLayout& form) {
    groups_ = named(new QListWidget, "groups");
    groups_->setAccessibleName(texts()("IDS_FOLDER_GROUPS"));
    const std::vector<std::int32_t> member = security::groupIds(user_.Groups);
    for (const security::GroupRecord& group : directory_.groups()) {
      auto* item = new QListWidgetItem(toQt(group.Name), groups_);
      item->setData(kGroupRole, group.RecordID);
      item->setToolTip(toQt(group.Desc));
      item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
      const bool belongs = std::find(member.begin(), member.end(), group.RecordID) != member.end();
      item->setCheckState(belongs ? Qt::Checked : Qt::Unchecked);
    }
    groups_->setFixedHeight(fontMetrics().lineSpacing() * 6);
    form.addRow(texts()("IDS_FOLDER_GROUPS"), groups_);
  }

  // What would surprise at the next login.
  QString problem(const security::UserRecord& edited) {
    // A longer condition would not be applied, and the user would see every call.
    if (edited.SQLSubquery != user_.SQLSubquery &&
        base::characterCount(edited.SQLSubquery) >= security::kRestrictionLimit) {
      return texts().format("IDS_RESTRICTION_SHORTEN", security::kRestrictionLimit - 1);
    }
    return directory_.keepsAnAdministrator(edited) ? QString() : texts()("IDS_LAST_ADMINISTRATOR");
  }

  security::UserRecord gather() const {
    security::UserRecord edited = user_;
    edited.Name = fromQt(name_->text().trimmed());
    edited.Fullname = fromQt(fullName_->text().trimmed());
    setFlag(edited, security::UserMustChangePassword, mustChange_->isChecked());
    setFlag(edited, security::UserDisabled, disabled_->isChecked());
    for (int row = 0; row < groups_->count(); ++row) {
      const QListWidgetItem& item = *groups_->item(row);
      const std::int32_t id = item.data(kGroupRole).toInt();
      edited.Groups = item.checkState() == Qt::Checked ? security::AddToGroupList(edited.Groups, id)
                                                       : security::RemoveFromGroupList(edited.Groups, id);
    }
    edited.SQLSubquery = fromQt(restriction_->condition());
    edited.mask = mask_->mask();
    return edited;
  }

  static void setFlag(security::UserRecord& user, security::UserFlag flag, bool on) {
    user.Flags = on ? user.Flags | flag : user.Flags & ~flag;
  }

  security::UserDirectory& directory_;
  security::UserRecord user_;
  QLineEdit* name_;
  QLineEdit* fullName_;
  QLineEdit* password_;
  QLineEdit* repeated_;
  QCheckBox* mustChange_;
  QCheckBox* disabled_;
  QListWidget* groups_ = nullptr;
  RestrictionPicker* restriction_;
  MaskFields* mask_;
};

}  // namespace

bool editUser(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& name) {
  security::UserRecord user;
  if (!name.isEmpty()) {
    const auto found = document.users().findUser(fromQt(name));
    if (!found) {
      warn(parent, texts, texts("IDS_SELECTEDUSERDELETED"));
      return true;
    }
    user = *found;
  }
  const bool allowed = mayChangeAdministration(document);
  return UserEditDlg(document, std::move(user), allowed, texts, parent).exec() == QDialog::Accepted;
}

}  // namespace ui
