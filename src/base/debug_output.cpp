#include "base/debug_output.h"

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdlib>
#include <memory>

namespace base {

namespace {

spdlog::logger& logger() {
  static const std::shared_ptr<spdlog::logger> instance = [] {
    auto made = std::make_shared<spdlog::logger>("tallybook", std::make_shared<spdlog::sinks::stderr_sink_mt>());
    const char* level = std::getenv("TALLYBOOK_LOG");
    made->set_level(level == nullptr ? spdlog::level::off : spdlog::level::from_str(level));
    return made;
  }();
  return *instance;
}

}  // namespace

bool debugOutputEnabled() {
  return logger().should_log(spdlog::level::debug);
}

void debugOutput(std::string_view line) {
  if (debugOutputEnabled()) logger().debug("{}", line);
}

}  // namespace base
