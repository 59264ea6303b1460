#include "ui/record_commands.h"

#include <functional>
#include <optional>

#include "base/printf.h"
#include "folders/numbers.h"
#include "security/rights.h"
#include "ui/dialogs.h"
#include "ui/dialogs/directory_messages.h"

namespace ui {

namespace {

std::optional<std::int64_t> recordAt(const CFolderView& list, int row) {
  folders::FolderView* folder = list.model().folder();
  const auto key = folder != nullptr ? folder->readKey(list.model().position(row)) : std::nullopt;
  return key ? std::optional(key->recordId) : std::nullopt;
}

// Users, groups and contacts have small numbers.
std::optional<std::int32_t> currentId(const CFolderView& list) {
  const auto id = currentRecord(list);
  return id ? std::optional(static_cast<std::int32_t>(*id)) : std::nullopt;
}

// Empty when the record is gone.
std::string recordName(server::CServerDoc& document, int folder, std::int32_t id) {
  switch (folder) {
    case folders::FolderUsers: {
      const auto user = document.users().findUser(id);
      return user ? user->Name : std::string();
    }
    case folders::FolderGroups: {
      const auto group = document.users().findGroup(id);
      return group ? group->Name : std::string();
    }
    default: {
      const auto contact = document.contactBook().find(id);
      return contact ? contacts::displayName(*contact) : std::string();
    }
  }
}

// What brings a deleted record back.
using BringBack = std::function<void()>;

BringBack deleteContact(server::CServerDoc& document, std::int32_t id) {
  const auto contact = document.contactBook().find(id);
  if (!contact) return {};  // another copy was quicker
  const contacts::SaveResult result = document.contactBook().remove(*contact);
  const std::string message = document.contactBook().message(result);
  if (!message.empty()) document.app().surroundings().person.messageBox(message);
  if (result != contacts::SaveResult::Done) return {};
  return [&document, contact = *contact] { document.contactBook().add(contact); };
}

// Somebody took the name meanwhile, or the restriction does not work any more.
void refuse(server::CServerDoc& document, const std::string& name) {
  document.app().surroundings().person.messageBox(document.app().language().TranslateFormat("IDS_UNDO_REFUSED", name));
}

// A new row with the old password, under a new number.
BringBack deleteUser(server::CServerDoc& document, std::int32_t id) {
  const auto user = document.users().findUser(id);
  if (!user || document.users().deleteUser(id) != security::SaveResult::Saved) return {};
  return [&document, before = *user] {
    security::UserRecord user = before;
    user.RecordID = 0;
    if (document.users().SaveUser(user, std::nullopt) != security::SaveResult::Saved)
      return refuse(document, before.Name);
    const std::string date =
        before.PasswordDate ? "#" + before.PasswordDate->format("%m/%d/%Y %H:%M:%S") + "#" : "Null";
    document.database().execute(base::format("update Users set [Password] = %d, PasswordDate = %s where RecordID = %d",
                                             static_cast<std::int32_t>(before.passwordDigest), date, user.RecordID));
  };
}

// With its members that are still there.
BringBack deleteGroup(server::CServerDoc& document, std::int32_t id) {
  const auto group = document.users().findGroup(id);
  const auto members = document.users().members(id);
  if (!group || document.users().deleteGroup(id) != security::SaveResult::Saved) return {};
  return [&document, before = *group, members] {
    security::GroupRecord group = before;
    group.RecordID = 0;
    if (document.users().saveGroup(group) != security::SaveResult::Saved) return refuse(document, before.Name);
    for (const security::UserRecord& member : members) {
      if (document.users().findUser(member.RecordID)) document.users().addMember(group.RecordID, member.RecordID);
    }
  };
}

BringBack deleteOne(server::CServerDoc& document, int folder, std::int32_t id) {
  if (folder == folders::FolderUsers) return deleteUser(document, id);
  return folder == folders::FolderGroups ? deleteGroup(document, id) : deleteContact(document, id);
}

// The text that says why this user or group must stay; null when it may go.
const char* reasonToKeep(server::CServerDoc& document, int folder, std::int32_t id) {
  security::UserDirectory& directory = document.users();
  if (folder == folders::FolderUsers) {
    if (id == document.user().RecordID) return "IDS_DELETE_SELF";
    auto user = directory.findUser(id);
    if (!user) return nullptr;
    user->Groups.clear();
    return directory.keepsAnAdministrator(*user) ? nullptr : "IDS_LAST_ADMINISTRATOR";
  }
  auto group = folder == folders::FolderGroups ? directory.findGroup(id) : std::nullopt;
  if (!group) return nullptr;
  group->ObjectAccess.clear();
  return directory.keepsAnAdministrator(*group) ? nullptr : "IDS_LAST_ADMINISTRATOR";
}

}  // namespace

RecordRights recordRights(int folder, server::CServerDoc& document) {
  const auto rightsOn = [&](int object) {
    return RecordRights{document.HasRight(object, security::RightView),
                        !document.DatabaseReadOnly() && document.HasRight(object, security::RightChange)};
  };
  switch (folder) {
    case folders::FolderUsers:
    case folders::FolderGroups:
      return rightsOn(security::ObjectAdministration);
    case folders::FolderContacts:
      return rightsOn(security::ObjectCalls);
    default:
      return {};
  }
}

bool newRecord(server::CServerDoc& document, const Texts& texts, QWidget* parent, int folder) {
  switch (folder) {
    case folders::FolderUsers:
      return editUser(document, texts, parent, {});
    case folders::FolderGroups:
      return editGroup(document, texts, parent, {});
    case folders::FolderContacts:
      return addContact(document, texts, parent);
    default:
      return false;
  }
}

bool editRecord(server::CServerDoc& document, const Texts& texts, QWidget* parent, const CFolderView& list) {
  const auto id = currentId(list);
  if (!id) return false;
  const int folder = list.folderId();
  if (folder == folders::FolderContacts) return editContact(document, texts, parent, *id);
  const QString name = toQt(recordName(document, folder, *id));
  if (name.isEmpty()) return true;  // another copy deleted it
  return folder == folders::FolderUsers ? editUser(document, texts, parent, name)
                                        : editGroup(document, texts, parent, name);
}

DetailsView::Fields currentDetails(server::CServerDoc& document, const Texts& texts, const CFolderView& list) {
  if (!list.currentIndex().isValid()) return {};
  DetailsView::Fields fields;
  const FolderModel& model = list.model();
  for (int column = 0; column < model.columnCount(); ++column) {
    fields.emplace_back(model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(),
                        model.text(list.currentIndex().row(), column));
  }
  // Columns that the list of contacts never shows.
  const auto id = list.folderId() == folders::FolderContacts ? currentId(list) : std::nullopt;
  const auto contact = id ? document.contactBook().find(*id) : std::nullopt;
  if (contact) {
    fields.emplace_back(texts("IDS_ADDRESS"), toQt(contact->address));
    fields.emplace_back(texts("IDS_NOTE"), toQt(contact->note));
  }
  return fields;
}

std::optional<std::int64_t> currentRecord(const CFolderView& list) {
  return list.currentIndex().isValid() ? recordAt(list, list.currentIndex().row()) : std::nullopt;
}

bool deleteRecords(server::CServerDoc& document, const Texts& texts, const CFolderView& list, UndoStack& undo) {
  const int folder = list.folderId();
  std::vector<std::int32_t> ids;
  for (const int row : list.selectedRows()) {
    if (const auto id = recordAt(list, row)) ids.push_back(static_cast<std::int32_t>(*id));
  }
  if (ids.empty()) return false;
  const std::string what = ids.size() == 1
                               ? recordName(document, folder, ids.front())
                               : texts.language().TranslateFormat("IDS_UNDO_RECORDS", static_cast<int>(ids.size()));
  auto& person = document.app().surroundings().person;
  for (const std::int32_t id : ids) {
    if (const char* reason = reasonToKeep(document, folder, id)) {
      person.messageBox(texts.language().Translate(reason));
      return false;
    }
  }
  const std::string question =
      ids.size() == 1 ? texts.language().TranslateFormat("IDS_CONFIRM_DELETE", what)
                      : texts.language().TranslateFormat("IDS_CONFIRM_DELETE_MANY", static_cast<int>(ids.size()));
  if (!person.askYesNo(question, platform::Operator::Unattended::No)) return false;
  std::vector<BringBack> back;
  for (const std::int32_t id : ids) {
    // Those that went before may have made this one the last administrator.
    if (reasonToKeep(document, folder, id) != nullptr) continue;
    if (BringBack one = deleteOne(document, folder, id)) back.push_back(std::move(one));
  }
  if (!back.empty()) {
    undo.push(texts.format("IDS_UNDO_DELETED", what), [back] {
      for (const BringBack& one : back) one();
    });
  }
  return true;
}

}  // namespace ui
