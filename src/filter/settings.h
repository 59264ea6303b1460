#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/datetime.h"
#include "foundation/config_manager.h"
#include "foundation/setting_keys.h"

namespace filter {

// The call filter of a workstation, as it is in section "Calls" of the machine store.
//
// Switches are integers: those of extension, trunk, account, department and name act only when they equal 1, the others
// on any non-zero value. Defaults are those of the condition.
struct FilterSettings {
  std::int32_t numberFilterEnabled = 0;  // kept, no part of the condition
  std::int32_t onFilter = 0;
  std::int32_t hidden = 0;
  std::int32_t onIncoming = 0;  // keeps the calls whose `Incoming` is 0
  std::int32_t onOutgoing = 0;  // keeps the calls whose `Incoming` is 1
  std::int32_t onExtension = 0;
  std::string extension;
  std::int32_t onTrunk = 0;
  std::int32_t trunk = 0;
  std::int32_t onAccount = 0;
  std::string account;      // prefix
  std::string accountName;  // its display text
  std::int32_t onDepartment = 0;
  std::string department;
  std::int32_t onName = 0;
  std::string name;  // prefix; a leading "!" negates
  std::int32_t onClient = 0;
  std::string client;
  std::int32_t onFolder = 0;
  std::string folder;
  std::int32_t onArea = 0;
  std::string area;
  std::int32_t onPeriod = 0;
  std::string intervalStart{foundation::kDefaultPeriodStart};  // "%m/%d/%Y %H:%M:%S"
  std::string intervalEnd{foundation::kDefaultPeriodEnd};
  std::string numberPrefix;
  std::string number;
  std::string country;
  std::string provider;
  std::int32_t onMinDuration = 0;
  std::int32_t minDuration = 0;  // seconds

  bool operator==(const FilterSettings&) const = default;
};

inline constexpr std::string_view kPeriodFormat = "%m/%d/%Y %H:%M:%S";

enum class KeyType { Integer, Text, DateTime };

// One key of the section and the member that holds it.
struct FilterKey {
  const foundation::Setting& setting;
  KeyType type;
  std::int32_t FilterSettings::*integer = nullptr;
  std::string FilterSettings::*text = nullptr;
  std::string_view key = setting.key;
};

// In the order in which they are shown.
[[nodiscard]] std::span<const FilterKey> filterKeys();
// Case ignored; null when there is none.
[[nodiscard]] const FilterKey* findFilterKey(std::string_view key);
// The value as it is stored, integers in decimal digits.
[[nodiscard]] std::string valueText(const FilterSettings& settings, const FilterKey& key);

[[nodiscard]] FilterSettings readSettings(foundation::ConfigManager& config);
// These are false when the machine store cannot be written.
bool writeSettings(foundation::ConfigManager& config, const FilterSettings& settings);
// Only these keys: a period that was never set stays unset, and each reader's own default holds.
bool writeKeys(foundation::ConfigManager& config, const FilterSettings& settings,
               std::span<const std::string_view> keys);

// The names under which the filter's dialog showed the chosen parties, section "Denumire"; each defaults to the
// filter's own value.
struct DisplayNames {
  std::string extension;   // "Interior"
  std::string client;      // "Client"
  std::string folder;      // "Folder"
  std::string department;  // "Depart"
};
[[nodiscard]] DisplayNames readDisplayNames(foundation::ConfigManager& config, const FilterSettings& settings);
bool writeDisplayNames(foundation::ConfigManager& config, const DisplayNames& names);
// Drops the names of values that changed without a dialog, so that the values themselves show.
bool dropStaleNames(foundation::ConfigManager& config, const FilterSettings& before, const FilterSettings& after);

// Takes a value as somebody typed it. Dates have the forms of base::typedDate and are stored in kPeriodFormat; a bare
// date as the end of the period is the whole day.
// Throws std::invalid_argument that says what is wrong with which key.
void setValue(FilterSettings& settings, std::string_view key, std::string_view value);

// The operator's commands: what clearing sets back to the default, and what choosing a month sets. Clearing leaves
// "OnFilter", "Hidden", "OnIncoming", "OnOutgoing" and "OnMinDuration".
inline constexpr std::array<std::string_view, 13> kClearedKeys = {
    foundation::keys::filter::OnExtension.key, foundation::keys::filter::OnDepartment.key,
    foundation::keys::filter::OnName.key,      foundation::keys::filter::OnAccount.key,
    foundation::keys::filter::OnClient.key,    foundation::keys::filter::OnFolder.key,
    foundation::keys::filter::OnArea.key,      foundation::keys::filter::OnTrunk.key,
    foundation::keys::filter::OnPeriod.key,    foundation::keys::filter::NumberPrefix.key,
    foundation::keys::filter::Number.key,      foundation::keys::filter::Country.key,
    foundation::keys::filter::Provider.key};
inline constexpr std::array<std::string_view, 4> kMonthKeys = {
    foundation::keys::filter::OnFilter.key, foundation::keys::filter::OnPeriod.key,
    foundation::keys::filter::IntervalStart.key, foundation::keys::filter::IntervalEnd.key};
void setThisMonth(FilterSettings& settings, base::DateTime today);
void setPreviousMonth(FilterSettings& settings, base::DateTime today);

// A stored date-time text; the fallback when it is none.
[[nodiscard]] base::DateTime parsePeriod(std::string_view stored, std::string_view fallback);

// The period as the dialog shows it: unlike the condition's, the start defaults to "1/1/2001 00:00:00".
struct DialogPeriod {
  base::DateTime start;
  base::DateTime end;
};
[[nodiscard]] DialogPeriod readDialogPeriod(foundation::ConfigManager& config);

}  // namespace filter
