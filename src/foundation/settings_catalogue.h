#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "foundation/config_manager.h"

namespace foundation {

enum class SettingType { Integer, String, Binary };

// A known setting: where it lives, for the command line, the desktop and the documents. Callers of ConfigManager still
// choose the store themselves; this table is what they choose by.
struct Setting {
  std::string_view section;  // may end in a placeholder, as "Provider_%d"
  std::string_view key;      // may hold one placeholder at its end, as "ExtDef%d" or "PathDatabase_%s"
  Store store;
  SettingType type;
  std::string_view fallback;  // as text; empty where the reader chooses
};

[[nodiscard]] std::span<const Setting> knownSettings();

// The setting of that name, case ignored and placeholders matched; nullptr when it is not known.
[[nodiscard]] const Setting* findSetting(std::string_view section, std::string_view key);

// Nothing when the setting is not known.
[[nodiscard]] std::optional<Store> storeOf(std::string_view section, std::string_view key);

}  // namespace foundation
