#include <QFormLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <algorithm>

#include "security/rights.h"
#include "security/users.h"
#include "ui/dialogs.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/group_members_page.h"
#include "ui/dialogs/mask_fields.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

constexpr int kNumberRole = Qt::UserRole;
constexpr int kMostDays = 3650;

// Days in the words of the group dialog; 0 is unlimited.
class ValidityBox : public QSpinBox {
 public:
  explicit ValidityBox(const security::UserDirectory& directory) : directory_(directory) { setRange(0, kMostDays); }

 protected:
  QString textFromValue(int days) const override { return toQt(directory_.validityText(days)); }
  int valueFromText(const QString& text) const override { return text.section(' ', 0, 0).toInt(); }
  QValidator::State validate(QString& text, int&) const override {
    return valueFromText(text) <= kMostDays ? QValidator::Acceptable : QValidator::Invalid;
  }

 private:
  const security::UserDirectory& directory_;
};

// The securable objects with their rights below them, each to be ticked.
class RightsTree : public QTreeWidget {
 public:
  RightsTree(const std::vector<security::AccessRight>& granted, const Texts& texts) {
    setHeaderHidden(true);
    for (const security::SecurableObject& object : security::kSecurableObjects) {
      auto* branch = new QTreeWidgetItem(this, {texts(object.captionKey)});
      branch->setData(0, kNumberRole, object.number);
      branch->setFlags(branch->flags() | Qt::ItemIsAutoTristate | Qt::ItemIsUserCheckable);
      for (const security::RightCaption& right : security::kRights) {
        auto* leaf = new QTreeWidgetItem(branch, {texts(right.captionKey)});
        leaf->setData(0, kNumberRole, right.number);
        const security::AccessRight pair{object.number, right.number};
        const bool on = std::find(granted.begin(), granted.end(), pair) != granted.end();
        leaf->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
      }
    }
    expandAll();
  }

  [[nodiscard]] std::vector<security::AccessRight> granted() const {
    std::vector<security::AccessRight> rights;
    for (int i = 0; i < topLevelItemCount(); ++i) {
      const QTreeWidgetItem* branch = topLevelItem(i);
      for (int j = 0; j < branch->childCount(); ++j) {
        if (branch->child(j)->checkState(0) != Qt::Checked) continue;
        rights.push_back({branch->data(0, kNumberRole).toInt(), branch->child(j)->data(0, kNumberRole).toInt()});
      }
    }
    return rights;
  }
};

// A group of users: names, password validity, rights, and on a second page its members.
class GroupSheet : public FormDialog {
 public:
  GroupSheet(security::UserDirectory& directory, security::GroupRecord group, bool allowed, const Texts& texts,
             QWidget* parent)
      : FormDialog(texts, "IDS_GROUP", "groupDialog", parent),
        directory_(directory),
        group_(std::move(group)),
        name_(named(new QLineEdit(toQt(group_.Name)), "groupName")),
        description_(named(new QLineEdit(toQt(group_.Desc)), "description")),
        validity_(named(new ValidityBox(directory), "validity")),
        rights_(named(new RightsTree(security::parseObjectAccess(group_.ObjectAccess).rights, texts), "rights")),
        members_(named(new GroupMembersPage(directory, group_.RecordID, texts), "membersPage")) {
    validity_->setValue(group_.PasswordExpire);
    rights_->setAccessibleName(texts("IDS_GROUP_RIGHTS"));
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->addRow(texts("IDS_GROUP_NAME_TEXT"), name_);
    form->addRow(texts("IDS_DESCRIPTION"), description_);
    form->addRow(texts("IDS_PASSWORD_VALIDITY"), validity_);
    form->addRow(texts("IDS_GROUP_RIGHTS"), rights_);
    mask_ = new MaskFields(group_.mask, texts);
    form->addRow(mask_);
    auto* tabs = named(new QTabWidget, "tabs");
    tabs->addTab(page, texts("IDS_GROUP"));
    tabs->addTab(members_, texts("IDS_GROUP_MEMBERS"));
    body()->addWidget(tabs);
    if (!allowed) allowOnlyLooking();
    resize(sizeHint().expandedTo({fontMetrics().averageCharWidth() * 70, 0}));
  }

  void accept() override {
    security::GroupRecord edited = group_;
    edited.Name = fromQt(name_->text().trimmed());
    edited.Desc = fromQt(description_->text().trimmed());
    edited.PasswordExpire = validity_->value();
    edited.ObjectAccess = security::formatObjectAccess(withUnknownRights(rights_->granted()));
    edited.mask = mask_->mask();
    security::SaveResult result = security::SaveResult::Missing;
    const bool done = attempt(this, texts(), [&] {
      result = directory_.saveGroup(edited);
      if (result == security::SaveResult::Saved) members_->storeFor(edited.RecordID);
    });
    if (!done || explainRefusal(result, edited.Name, texts(), this)) {
      if (result == security::SaveResult::Missing) warn(this, texts(), texts()("IDS_GROUP_DELETED"));
      return;
    }
    QDialog::accept();
  }

  [[nodiscard]] bool membersChanged() const { return members_->changed(); }

 private:
  // Pairs that the tree does not show are kept.
  [[nodiscard]] std::vector<security::AccessRight> withUnknownRights(std::vector<security::AccessRight> rights) const {
    for (const security::AccessRight& pair : security::parseObjectAccess(group_.ObjectAccess).rights) {
      const bool object = std::any_of(std::begin(security::kSecurableObjects), std::end(security::kSecurableObjects),
                                      [&](const auto& known) { return known.number == pair.object; });
      const bool right = std::any_of(std::begin(security::kRights), std::end(security::kRights),
                                     [&](const auto& known) { return known.number == pair.right; });
      if (!object || !right) rights.push_back(pair);
    }
    return rights;
  }

  security::UserDirectory& directory_;
  security::GroupRecord group_;
  QLineEdit* name_;
  QLineEdit* description_;
  ValidityBox* validity_;
  RightsTree* rights_;
  GroupMembersPage* members_;
  MaskFields* mask_ = nullptr;
};

}  // namespace

bool editGroup(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& name) {
  security::GroupRecord group;
  if (!name.isEmpty()) {
    const auto found = document.users().findGroup(fromQt(name));
    if (!found) {
      warn(parent, texts, texts("IDS_GROUP_DELETED"));
      return true;
    }
    group = *found;
  }
  GroupSheet sheet(document.users(), std::move(group), mayChangeAdministration(document), texts, parent);
  return sheet.exec() == QDialog::Accepted || sheet.membersChanged();
}

}  // namespace ui
