#pragma once

#include "foundation/language_file.h"
#include "jet/error.h"
#include "security/session.h"

namespace security {

// Work on all calls was asked for by a user who may see a part of them only. The text is the operator's, translated.
class RestrictedUserError : public jet::Error {
 public:
  explicit RestrictedUserError(const std::string& text) : jet::Error(3000, text) {}
};

// Throws RestrictedUserError when the user has a restriction on calls. For work whose result, count or fault would tell
// about calls outside of the restriction, or which would change them.
inline void requireAllCalls(const CurrentUser& user, const foundation::LanguageFile& texts) {
  if (!user.SQLSubquery.empty()) throw RestrictedUserError(texts.TranslateFormat("IDS_RESTRICTED_USER", user.Name));
}

}  // namespace security
