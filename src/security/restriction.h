#pragma once

#include "foundation/language_file.h"
#include "jet/error.h"
#include "security/masks.h"
#include "security/session.h"

namespace security {

// Work on all calls was asked for by a user who may see a part of them only. The text is the operator's, translated.
class RestrictedUserError : public jet::Error {
 public:
  explicit RestrictedUserError(const std::string& text) : jet::Error(3000, text) {}
};

// Throws RestrictedUserError when the user has a restriction on calls, or sees their numbers or names in part only. For
// work whose result, count or fault would tell about what he does not see, or which would change it.
inline void requireAllCalls(const CurrentUser& user, const foundation::LanguageFile& texts) {
  if (!user.SQLSubquery.empty())
    throw RestrictedUserError(texts.TranslateFormat("IDS_RESTRICTED_USER", user.CurrentUserName));
  requireUnmasked(user, texts);
}

}  // namespace security
