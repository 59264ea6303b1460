#pragma once

#include <string_view>

#include "ctl/command.h"
#include "security/users.h"

namespace ctl {

// Help for the commands that edit users and groups.

// Throws Failure, in words, for everything but Saved. `what` is "user" or "group".
void requireSaved(security::SaveResult result, std::string_view what, std::string_view name);

// The options that say what users, or the members of a group, do not see.
inline constexpr OptionSpec kMaskDigits = {
    .name = "--mask-digits",
    .help = "How many last digits of each number are masked, in lists, sums, searches and reports alike; 0: none",
    .valueName = "N"};
inline constexpr OptionSpec kMaskPrivateNames = {.name = "--mask-private-names",
                                                 .takes = Takes::Nothing,
                                                 .help = "Mask the names of calls from and to hidden numbers, too"};
inline constexpr OptionSpec kShowPrivateNames = {
    .name = "--show-private-names", .takes = Takes::Nothing, .help = "Show those names again"};

// The mask after those options; what was not typed stays.
[[nodiscard]] security::Mask typedMask(const Arguments& arguments, security::Mask mask);
// "3 digits, private names"; empty for none.
[[nodiscard]] std::string maskText(const security::Mask& mask);

}  // namespace ctl
