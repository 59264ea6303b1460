#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/setting_keys.h"

namespace foundation {

// Every setting of setting_keys.h, for what shows or checks them all: the command line, doctor.
[[nodiscard]] std::span<const Setting* const> knownSettings();

// The setting of that name, case ignored and placeholders matched; nullptr when it is not known.
[[nodiscard]] const Setting* findSetting(std::string_view section, std::string_view key);

// The value that holds while none is stored, as text; empty where there is none.
[[nodiscard]] std::string defaultText(const Setting& setting);

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
