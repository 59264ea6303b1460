#pragma once

#include <chrono>
#include <fstream>
#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "capture/format/format.h"
#include "capture/format/source_settings.h"

namespace tallymon {

// A file of lines, or standard input when its name is "-".
class LineFile {
 public:
  // Throws std::runtime_error when it cannot be opened or is no file.
  explicit LineFile(const std::string& name);
  [[nodiscard]] std::istream& stream();

 private:
  std::ifstream file_;
  bool standard_;
};

// Settings of KEY=VALUE texts. Throws capture::SettingError.
[[nodiscard]] capture::SourceSettings settingsOf(const std::vector<std::string>& texts);
// The given local time of arrival; now when it is empty.
[[nodiscard]] std::chrono::sys_seconds arrivalOrNow(const std::string& text, const capture::SourceSettings& settings);

// Control characters as \xNN; the rest of an overlong line as "...".
[[nodiscard]] std::string visibleText(std::string_view text);

// What is not certain although the lines are read: the order of day and month, settings that decide directions.
[[nodiscard]] std::vector<std::string> doubts(const std::vector<std::string>& lines,
                                              const std::shared_ptr<const capture::Format>& format,
                                              const capture::SourceSettings& settings,
                                              std::chrono::sys_seconds arrived);

}  // namespace tallymon
