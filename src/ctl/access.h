#pragma once

#include "ctl/command.h"
#include "security/rights.h"

namespace ctl {

inline constexpr Access kViewCalls = {security::ObjectCalls, security::RightView};
inline constexpr Access kChangeCalls = {security::ObjectCalls, security::RightChange};
inline constexpr Access kImportCalls = {security::ObjectCalls, security::RightChange, Duty::Import};
inline constexpr Access kServeCalls = {security::ObjectCalls, security::RightChange, Duty::Serve};
inline constexpr Access kViewSettings = {security::ObjectAdministration, security::RightView};
inline constexpr Access kChangeSettings = {security::ObjectAdministration, security::RightChange};

}  // namespace ctl
