#include "ui/record_commands.h"

#include <optional>

#include "security/rights.h"
#include "ui/dialogs.h"
#include "ui/dialogs/directory_messages.h"

namespace ui {

namespace {

constexpr int kFolderUsers = 97;
constexpr int kFolderGroups = 98;

// Key of the current row's record.
std::optional<std::int32_t> currentRecord(const CFolderView& list) {
  folders::FolderView* folder = list.model().folder();
  if (folder == nullptr || !list.currentIndex().isValid()) return std::nullopt;
  const auto key = folder->readKey(list.model().position(list.currentIndex().row()));
  return key ? std::optional(static_cast<std::int32_t>(key->recordId)) : std::nullopt;
}

// Empty when the record is gone.
std::string recordName(server::CServerDoc& document, int folder, std::int32_t id) {
  switch (folder) {
    case kFolderUsers: {
      const auto user = document.users().findUser(id);
      return user ? user->Name : std::string();
    }
    case kFolderGroups: {
      const auto group = document.users().findGroup(id);
      return group ? group->Name : std::string();
    }
    default: {
      const auto contact = document.contactBook().find(id);
      return contact ? contacts::displayName(*contact) : std::string();
    }
  }
}

void deleteContact(server::CServerDoc& document, std::int32_t id) {
  const auto contact = document.contactBook().find(id);
  if (!contact) return;  // another copy was quicker
  const std::string message = document.contactBook().message(document.contactBook().remove(*contact));
  if (!message.empty()) document.app().surroundings().person.messageBox(message);
}

// The text that says why this user or group must stay; null when it may go.
const char* reasonToKeep(server::CServerDoc& document, int folder, std::int32_t id) {
  security::UserDirectory& directory = document.users();
  if (folder == kFolderUsers) {
    if (id == document.user().RecordID) return "IDS_DELETE_SELF";
    auto user = directory.findUser(id);
    if (!user) return nullptr;
    user->Groups.clear();
    return directory.keepsAnAdministrator(*user) ? nullptr : "IDS_LAST_ADMINISTRATOR";
  }
  auto group = folder == kFolderGroups ? directory.findGroup(id) : std::nullopt;
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
    case kFolderUsers:
    case kFolderGroups:
      return rightsOn(security::ObjectAdministration);
    case folders::kContactsList:
      return rightsOn(security::ObjectCalls);
    default:
      return {};
  }
}

bool newRecord(server::CServerDoc& document, const Texts& texts, QWidget* parent, int folder) {
  switch (folder) {
    case kFolderUsers:
      return editUser(document, texts, parent, {});
    case kFolderGroups:
      return editGroup(document, texts, parent, {});
    case folders::kContactsList:
      return addContact(document, texts, parent);
    default:
      return false;
  }
}

bool editRecord(server::CServerDoc& document, const Texts& texts, QWidget* parent, const CFolderView& list) {
  const auto id = currentRecord(list);
  if (!id) return false;
  const int folder = list.folderId();
  if (folder == folders::kContactsList) return editContact(document, texts, parent, *id);
  const QString name = toQt(recordName(document, folder, *id));
  if (name.isEmpty()) return true;  // another copy deleted it
  return folder == kFolderUsers ? editUser(document, texts, parent, name) : editGroup(document, texts, parent, name);
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
  const auto id = list.folderId() == folders::kContactsList ? currentRecord(list) : std::nullopt;
  const auto contact = id ? document.contactBook().find(*id) : std::nullopt;
  if (contact) {
    fields.emplace_back(texts("IDS_ADDRESS"), toQt(contact->address));
    fields.emplace_back(texts("IDS_NOTE"), toQt(contact->note));
  }
  return fields;
}

bool deleteRecord(server::CServerDoc& document, const Texts& texts, const CFolderView& list) {
  const auto id = currentRecord(list);
  if (!id) return false;
  const int folder = list.folderId();
  const std::string name = recordName(document, folder, *id);
  auto& person = document.app().surroundings().person;
  if (const char* reason = reasonToKeep(document, folder, *id)) {
    person.messageBox(texts.language().Translate(reason));
    return false;
  }
  if (!person.askYesNo(texts.language().TranslateFormat("IDS_CONFIRM_DELETE", name),
                       platform::Operator::Unattended::No)) {
    return false;
  }
  switch (folder) {
    case kFolderUsers:
      document.users().deleteUser(*id);
      break;
    case kFolderGroups:
      document.users().deleteGroup(*id);
      break;
    default:
      deleteContact(document, *id);
  }
  return true;
}

}  // namespace ui
