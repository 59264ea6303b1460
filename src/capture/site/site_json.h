#pragma once

#include <toml++/toml.h>

#include <nlohmann/json.hpp>
#include <string>

namespace capture {

// Tables of a site file as JSON, for programs that show and change them. Times of day and dates, which a site file has
// no use for, become texts.
[[nodiscard]] nlohmann::ordered_json jsonOf(const toml::table& table);

// The other way round. Throws SiteError for what a site file cannot hold: null, and numbers with a fraction.
[[nodiscard]] toml::table tableOf(const nlohmann::json& object);

// A value as it is in a site file; tables as { ... }, in one line. Equal values give equal texts.
[[nodiscard]] std::string tomlText(const toml::node& value);
// A key, in quotation marks where it needs them.
[[nodiscard]] std::string tomlKey(std::string_view key);

}  // namespace capture
