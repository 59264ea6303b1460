#pragma once

#include <string>
#include <string_view>

#include "filter/settings.h"
#include "foundation/language_file.h"
#include "jet/error.h"

namespace filter {

// The condition over `Calls` that the settings ask for, without any user's restriction. Values are in it as they are.
// `extensionIsText`: the type of column `Extension` (PartyDefinitions::extensionIsText).
[[nodiscard]] std::string settingsCondition(const FilterSettings& settings, bool extensionIsText);

// The filter's values break the condition, or would lift the user's restriction; nothing may be run then. The
// description is the operator's, translated.
class FilterError : public jet::Error {
 public:
  using jet::Error::Error;
};

// Throws FilterError when the condition does not parse: a value with a quotation mark in it ends its literal too early.
void requireReadable(const std::string& condition, const foundation::LanguageFile& texts);

// The condition followed by " AND (", the user's restriction and " )"; unchanged when there is none.
// Throws FilterError unless the text, parsed, is a conjunction whose last part is the restriction, whatever quotes and
// brackets the filter's values hold; jet::Error 3075 when the restriction by itself does not parse.
[[nodiscard]] std::string restrictCondition(std::string condition, std::string_view restriction,
                                            const foundation::LanguageFile& texts);

// For a user with a restriction: throws FilterError that names the field when one of the filter's values is more than a
// text within its clause. The database evaluates the filter's part of the condition on rows outside of the restriction
// too; a function or an operator in a value could fail on one of them, and its error would tell what that row holds.
void requireOnlyValues(const FilterSettings& settings, bool extensionIsText, const foundation::LanguageFile& texts);

// A clause with one place for a text ("owner='%s'"), filled with the value as it is. For a user with a restriction,
// whom `restriction` names: throws FilterError, as requireOnlyValues does, when the value is more than a text in it.
[[nodiscard]] std::string clauseWithValue(std::string_view clause, std::string_view value, std::string_view restriction,
                                          std::string_view key, const foundation::LanguageFile& texts);

// How an empty area is called.
inline constexpr std::string_view kLocalArea = "Local";

}  // namespace filter
