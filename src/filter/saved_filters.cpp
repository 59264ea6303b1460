#include "filter/saved_filters.h"

#include <algorithm>
#include <charconv>

#include "base/printf.h"
#include "base/text.h"
#include "filter/periods.h"

namespace filter {

namespace {

constexpr std::string_view kSection = "Saved filters";
constexpr std::string_view kCount = "Count";
constexpr std::string_view kPresetKey = "Period";  // among a filter's values

// Values are joined by semicolons: what would end one is written as %XX.
std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '%' || c == ';' || c == '=' || c == '"' || static_cast<unsigned char>(c) < 0x20) {
      out += base::format("%%%02X", static_cast<std::int32_t>(static_cast<unsigned char>(c)));
    } else {
      out += c;
    }
  }
  return out;
}

std::string unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned code = 0;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(text.data() + i + 1, text.data() + i + 3, code, 16).ptr == text.data() + i + 3) {
      out += static_cast<char>(code);
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string textOf(const FilterSettings& settings, base::DateTime now) {
  const auto preset = settings.onPeriod != 0 ? presetOf(periodOf(settings), now) : std::nullopt;
  std::string text;
  for (const FilterKey& key : filterKeys()) {
    text += escaped(key.key) + "=" + escaped(valueText(settings, key)) + ";";
  }
  for (const PresetName& name : kPresets) {
    if (preset == name.preset) text += std::string(kPresetKey) + "=" + std::string(name.word) + ";";
  }
  return text;
}

// A later version's keys are passed over.
FilterSettings settingsOf(std::string_view text, base::DateTime now) {
  FilterSettings settings;
  for (const std::string& pair : base::split(text, ";")) {
    const auto equal = pair.find('=');
    if (equal == std::string::npos) continue;
    const std::string key = unescaped(std::string_view(pair).substr(0, equal));
    const std::string value = unescaped(std::string_view(pair).substr(equal + 1));
    for (const PresetName& name : kPresets) {
      if (key == kPresetKey && value == name.word) setPeriod(settings, periodOf(name.preset, now));
    }
    const FilterKey* known = findFilterKey(key);
    if (known == nullptr) continue;
    if (known->type == KeyType::Integer) {
      settings.*known->integer = base::leadingInteger(value);
    } else {
      settings.*known->text = value;
    }
  }
  return settings;
}

}  // namespace

std::vector<SavedFilters::Entry> SavedFilters::read() {
  std::vector<Entry> entries;
  const std::int32_t count = config_.ReadConfigInt(kCount, kSection, store_, 0);
  for (std::int32_t i = 1; i <= count; ++i) {
    const std::string name = config_.ReadConfigString(base::format("Name %d", i), kSection, store_, "");
    const std::string text = config_.ReadConfigString(base::format("Filter %d", i), kSection, store_, "");
    if (!name.empty()) entries.push_back({unescaped(name), text});
  }
  return entries;
}

bool SavedFilters::write(const std::vector<Entry>& entries) {
  bool written = true;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto number = static_cast<std::int32_t>(i + 1);
    written &= config_.WriteConfigString(escaped(entries[i].name), base::format("Name %d", number), kSection, store_);
    written &= config_.WriteConfigString(entries[i].text, base::format("Filter %d", number), kSection, store_);
  }
  return config_.WriteConfigInt(static_cast<std::int32_t>(entries.size()), kCount, kSection, store_) && written;
}

std::vector<std::string> SavedFilters::names() {
  std::vector<std::string> names;
  for (Entry& entry : read()) names.push_back(std::move(entry.name));
  std::ranges::sort(names, {}, [](const std::string& name) { return base::fold(name); });
  return names;
}

std::optional<FilterSettings> SavedFilters::find(std::string_view name, base::DateTime now) {
  for (const Entry& entry : read()) {
    if (base::equalFold(entry.name, name)) return settingsOf(entry.text, now);
  }
  return std::nullopt;
}

bool SavedFilters::save(std::string_view name, const FilterSettings& settings, base::DateTime now) {
  std::vector<Entry> entries = read();
  std::erase_if(entries, [&](const Entry& entry) { return base::equalFold(entry.name, name); });
  entries.push_back({std::string(name), textOf(settings, now)});
  return write(entries);
}

bool SavedFilters::remove(std::string_view name) {
  std::vector<Entry> entries = read();
  std::erase_if(entries, [&](const Entry& entry) { return base::equalFold(entry.name, name); });
  return write(entries);
}

}  // namespace filter
