#include "capture/format/source_settings.h"

#include <charconv>

#include "base/text.h"

namespace capture {

namespace {

struct TextKey {
  std::string_view name;
  std::string SourceSettings::*member;
  std::string_view values;  // the allowed ones with blanks between; empty: any text
};
constexpr TextKey kTexts[] = {
    {"date_order", &SourceSettings::dateOrder, "dmy mdy"}, {"clock", &SourceSettings::clock, "12 24"},
    {"time", &SourceSettings::time, "start end"},          {"zone", &SourceSettings::zone, ""},
    {"utc", &SourceSettings::utc, "true false"},           {"encoding", &SourceSettings::encoding, ""},
    {"extensions", &SourceSettings::extensions, ""},       {"window", &SourceSettings::window, ""},
    {"mode", &SourceSettings::mode, "legs merge"},
};

struct ListKey {
  std::string_view name;
  std::vector<std::string> SourceSettings::*member;
};
constexpr ListKey kLists[] = {
    {"strip_access", &SourceSettings::stripAccess},
    {"trunks", &SourceSettings::trunks},
};

bool isOneOf(std::string_view value, std::string_view values) {
  for (const std::string& allowed : base::split(values, " ")) {
    if (allowed == value) return true;
  }
  return false;
}

}  // namespace

bool SourceSettings::knows(std::string_view key) {
  for (const TextKey& text : kTexts) {
    if (text.name == key) return true;
  }
  for (const ListKey& list : kLists) {
    if (list.name == key) return true;
  }
  return false;
}

void SourceSettings::set(std::string_view key, std::string_view value) {
  for (const TextKey& text : kTexts) {
    if (text.name != key) continue;
    if (!text.values.empty() && !isOneOf(value, text.values)) {
      throw SettingError("'" + std::string(value) + "' is no value of " + std::string(key) +
                         "; it is one of: " + std::string(text.values));
    }
    this->*text.member = value;
    return;
  }
  for (const ListKey& list : kLists) {
    if (list.name != key) continue;
    (this->*list.member).clear();
    for (const std::string& item : base::split(value, ",")) {
      (this->*list.member).emplace_back(base::trim(item));
    }
    return;
  }
  throw SettingError("unknown key '" + std::string(key) + "'");
}

std::chrono::seconds parseWindow(std::string_view text) {
  int count = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), count);
  const std::string_view unit = base::trim(text.substr(static_cast<std::size_t>(end - text.data())));
  const int seconds = unit == "s" ? 1 : unit == "min" ? 60 : unit == "h" ? 3600 : 0;
  if (fault != std::errc() || seconds == 0 || count < 0 || count > 86400) {
    throw SettingError("'" + std::string(text) + "' is no window; it is written like \"90 s\", \"10 min\" or \"1 h\"");
  }
  return std::chrono::seconds(std::int64_t{count} * seconds);
}

}  // namespace capture
