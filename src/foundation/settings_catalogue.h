#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/config_manager.h"

namespace foundation {

enum class SettingType { Integer, String, Binary };

// What a text setting holds, where not just any text will do.
enum class SettingForm {
  Any,
  Folder,   // a folder; names of files are appended to it, so its writer adds the closing separator
  Secret,   // a password: a list says only whether it is set
  Decimal,  // a decimal number with "." or nothing; it goes into statements as it is
};

// A known setting: where it lives and what it holds, for the command line, the desktop's pages and the documents. Code
// that reads one by its name from a ConfigManager repeats its store and default; a test of the tree compares them.
struct Setting {
  std::string_view section;  // may end in a placeholder, as "Provider_%d"
  std::string_view key;      // may hold one placeholder at its end, as "ExtDef%d" or "PathDatabase_%s"
  Store store;
  SettingType type;
  std::string_view fallback;  // as text; empty where the reader chooses
  SettingForm form = SettingForm::Any;
  std::int32_t least = std::numeric_limits<std::int32_t>::min();  // of integers
  std::int32_t most = std::numeric_limits<std::int32_t>::max();
};

// The period of a filter whose period was never set.
inline constexpr std::string_view kDefaultPeriodStart = "12/31/1999 00:00:00";
inline constexpr std::string_view kDefaultPeriodEnd = "12/31/2002 23:59:59";
inline constexpr std::string_view kDescribedPeriodEnd = "12/31/1999 23:59:59";  // in the description of the filter

[[nodiscard]] std::span<const Setting> knownSettings();

// The setting of that name, case ignored and placeholders matched; nullptr when it is not known.
[[nodiscard]] const Setting* findSetting(std::string_view section, std::string_view key);

// A text as it may be stored in the setting: blanks at its ends are dropped, a folder gets its closing separator, a
// whole number is written in plain digits. Throws std::invalid_argument, with the reason in English, for what is no
// number or out of range, and for settings that are no texts or numbers.
[[nodiscard]] std::string storableValue(const Setting& setting, std::string_view typed);

// The whole number that a text is; nothing for any other text and beyond 32 bits.
[[nodiscard]] std::optional<std::int32_t> wholeNumber(std::string_view text);

// A text that SettingForm::Decimal allows: an optional minus, digits, and perhaps "." and more digits; blanks around it
// do no harm. An empty text counts as 0.
[[nodiscard]] bool isDecimal(std::string_view text);

// Nothing when the setting is not known.
[[nodiscard]] std::optional<Store> storeOf(std::string_view section, std::string_view key);

}  // namespace foundation
