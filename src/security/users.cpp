#include "security/users.h"

#include <zlib.h>

#include <algorithm>

#include "base/characters.h"
#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "jet/parser/parser.h"
#include "security/masks.h"
#include "security/rights.h"

namespace security {

namespace {

std::int32_t number(const jet::Snapshot& rows, std::size_t row, const char* column) {
  return static_cast<std::int32_t>(rows.at(row, column).toLong());
}

std::string text(const jet::Snapshot& rows, std::size_t row, const char* column) {
  return rows.at(row, column).toText();
}

Mask maskIn(const std::map<std::int32_t, Mask>& masks, std::int32_t id) {
  const auto found = masks.find(id);
  return found == masks.end() ? Mask{} : found->second;
}

std::vector<UserRecord> readUsers(jet::Database& database, const std::string& sql) {
  const jet::Snapshot rows = database.openSnapshot(sql);
  const std::map<std::int32_t, Mask> masks = masksOf(database, MaskOwner::User);
  std::vector<UserRecord> users;
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    users.push_back({.RecordID = number(rows, row, "RecordID"),
                     .Name = text(rows, row, "Name"),
                     .Fullname = text(rows, row, "Fullname"),
                     .passwordDigest = static_cast<std::uint32_t>(number(rows, row, "Password")),
                     .PasswordDate = rows.at(row, "PasswordDate").toDateTime(),
                     .LastAccessDate = rows.at(row, "LastAccessDate").toDateTime(),
                     .Flags = number(rows, row, "Flags"),
                     .Groups = text(rows, row, "Groups"),
                     .SQLSubquery = text(rows, row, "SQLSubquery"),
                     .mask = maskIn(masks, number(rows, row, "RecordID"))});
  }
  return users;
}

std::vector<GroupRecord> readGroups(jet::Database& database) {
  const jet::Snapshot rows = database.openSnapshot("SELECT * FROM Groups ORDER BY Name");
  const std::map<std::int32_t, Mask> masks = masksOf(database, MaskOwner::Group);
  std::vector<GroupRecord> groups;
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    groups.push_back({.RecordID = number(rows, row, "RecordID"),
                      .Name = text(rows, row, "Name"),
                      .Desc = text(rows, row, "Desc"),
                      .PasswordExpire = number(rows, row, "PasswordExpire"),
                      .ObjectAccess = text(rows, row, "ObjectAccess"),
                      .mask = maskIn(masks, number(rows, row, "RecordID"))});
  }
  return groups;
}

template <typename Record>
std::optional<Record> named(const std::vector<Record>& records, std::string_view name) {
  for (const Record& record : records) {
    if (base::equalFoldAscii(record.Name, name)) return record;
  }
  return std::nullopt;
}

template <typename Record>
std::optional<Record> numbered(const std::vector<Record>& records, std::int32_t id) {
  for (const Record& record : records) {
    if (record.RecordID == id) return record;
  }
  return std::nullopt;
}

bool usableName(const std::string& name) {
  return !base::trim(name).empty() && name.find('"') == std::string::npos;
}

// What keeps the record from being stored among the others; fills in the number of a new one.
template <typename Record>
SaveResult checkPlace(const std::vector<Record>& others, Record& record) {
  const auto same = named(others, record.Name);
  if (same && same->RecordID != record.RecordID) return SaveResult::NameTaken;
  if (record.RecordID != 0) return numbered(others, record.RecordID) ? SaveResult::Saved : SaveResult::Missing;
  for (const Record& other : others) record.RecordID = std::max(record.RecordID, other.RecordID);
  ++record.RecordID;
  return SaveResult::Saved;
}

// Makes the row of that number current; false when there is none.
bool goTo(jet::Recordset& rows, std::int32_t id) {
  rows.findFirst(base::format("RecordID = %d", id));
  return !rows.noMatch();
}

// Begins the change of the row of that number, or a new row with it.
void editOrAdd(jet::Recordset& rows, std::int32_t id) {
  if (goTo(rows, id)) {
    rows.edit();
  } else {
    rows.addNew();
    rows.set("RecordID", id);
  }
}

// A masked user changes no users, so he cannot be the only one.
bool administers(const UserRecord& user, const std::vector<GroupRecord>& groups) {
  if ((user.Flags & UserDisabled) != 0 || user.mask.any()) return false;
  const auto memberships = groupIds(user.Groups);
  constexpr AccessRight kWanted{ObjectAdministration, RightChange};
  bool may = false;
  for (const GroupRecord& group : groups) {
    if (std::ranges::find(memberships, group.RecordID) == memberships.end()) continue;
    if (group.mask.any()) return false;
    const auto rights = parseObjectAccess(group.ObjectAccess).rights;
    may = may || std::ranges::find(rights, kWanted) != rights.end();
  }
  return may;
}

bool anyAdministers(const std::vector<UserRecord>& users, const std::vector<GroupRecord>& groups) {
  return std::ranges::any_of(users, [&](const UserRecord& user) { return administers(user, groups); });
}

// The list with the edited record in place of the stored one.
template <typename Record>
std::vector<Record> with(std::vector<Record> records, const Record& edited) {
  std::erase_if(records, [&](const Record& record) { return record.RecordID == edited.RecordID; });
  records.push_back(edited);
  return records;
}

void setMembership(jet::Recordset& users, const std::string& groups) {
  users.edit();
  users.set("Groups", groups);
  users.update();
}

}  // namespace

std::uint32_t PasswordDigest(std::string_view password) {
  // zlib inverts before and after; starting from all ones and inverting the result undoes both.
  const uLong inverted =
      crc32(0xFFFFFFFFUL, reinterpret_cast<const Bytef*>(password.data()), static_cast<uInt>(password.size()));
  return static_cast<std::uint32_t>(inverted) ^ 0xFFFFFFFFU;
}

std::vector<UserRecord> UserDirectory::users() {
  return readUsers(database_, "SELECT * FROM Users ORDER BY Name");
}

std::vector<GroupRecord> UserDirectory::groups() {
  return readGroups(database_);
}

std::vector<UserRecord> UserDirectory::members(std::int32_t group) {
  return readUsers(database_, base::format("SELECT * FROM Users WHERE Groups LIKE \"*;%d;*\" ORDER BY Name", group));
}

std::optional<UserRecord> UserDirectory::findUser(std::string_view name) {
  return named(users(), name);
}

std::optional<UserRecord> UserDirectory::findUser(std::int32_t id) {
  return numbered(users(), id);
}

std::optional<GroupRecord> UserDirectory::findGroup(std::string_view name) {
  return named(groups(), name);
}

std::optional<GroupRecord> UserDirectory::findGroup(std::int32_t id) {
  return numbered(groups(), id);
}

bool UserDirectory::restrictionWorks(const std::string& restriction) {
  if (restriction.empty()) return true;
  try {
    // By itself, too: the trial alone would take a condition with an ORDER BY after it.
    jet::parseCondition(restriction);
    // Asking for the end makes the database run the query, not only read it.
    database_.openRecordset(base::format("select top 1 * from calls where %s", restriction))->eof();
    return true;
  } catch (const jet::Error& error) {
    person_.messageBox(error.description());
    return false;
  }
}

// A user who sees only a part of the calls may neither lift a restriction nor have a condition tried on the other
// calls.
bool UserDirectory::mayGive(const UserRecord& user) {
  if (session_.SQLSubquery.empty() || user.SQLSubquery == session_.SQLSubquery) return true;
  const auto stored = user.RecordID == 0 ? std::nullopt : findUser(user.RecordID);
  if (stored && stored->SQLSubquery == user.SQLSubquery) return true;
  person_.messageBox(texts_.TranslateFormat("IDS_RESTRICTED_USER", session_.CurrentUserName));
  return false;
}

bool UserDirectory::mayBeTooLong(const UserRecord& user) {
  if (base::characterCount(user.SQLSubquery) < kRestrictionLimit) return true;
  const auto stored = user.RecordID == 0 ? std::nullopt : findUser(user.RecordID);
  if (stored && stored->SQLSubquery == user.SQLSubquery) return true;
  const std::string question = texts_.TranslateFormat("IDS_RESTRICTION_TOO_LONG", user.Name, kRestrictionLimit - 1);
  return person_.askYesNo(question, platform::Operator::Unattended::Yes);
}

bool UserDirectory::keepsAnAdministrator(const UserRecord& edited) {
  const auto all = users();
  const auto allGroups = groups();
  return !anyAdministers(all, allGroups) || anyAdministers(with(all, edited), allGroups);
}

bool UserDirectory::keepsAnAdministrator(const GroupRecord& edited) {
  const auto all = users();
  const auto allGroups = groups();
  return !anyAdministers(all, allGroups) || anyAdministers(all, with(allGroups, edited));
}

SaveResult UserDirectory::SaveUser(UserRecord& user, const std::optional<std::string>& newPassword) {
  requireUnmasked(session_, texts_);
  if (!usableName(user.Name)) return SaveResult::NameUnusable;
  if (!mayGive(user)) return SaveResult::RestrictionRejected;
  if (session_.SQLSubquery.empty() && !restrictionWorks(user.SQLSubquery)) return SaveResult::RestrictionRejected;
  if (!mayBeTooLong(user)) return SaveResult::RestrictionRejected;

  jet::Transaction transaction(database_);
  const bool isNew = user.RecordID == 0;
  const SaveResult place = checkPlace(users(), user);
  if (place == SaveResult::Missing) person_.messageBox(texts_.Translate("IDS_SELECTEDUSERDELETED"));
  if (place != SaveResult::Saved) return place;
  if (!keepsAnAdministrator(user)) return SaveResult::LastAdministrator;
  if (newPassword) {
    user.passwordDigest = PasswordDigest(*newPassword);
    user.PasswordDate = clock_.now();
  }
  const auto rows = database_.openRecordset("SELECT * FROM Users");
  editOrAdd(*rows, user.RecordID);
  rows->set("Name", user.Name);
  rows->set("Fullname", user.Fullname);
  if (newPassword || isNew) rows->set("Password", static_cast<std::int32_t>(user.passwordDigest));
  if (newPassword) rows->set("PasswordDate", *user.PasswordDate);
  rows->set("Flags", user.Flags);
  rows->set("Groups", user.Groups);
  rows->set("SQLSubquery", user.SQLSubquery);
  rows->update();
  saveMask(database_, MaskOwner::User, user.RecordID, user.mask);
  tags_.Touch("Users");
  transaction.commit();
  return SaveResult::Saved;
}

SaveResult UserDirectory::deleteUser(std::int32_t id) {
  requireUnmasked(session_, texts_);
  jet::Transaction transaction(database_);
  const auto rows = database_.openRecordset("SELECT * FROM Users");
  if (!goTo(*rows, id)) return SaveResult::Missing;
  // An empty record of that number administers nothing.
  if (!keepsAnAdministrator(UserRecord{.RecordID = id})) return SaveResult::LastAdministrator;
  rows->remove();
  saveMask(database_, MaskOwner::User, id, {});
  tags_.Touch("Users");
  transaction.commit();
  return SaveResult::Saved;
}

SaveResult UserDirectory::saveGroup(GroupRecord& group) {
  requireUnmasked(session_, texts_);
  if (!usableName(group.Name)) return SaveResult::NameUnusable;
  jet::Transaction transaction(database_);
  const SaveResult place = checkPlace(groups(), group);
  if (place != SaveResult::Saved) return place;
  if (!keepsAnAdministrator(group)) return SaveResult::LastAdministrator;
  const auto rows = database_.openRecordset("SELECT * FROM Groups");
  editOrAdd(*rows, group.RecordID);
  rows->set("Name", group.Name);
  rows->set("Desc", group.Desc);
  rows->set("PasswordExpire", group.PasswordExpire);
  rows->set("ObjectAccess", group.ObjectAccess);
  rows->update();
  saveMask(database_, MaskOwner::Group, group.RecordID, group.mask);
  tags_.Touch("Groups");
  transaction.commit();
  return SaveResult::Saved;
}

SaveResult UserDirectory::deleteGroup(std::int32_t id) {
  requireUnmasked(session_, texts_);
  jet::Transaction transaction(database_);
  const auto rows = database_.openRecordset("SELECT * FROM Groups");
  if (!goTo(*rows, id)) return SaveResult::Missing;
  if (!keepsAnAdministrator(GroupRecord{.RecordID = id})) return SaveResult::LastAdministrator;
  rows->remove();
  saveMask(database_, MaskOwner::Group, id, {});
  const auto users = database_.openRecordset("SELECT * FROM Users");
  for (const UserRecord& member : members(id)) {
    if (goTo(*users, member.RecordID)) setMembership(*users, RemoveFromGroupList(member.Groups, id));
  }
  tags_.Touch("Groups");
  tags_.Touch("Users");
  transaction.commit();
  return SaveResult::Saved;
}

bool UserDirectory::changeMembership(std::int32_t group, std::int32_t user,
                                     std::string (*change)(std::string_view, std::int32_t)) {
  const SaveResult result = storeMembership(group, user, change);
  if (result == SaveResult::Missing) person_.messageBox(texts_.Translate("IDS_SELECTEDUSERDELETED"));
  if (result == SaveResult::LastAdministrator) person_.messageBox(texts_.Translate("IDS_LAST_ADMINISTRATOR"));
  return result == SaveResult::Saved;
}

SaveResult UserDirectory::storeMembership(std::int32_t group, std::int32_t user,
                                          std::string (*change)(std::string_view, std::int32_t)) {
  requireUnmasked(session_, texts_);
  jet::Transaction transaction(database_);
  const auto users = database_.openRecordset("SELECT * FROM Users");
  auto member = findUser(user);
  if (!member || !goTo(*users, user)) return SaveResult::Missing;
  member->Groups = change(member->Groups, group);
  if (!keepsAnAdministrator(*member)) return SaveResult::LastAdministrator;
  setMembership(*users, member->Groups);
  tags_.Touch("Users");
  transaction.commit();
  return SaveResult::Saved;
}

bool UserDirectory::addMember(std::int32_t group, std::int32_t user) {
  return changeMembership(group, user, AddToGroupList);
}

bool UserDirectory::removeMember(std::int32_t group, std::int32_t user) {
  if (auto member = findUser(user)) {
    member->Groups = RemoveFromGroupList(member->Groups, group);
    if (!keepsAnAdministrator(*member)) {
      person_.messageBox(texts_.Translate("IDS_LAST_ADMINISTRATOR"));
      return false;
    }
  }
  const std::string question = texts_.Translate("IDS_CONFIRMDELFROMGROUP");
  return person_.askYesNo(question, platform::Operator::Unattended::No) &&
         changeMembership(group, user, RemoveFromGroupList);
}

std::string UserDirectory::validityText(std::int32_t days) const {
  if (days == 0) return texts_.Translate("IDS_PASSWORD_VALABILITY_UNDEFINED");
  return base::format("%d %s", days, texts_.Translate("IDS_DAYS_TEXT"));
}

}  // namespace security
