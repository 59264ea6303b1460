#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"
#include "foundation/change_tags.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/operator.h"
#include "security/session.h"

namespace security {

enum UserFlag : std::int32_t { UserMustChangePassword = 1, UserDisabled = 2 };

// The digest kept in `Users`.`Password`: a CRC with the reflected polynomial 0xEDB88320, but starting at 0 and without
// the final inversion (not the usual CRC-32). Of the text's UTF-8 bytes; the empty password gives 0.
std::uint32_t PasswordDigest(std::string_view password);

// A row of `Users`.
struct UserRecord {
  std::int32_t RecordID = 0;  // 0 = not stored yet
  std::string Name = {};
  std::string Fullname = {};
  std::uint32_t passwordDigest = 0;
  std::optional<base::DateTime> PasswordDate = {};
  std::optional<base::DateTime> LastAccessDate = {};
  std::int32_t Flags = 0;        // UserFlag bits
  std::string Groups = {};       // membership text, see rights.h
  std::string SQLSubquery = {};  // condition on `Calls`; empty = none
  Mask mask = {};                // his own, without his groups'
};

// A row of `Groups`.
struct GroupRecord {
  std::int32_t RecordID = 0;  // 0 = not stored yet
  std::string Name = {};
  std::string Desc = {};
  std::int32_t PasswordExpire = 0;  // days, 0 = unlimited
  std::string ObjectAccess = {};    // see rights.h
  Mask mask = {};                   // of all its members
};

enum class SaveResult {
  Saved,
  NameUnusable,         // empty, or with a quotation mark, which the look-up at login cannot carry
  NameTaken,            // another user (group) has this name, case ignored
  Missing,              // the row was deleted meanwhile; for a user IDS_SELECTEDUSERDELETED was shown
  RestrictionRejected,  // the trial of `SQLSubquery` failed, or a restricted user may not give it, which was shown; or
                        // it is too long
  LastAdministrator,    // no one could change users and settings any more
};

// The users and groups of the main database, for the dialogs and the command line. Every call may throw jet::Error
// (3027 while the database is read-only).
//
// A session that sees numbers or names in part changes no user and no group (RestrictedUserError): it could lift its
// own mask. Login is not affected.
//
// The last user who can administer (enabled, unmasked, in a group with the right to change the administration) stays: a
// change after which there is none is refused. Where there is none already, everything goes.
class UserDirectory {
 public:
  struct Services {
    jet::Database& database;
    foundation::ChangeTags& tags;
    const foundation::LanguageFile& texts;
    platform::Operator& person;
    const platform::Clock& clock;
  };
  // `session` is the user who makes the changes; all must outlive the object.
  UserDirectory(const Services& services, const CurrentUser& session)
      : database_(services.database),
        tags_(services.tags),
        texts_(services.texts),
        person_(services.person),
        clock_(services.clock),
        session_(session) {}

  [[nodiscard]] std::vector<UserRecord> users();    // by name
  [[nodiscard]] std::vector<GroupRecord> groups();  // by name
  [[nodiscard]] std::vector<UserRecord> members(std::int32_t group);
  [[nodiscard]] std::optional<UserRecord> findUser(std::string_view name);
  [[nodiscard]] std::optional<UserRecord> findUser(std::int32_t id);
  [[nodiscard]] std::optional<GroupRecord> findGroup(std::string_view name);
  [[nodiscard]] std::optional<GroupRecord> findGroup(std::int32_t id);

  // Writes the user, adding it (RecordID = largest + 1, put into `user`) when it is not stored yet. The digest and its
  // date are written only with a new password. A non-empty `SQLSubquery` is tried first with
  // "select top 1 * from calls where %s"; a new one that is too long to be applied at login is asked about. A
  // session with a restriction gives no other one than its own: the trial would be made on calls that it may not see.
  SaveResult SaveUser(UserRecord& user, const std::optional<std::string>& newPassword);
  SaveResult deleteUser(std::int32_t id);  // Saved, Missing (without a message) or LastAdministrator

  SaveResult saveGroup(GroupRecord& group);
  // Deletes the group and takes it out of its members' lists. Answers as deleteUser.
  SaveResult deleteGroup(std::int32_t id);

  // Whether somebody could still administer with this user (group) as edited; true when no one can now.
  [[nodiscard]] bool keepsAnAdministrator(const UserRecord& edited);
  [[nodiscard]] bool keepsAnAdministrator(const GroupRecord& edited);

  // False when the user's row is gone (IDS_SELECTEDUSERDELETED was shown); removal also when the person said no to
  // IDS_CONFIRMDELFROMGROUP, or when the user is the last who can administer (IDS_LAST_ADMINISTRATOR was shown).
  bool addMember(std::int32_t group, std::int32_t user);
  bool removeMember(std::int32_t group, std::int32_t user);

  // The group dialog's words for a validity: "%d %s" with IDS_DAYS_TEXT, or IDS_PASSWORD_VALABILITY_UNDEFINED for 0.
  [[nodiscard]] std::string validityText(std::int32_t days) const;

 private:
  bool restrictionWorks(const std::string& restriction);
  bool mayGive(const UserRecord& user);
  bool mayBeTooLong(const UserRecord& user);
  bool changeMembership(std::int32_t group, std::int32_t user, std::string (*change)(std::string_view, std::int32_t));
  SaveResult storeMembership(std::int32_t group, std::int32_t user,
                             std::string (*change)(std::string_view, std::int32_t));

  jet::Database& database_;
  foundation::ChangeTags& tags_;
  const foundation::LanguageFile& texts_;
  platform::Operator& person_;
  const platform::Clock& clock_;
  const CurrentUser& session_;
};

}  // namespace security
