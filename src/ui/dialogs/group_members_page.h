#pragma once

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QWidget>
#include <vector>

#include "security/users.h"
#include "ui/texts.h"

namespace ui {

// The members of a group. Changes to a stored group are made at once; those of a new one wait for its number.
class GroupMembersPage : public QWidget {
  Q_OBJECT

 public:
  GroupMembersPage(security::UserDirectory& directory, std::int32_t group, const Texts& texts,
                   QWidget* parent = nullptr);

  // Adds the chosen users to the group that was just stored.
  void storeFor(std::int32_t group);
  [[nodiscard]] bool changed() const { return changed_; }

 public slots:
  void addMembers();
  void removeMembers();

 private:
  void fill();
  bool removeStored(std::int32_t user);
  void put(QListWidget& list, const security::UserRecord& user);
  QListWidget* addList(const char* key, const char* name, QHBoxLayout& row);

  security::UserDirectory& directory_;
  std::int32_t group_;
  const Texts& texts_;
  QListWidget* members_ = nullptr;
  QListWidget* others_ = nullptr;
  QPushButton* add_ = nullptr;
  QPushButton* remove_ = nullptr;
  std::vector<std::int32_t> waiting_;  // of a new group
  bool changed_ = false;
};

}  // namespace ui
