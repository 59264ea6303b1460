#pragma once

#include <cstdint>
#include <map>

#include "foundation/language_file.h"
#include "jet/database.h"
#include "security/session.h"

namespace security {

enum class MaskOwner { User, Group };

inline constexpr std::int32_t kMostMaskedDigits = 20;

// The masks that are kept for the users or the groups, by their RecordID; none in a database of an earlier version.
[[nodiscard]] std::map<std::int32_t, Mask> masksOf(jet::Database& main, MaskOwner owner);
// Keeps one; an empty mask takes the row away.
void saveMask(jet::Database& main, MaskOwner owner, std::int32_t id, const Mask& mask);

// What both hide.
[[nodiscard]] Mask stricter(const Mask& one, const Mask& other);

// What a user with that mask sees of the main database; null for an empty mask. Numbers lose their last digits in
// calls, hidden numbers, contacts, and in the texts of the audit log and of contacts' notes. A call is private when its
// number is hidden.
[[nodiscard]] jet::MasksPtr databaseMasks(const Mask& mask);

// Runs the reads of a scope under the masks of one user.
class MaskScope {
 public:
  MaskScope(jet::Database& main, const Mask& mask) : main_(main), before_(main.masks()) {
    main_.setMasks(databaseMasks(mask));
  }
  MaskScope(const MaskScope&) = delete;
  MaskScope& operator=(const MaskScope&) = delete;
  ~MaskScope() { main_.setMasks(before_); }

 private:
  jet::Database& main_;
  jet::MasksPtr before_;
};

// Throws RestrictedUserError when the user sees numbers or names in part only. For work on whole ones.
void requireUnmasked(const CurrentUser& user, const foundation::LanguageFile& texts);

}  // namespace security
