#include "server/monitor_status.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace server {

namespace {

constexpr std::chrono::seconds kFresh{60};  // it is written every few seconds

std::string summaryOf(const nlohmann::json& status, const foundation::LanguageFile& texts) {
  std::string lastCall;  // "2026-11-25 09:14:00"
  std::int64_t unknown = 0;
  for (const nlohmann::json& source : status["sources"]) {
    lastCall = std::max(lastCall, source.value("last_call", std::string()));
    unknown += source.value("unknown_today", std::int64_t{0});
  }
  constexpr std::size_t kHour = 11;
  constexpr std::size_t kMinuteEnd = 16;
  std::string text = lastCall.size() < kMinuteEnd
                         ? texts.Translate("IDS_MONITOR_NO_CALL")
                         : texts.TranslateFormat("IDS_MONITOR_LAST_CALL", lastCall.substr(kHour, kMinuteEnd - kHour));
  const auto add = [&](std::int64_t number, const char* one, const char* more) {
    if (number > 0) text += ", " + (number == 1 ? texts.Translate(one) : texts.TranslateFormat(more, number));
  };
  add(unknown, "IDS_MONITOR_UNKNOWN_1", "IDS_MONITOR_UNKNOWN");
  add(static_cast<std::int64_t>(status["alarms"].size()), "IDS_MONITOR_ALARM_1", "IDS_MONITOR_ALARMS");
  return text;
}

}  // namespace

std::string readMonitorStatus(const std::filesystem::path& monitorFolder, const foundation::LanguageFile& texts) {
  const std::filesystem::path file = monitorFolder / ".tallymon" / "status.json";
  std::error_code missing;
  if (!std::filesystem::is_regular_file(file, missing)) return {};
  const auto written = std::filesystem::last_write_time(file, missing);
  std::ifstream in(file, std::ios::binary);
  const std::string read{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  try {
    const std::string summary = summaryOf(nlohmann::json::parse(read), texts);
    const bool fresh = !missing && std::filesystem::file_time_type::clock::now() - written < kFresh;
    return fresh ? summary : texts.TranslateFormat("IDS_MONITOR_ENDED", summary);
  } catch (const nlohmann::json::exception&) {
    return {};  // not a file of the capture program
  }
}

}  // namespace server
