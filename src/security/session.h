#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/datetime.h"

namespace security {

// One pair of a group's `ObjectAccess`: a right within a securable object.
struct AccessRight {
  int object = 0;
  int right = 0;
  bool operator==(const AccessRight&) const = default;
};

// Names are kept up to this many characters.
inline constexpr std::size_t kMaxUserName = 128;
// A restriction (`SQLSubquery`) is taken into the session only when it is shorter than this many characters.
inline constexpr std::size_t kRestrictionLimit = 128;

// What a user does not see of numbers and names, in calls and everywhere that they are shown, counted or looked for.
struct Mask {
  std::int32_t digits = 0;    // the last ones of each number, 0 = none; at most kMostMaskedDigits of masks.h
  bool privateNames = false;  // names of calls from and to hidden numbers
  [[nodiscard]] bool any() const { return digits > 0 || privateNames; }
  bool operator==(const Mask&) const = default;
};

// The session's user. Other names with a capital are the columns of `Users`.
struct CurrentUser {
  std::int32_t RecordID = 0;
  std::string CurrentUserName;
  std::string Fullname;
  std::uint32_t passwordDigest = 0;
  std::string password;  // in clear, so that auto-login follows a changed password
  std::optional<base::DateTime> PasswordDate;
  std::optional<base::DateTime> LastAccessDate;
  std::int32_t Flags = 0;   // UserFlag bits of users.h
  std::string SQLSubquery;  // condition on `Calls`; empty = no restriction

  Mask mask;  // the strictest of his own and his groups'

  std::vector<std::int32_t> groups;
  std::vector<AccessRight> rights;    // merged, each pair once
  std::int32_t passwordValidity = 0;  // days, 0 = unlimited: the largest `PasswordExpire` of the groups

  bool UserLoggedIn = false;

  // The name that the audit log stamps: empty while no one is logged in.
  [[nodiscard]] std::string stampName() const { return UserLoggedIn ? CurrentUserName : std::string(); }
};

}  // namespace security
