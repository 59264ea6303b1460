#include "server/monitor_status.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace server {

namespace {
constexpr std::chrono::seconds kFresh{60};  // it is written every few seconds
}

std::string readMonitorStatus(const std::filesystem::path& monitorFolder) {
  const std::filesystem::path file = monitorFolder / ".tallymon" / "status.json";
  std::error_code missing;
  if (!std::filesystem::is_regular_file(file, missing)) return {};
  const auto written = std::filesystem::last_write_time(file, missing);
  std::ifstream in(file, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  const nlohmann::json status = nlohmann::json::parse(text, nullptr, false);
  if (!status.is_object() || !status.contains("summary") || !status["summary"].is_string()) return {};
  const std::string summary = status["summary"].get<std::string>();
  const bool fresh = !missing && std::filesystem::file_time_type::clock::now() - written < kFresh;
  return fresh ? summary : "does not run; when it did: " + summary;
}

}  // namespace server
