#include "tallymon/shown_call.h"

#include "base/printf.h"

namespace tallymon {

std::string callText(const capture::Call& call) {
  std::string text =
      base::format("%-8s %s  %4d s", capture::toText(call.direction), call.start.stored(), call.durationSeconds);
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) text += base::format("  %s %s", name, value);
  };
  add("extension", call.extension);
  add("trunk", call.trunk);
  add("number", call.number);
  add("ring", call.ringSeconds == 0 ? "" : std::to_string(call.ringSeconds));
  add("account", call.account);
  add("pulses", call.pulses == 0 ? "" : std::to_string(call.pulses));
  add("cd", call.cd);
  if (call.redirected) text += "  redirected";
  return text;
}

}  // namespace tallymon
