#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/printf.h"

namespace foundation {

// Where a setting lives. Any other number is taken as the database store.
enum Store : int { StoreMachine = 1, StoreDatabase = 2 };

// The section of most settings.
inline constexpr const char* kGeneral = "general";

enum class SettingType { Integer, String, Binary };

// What a text setting holds, where not just any text will do.
enum class SettingForm {
  Any,
  Folder,   // a folder; names of files are appended to it, so its writer adds the closing separator
  Secret,   // a password: a list says only whether it is set
  Decimal,  // a decimal number with "." or nothing; it goes into statements as it is
};

// A row of the table of settings: where a setting lives and what it holds.
struct Setting {
  std::string_view section;  // may end in a placeholder, as "Provider_%d"
  std::string_view key;      // may end in a placeholder, as "ExtDef%d" or "PathDatabase_%s"
  Store store;
  SettingType type;
  std::string_view fallback;  // the default of a text
  SettingForm form = SettingForm::Any;
  std::int32_t number = 0;  // the default of an integer
  std::int32_t least = std::numeric_limits<std::int32_t>::min();
  std::int32_t most = std::numeric_limits<std::int32_t>::max();
};

// A setting that holds a text, as ConfigManager reads and writes it.
struct TextKey : Setting {
  constexpr TextKey(std::string_view section, std::string_view key, Store store, std::string_view fallback = {},
                    SettingForm form = SettingForm::Any)
      : Setting{section, key, store, SettingType::String, fallback, form} {}
  // A row whose type is known at run time only. Throws std::logic_error for one that holds no text.
  explicit constexpr TextKey(const Setting& row) : Setting(row) {
    if (type != SettingType::String) throw std::logic_error("a setting that is no text");
  }
};

// A setting that holds a whole number of 32 bits; switches are 0 or 1.
struct NumberKey : Setting {
  constexpr NumberKey(std::string_view section, std::string_view key, Store store, std::int32_t fallback = 0,
                      std::int32_t least = std::numeric_limits<std::int32_t>::min(),
                      std::int32_t most = std::numeric_limits<std::int32_t>::max())
      : Setting{section, key, store, SettingType::Integer, {}, SettingForm::Any, fallback, least, most} {}
  // As TextKey's.
  explicit constexpr NumberKey(const Setting& row) : Setting(row) {
    if (type != SettingType::Integer) throw std::logic_error("a setting that is no number");
  }
};

// One of the settings of a series, which owns its names.
template <typename Key>
class SeriesKey {
 public:
  SeriesKey(const Key& pattern, std::string section, std::string key)
      : pattern_(pattern), section_(std::move(section)), key_(std::move(key)) {}

  // Good as long as this object.
  operator Key() const {
    Key made = pattern_;
    made.section = section_;
    made.key = key_;
    return made;
  }

 private:
  const Key& pattern_;
  std::string section_;
  std::string key_;
};

// Settings that differ in a number or a name, which is a placeholder ("%d", "%s") at the end of key or section.
template <typename Key>
struct SettingSeries {
  Key pattern;

  [[nodiscard]] SeriesKey<Key> of(const auto& value) const {
    const bool inSection = pattern.section.find('%') != std::string_view::npos;
    return {pattern, inSection ? base::format(pattern.section, value) : std::string(pattern.section),
            inSection ? std::string(pattern.key) : base::format(pattern.key, value)};
  }
  // Of a series with a placeholder in both.
  [[nodiscard]] SeriesKey<Key> of(const auto& section, const auto& value) const {
    return {pattern, base::format(pattern.section, section), base::format(pattern.key, value)};
  }
};

using TextSeries = SettingSeries<TextKey>;
using NumberSeries = SettingSeries<NumberKey>;

}  // namespace foundation
