#include "tallymon/line_file.h"

#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "base/printf.h"
#include "capture/format/definition.h"
#include "capture/format/file_test.h"

namespace tallymon {

namespace {

constexpr std::size_t kVisible = 200;

// Keys of a source that change what becomes of a call and not how a line is read. They are taken, so that a source's
// keys can be tried as they are.
bool isOfDelivery(std::string_view key) {
  return key == "id" || key == "format" || key == "internal" || key == "extension_prefix" || key == "quiet";
}

std::size_t records(const std::vector<std::string>& lines, const std::shared_ptr<const capture::Format>& format,
                    const capture::SourceSettings& settings, std::chrono::sys_seconds arrived) {
  std::stringstream text;
  for (const std::string& line : lines) text << line << '\n';
  std::size_t count = 0;
  for (const auto& result : capture::readAll(text, format, settings, arrived, nullptr)) count += result.records.size();
  return count;
}

}  // namespace

LineFile::LineFile(const std::string& name) : standard_(name == "-") {
  if (standard_) return;
  std::error_code fault;
  const auto kind = std::filesystem::status(name, fault).type();
  if (kind == std::filesystem::file_type::directory) throw std::runtime_error(name + " is a folder");
  file_.open(name, std::ios::binary);
  if (!file_) throw std::runtime_error("cannot open " + name);
}

std::istream& LineFile::stream() {
  if (standard_) return std::cin;
  return file_;
}

capture::SourceSettings settingsOf(const std::vector<std::string>& texts) {
  capture::SourceSettings settings;
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw capture::SettingError("--set takes KEY=VALUE, not '" + text + "'");
    const std::string_view key = std::string_view(text).substr(0, equals);
    if (!isOfDelivery(key)) settings.set(key, std::string_view(text).substr(equals + 1));
  }
  return settings;
}

std::chrono::sys_seconds arrivalOrNow(const std::string& text, const capture::SourceSettings& settings) {
  if (!text.empty()) return capture::arrivalOf(text, settings);
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string visibleText(std::string_view text) {
  std::string visible;
  for (char c : text.substr(0, kVisible)) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      visible += base::format("\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    } else {
      visible += c;
    }
  }
  return text.size() > kVisible ? visible + "..." : visible;
}

std::vector<std::string> doubts(const std::vector<std::string>& lines,
                                const std::shared_ptr<const capture::Format>& format,
                                const capture::SourceSettings& settings, std::chrono::sys_seconds arrived) {
  std::vector<std::string> found;
  if (format->asksTrunks() && settings.trunks.empty()) {
    found.emplace_back(
        "the direction of calls depends on the names of the trunks: set trunks (--set trunks=NAME,NAME)");
  }
  if (format->asksExtensions() && settings.extensions.empty()) {
    found.emplace_back(
        "the direction of calls depends on which numbers are yours: set extensions, a pattern "
        "(--set extensions='[1-4]\\d\\d')");
  }
  if (format->hasDateOrder()) {
    capture::SourceSettings dayFirst = settings;
    dayFirst.dateOrder = "dmy";
    capture::SourceSettings monthFirst = settings;
    monthFirst.dateOrder = "mdy";
    const std::size_t count = records(lines, format, dayFirst, arrived);
    if (count > 0 && count == records(lines, format, monthFirst, arrived)) {
      found.emplace_back("every date fits as day/month and as month/day: set date_order to dmy or mdy");
    }
  }
  return found;
}

}  // namespace tallymon
