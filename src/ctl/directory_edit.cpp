#include "ctl/directory_edit.h"

#include "base/printf.h"
#include "security/masks.h"

namespace ctl {

void requireSaved(security::SaveResult result, std::string_view what, std::string_view name) {
  using security::SaveResult;
  switch (result) {
    case SaveResult::Saved:
      return;
    case SaveResult::NameUnusable:
      throw Failure("A name may not be empty or hold a quotation mark.");
    case SaveResult::NameTaken:
      throw Failure(base::format("There is a %s %s already.", what, name));
    case SaveResult::Missing:
      throw Failure(base::format("The %s %s was deleted meanwhile.", what, name));
    case SaveResult::LastAdministrator:
      throw Failure(
          base::format("Nothing was changed: without the %s %s nobody could change users and settings any more. Give "
                       "that right to another user first: tallyctl user set NAME --groups Administrators",
                       what, name));
    case SaveResult::RestrictionRejected:
      throw Failure(base::format("The restriction does not work; the %s %s was not saved.", what, name));
  }
}

security::Mask typedMask(const Arguments& arguments, security::Mask mask) {
  mask.digits =
      static_cast<std::int32_t>(arguments.integer(kMaskDigits.name, mask.digits, 0, security::kMostMaskedDigits));
  const bool hide = arguments.has(kMaskPrivateNames.name);
  const bool show = arguments.has(kShowPrivateNames.name);
  if (hide && show) {
    throw WrongUsage(base::format("Give %s or %s, not both.", kMaskPrivateNames.name, kShowPrivateNames.name));
  }
  if (hide || show) mask.privateNames = hide;
  return mask;
}

std::string maskText(const security::Mask& mask) {
  std::string text = mask.digits > 0 ? base::format("%d digits", mask.digits) : std::string();
  if (mask.privateNames) text += text.empty() ? "private names" : ", private names";
  return text;
}

}  // namespace ctl
