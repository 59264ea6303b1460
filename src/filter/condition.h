#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "filter/settings.h"
#include "jet/database.h"
#include "jet/error.h"

namespace filter {

// The condition over `Calls` that the settings ask for, without any user's restriction. Values stand in it as they are.
// `extensionIsText`: the type of column `Extension` (PartyDefinitions::extensionIsText).
[[nodiscard]] std::string settingsCondition(const FilterSettings& settings, bool extensionIsText);

// The filter's values would lift the user's restriction; nothing may be run then.
class RestrictionError : public jet::Error {
 public:
  using jet::Error::Error;
};

// The condition followed by " AND (", the user's restriction and " )"; unchanged when there is none.
// Throws RestrictionError unless the text, parsed, is a conjunction whose last part is the restriction, whatever quotes
// and brackets the filter's values hold; jet::Error 3075 when the restriction by itself does not parse.
[[nodiscard]] std::string restrictCondition(std::string condition, std::string_view restriction);

// What the filter dialog offers. "Local" stands for calls without an area.
inline constexpr std::string_view kLocalArea = "Local";
[[nodiscard]] std::vector<std::string> offeredAreas(jet::Database& main);  // without the entry "Local"
[[nodiscard]] std::vector<std::string> offeredClients(jet::Database& main);
[[nodiscard]] std::vector<std::string> offeredFolders(jet::Database& main, std::string_view client);

}  // namespace filter
