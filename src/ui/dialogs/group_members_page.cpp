#include "ui/dialogs/group_members_page.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "security/rights.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

constexpr int kIdRole = Qt::UserRole;

bool contains(const std::vector<std::int32_t>& ids, std::int32_t id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

}  // namespace

GroupMembersPage::GroupMembersPage(security::UserDirectory& directory, std::int32_t group, const Texts& texts,
                                   QWidget* parent)
    : QWidget(parent), directory_(directory), group_(group), texts_(texts) {
  auto* page = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  page->addLayout(row);
  if (group != 0) {
    auto* hint = new QLabel(texts("IDS_HINT_MEMBERS"));
    hint->setWordWrap(true);
    page->addWidget(hint);
  }
  members_ = addList("IDS_GROUP_MEMBERS", "members", *row);
  auto* middle = new QVBoxLayout;
  add_ = named(new QPushButton("< " + texts("IDS_ADD")), "addMember");
  remove_ = named(new QPushButton(texts("IDS_REMOVE") + " >"), "removeMember");
  middle->addStretch();
  middle->addWidget(add_);
  middle->addWidget(remove_);
  middle->addStretch();
  row->addLayout(middle);
  others_ = addList("IDS_GROUP_OTHERS", "others", *row);
  connect(add_, &QPushButton::clicked, this, &GroupMembersPage::addMembers);
  connect(remove_, &QPushButton::clicked, this, &GroupMembersPage::removeMembers);
  connect(others_, &QListWidget::itemDoubleClicked, this, &GroupMembersPage::addMembers);
  const auto offer = [this] {
    add_->setEnabled(!others_->selectedItems().isEmpty());
    remove_->setEnabled(!members_->selectedItems().isEmpty());
  };
  connect(members_, &QListWidget::itemSelectionChanged, this, offer);
  connect(others_, &QListWidget::itemSelectionChanged, this, offer);
  fill();
  offer();
}

QListWidget* GroupMembersPage::addList(const char* key, const char* name, QHBoxLayout& row) {
  auto* list = named(new QListWidget, name);
  list->setSelectionMode(QAbstractItemView::ExtendedSelection);
  auto* label = new QLabel(texts_(key));
  label->setBuddy(list);
  auto* column = new QVBoxLayout;
  column->addWidget(label);
  column->addWidget(list);
  row.addLayout(column, 1);
  return list;
}

void GroupMembersPage::put(QListWidget& list, const security::UserRecord& user) {
  const QString name = toQt(user.Name);
  auto* item = new QListWidgetItem(user.Fullname.empty() ? name : name + " (" + toQt(user.Fullname) + ")", &list);
  item->setData(kIdRole, user.RecordID);
}

void GroupMembersPage::fill() {
  members_->clear();
  others_->clear();
  std::vector<std::int32_t> ids = waiting_;
  if (group_ != 0) {
    for (const security::UserRecord& user : directory_.members(group_)) ids.push_back(user.RecordID);
  }
  for (const security::UserRecord& user : directory_.users()) {
    put(contains(ids, user.RecordID) ? *members_ : *others_, user);
  }
}

void GroupMembersPage::addMembers() {
  attempt(this, texts_, [this] {
    for (const QListWidgetItem* item : others_->selectedItems()) {
      const std::int32_t user = item->data(kIdRole).toInt();
      if (group_ == 0) {
        waiting_.push_back(user);
      } else {
        changed_ = directory_.addMember(group_, user) || changed_;
      }
    }
    fill();
  });
}

void GroupMembersPage::removeMembers() {
  attempt(this, texts_, [this] {
    for (const QListWidgetItem* item : members_->selectedItems()) {
      const std::int32_t user = item->data(kIdRole).toInt();
      if (group_ == 0) {
        waiting_.erase(std::remove(waiting_.begin(), waiting_.end(), user), waiting_.end());
      } else {
        changed_ = removeStored(user) || changed_;
      }
    }
    fill();
  });
}

bool GroupMembersPage::removeStored(std::int32_t user) {
  if (auto without = directory_.findUser(user)) {
    without->Groups = security::RemoveFromGroupList(without->Groups, group_);
    if (!directory_.keepsAnAdministrator(*without)) {
      warn(this, texts_, texts_("IDS_LAST_ADMINISTRATOR"));
      return false;
    }
  }
  return directory_.removeMember(group_, user);
}

void GroupMembersPage::storeFor(std::int32_t group) {
  group_ = group;
  for (const std::int32_t user : waiting_) directory_.addMember(group, user);
  waiting_.clear();
}

}  // namespace ui
