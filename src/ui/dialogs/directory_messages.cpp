#include "ui/dialogs/directory_messages.h"

#include <algorithm>

#include "security/rights.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

using security::GroupRecord;
using security::UserRecord;

bool administers(const UserRecord& user, const std::vector<GroupRecord>& groups) {
  if ((user.Flags & security::UserDisabled) != 0) return false;
  const auto memberships = security::groupIds(user.Groups);
  const security::AccessRight wanted{security::ObjectAdministration, security::RightChange};
  return std::any_of(groups.begin(), groups.end(), [&](const GroupRecord& group) {
    const auto rights = security::parseObjectAccess(group.ObjectAccess).rights;
    return std::find(memberships.begin(), memberships.end(), group.RecordID) != memberships.end() &&
           std::find(rights.begin(), rights.end(), wanted) != rights.end();
  });
}

bool anyAdministers(const std::vector<UserRecord>& users, const std::vector<GroupRecord>& groups) {
  return std::any_of(users.begin(), users.end(), [&](const UserRecord& user) { return administers(user, groups); });
}

// The list with the edited record in place of the stored one.
template <typename Record>
std::vector<Record> with(std::vector<Record> records, const Record& edited) {
  std::erase_if(records, [&](const Record& record) { return record.RecordID == edited.RecordID; });
  records.push_back(edited);
  return records;
}

}  // namespace

bool keepsAnAdministrator(security::UserDirectory& directory, const UserRecord& edited) {
  const auto users = directory.users();
  const auto groups = directory.groups();
  return !anyAdministers(users, groups) || anyAdministers(with(users, edited), groups);
}

bool keepsAnAdministrator(security::UserDirectory& directory, const GroupRecord& edited) {
  const auto users = directory.users();
  const auto groups = directory.groups();
  return !anyAdministers(users, groups) || anyAdministers(users, with(groups, edited));
}

bool mayChangeAdministration(server::CServerDoc& document) {
  return !document.DatabaseReadOnly() && document.HasRight(security::ObjectAdministration, security::RightChange);
}

bool explainRefusal(security::SaveResult result, const std::string& name, const Texts& texts, QWidget* parent) {
  switch (result) {
    case security::SaveResult::Saved:
      return false;
    case security::SaveResult::NameUnusable:
      warn(parent, texts, texts("IDS_NAME_UNUSABLE"));
      break;
    case security::SaveResult::NameTaken:
      warn(parent, texts, texts.format("IDS_NAME_TAKEN", name));
      break;
    case security::SaveResult::Missing:
    case security::SaveResult::RestrictionRejected:
      break;
  }
  return true;
}

}  // namespace ui
