#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/party_definitions.h"
#include "foundation/language_file.h"

namespace filter {

// A user's restriction as it is chosen from lists: he sees the calls of all that is named here, and no others. Empty
// lists allow nothing by themselves; with all four empty there is no restriction.
struct RestrictionChoice {
  std::vector<std::string> departments = {};
  std::vector<std::string> extensions = {};
  std::vector<std::string> clients = {};  // by name
  std::vector<std::string> trunks = {};   // by the number that the exchange gives

  [[nodiscard]] bool empty() const {
    return departments.empty() && extensions.empty() && clients.empty() && trunks.empty();
  }
  bool operator==(const RestrictionChoice&) const = default;
};

// The condition on `Calls`, "Department In('Sales','Service') Or Extension='201'"; empty for an empty choice. Names
// may hold any characters. `extensionIsText`: PartyDefinitions::extensionIsText; where it is false, extensions and
// trunks are given as numbers, and one that is none becomes its leading digits.
[[nodiscard]] std::string restrictionFor(const RestrictionChoice& choice, bool extensionIsText);

// The choice that gives this condition; nothing when it says anything that cannot be chosen from lists, or does not
// parse. An empty condition is an empty choice.
[[nodiscard]] std::optional<RestrictionChoice> choiceOf(std::string_view restriction);

// The choice with the department in place of its extensions, for each department of two extensions or more that are
// all chosen. The same calls as long as calls take their department from the extension.
[[nodiscard]] RestrictionChoice withDepartments(RestrictionChoice choice,
                                                std::span<const exchange::tagEXTINFO> extensions);

// For a person who chooses, before anything is saved: that the condition is too long to be applied at login
// (security::kRestrictionLimit), and what to choose instead; empty when it is short enough.
[[nodiscard]] std::string limitText(const RestrictionChoice& choice, const exchange::PartyDefinitions& definitions,
                                    const foundation::LanguageFile& texts);

}  // namespace filter
