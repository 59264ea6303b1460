#pragma once

#include <string>
#include <string_view>

#include "ctl/command.h"
#include "security/rights.h"

namespace ctl {

// How the command line names the rights.
struct RightWord {
  security::AccessRight right;
  std::string_view word;
};
inline constexpr RightWord kRightWords[] = {
    {{security::ObjectAdministration, security::RightView}, "view-administration"},
    {{security::ObjectAdministration, security::RightChange}, "change-administration"},
    {{security::ObjectCalls, security::RightView}, "view-calls"},
    {{security::ObjectCalls, security::RightChange}, "change-calls"},
};

// Its word, or "object;right" as it is kept when it has none.
[[nodiscard]] std::string rightText(const security::AccessRight& right);

inline constexpr Access kViewCalls = {security::ObjectCalls, security::RightView};
inline constexpr Access kChangeCalls = {security::ObjectCalls, security::RightChange};
inline constexpr Access kImportCalls = {security::ObjectCalls, security::RightChange, Duty::Import};
inline constexpr Access kServeCalls = {security::ObjectCalls, security::RightChange, Duty::Serve};
inline constexpr Access kViewSettings = {security::ObjectAdministration, security::RightView};
inline constexpr Access kChangeSettings = {security::ObjectAdministration, security::RightChange};

}  // namespace ctl
