#pragma once

#include <chrono>
#include <istream>
#include <memory>
#include <string>
#include <vector>

#include "capture/call.h"
#include "capture/format/format.h"
#include "capture/format/source_settings.h"

namespace capture {

// How many lines had each outcome.
struct OutcomeCounts {
  std::size_t lines = 0;
  std::size_t byOutcome[6] = {};

  void add(Outcome outcome);
  [[nodiscard]] std::size_t of(Outcome outcome) const { return byOutcome[static_cast<std::size_t>(outcome)]; }
};

// Reads a whole stream as the lines of one source that all came at `arrived`. The results are in the order of the
// lines, numbered from 1; `lines` gets their texts when it is not null.
[[nodiscard]] std::vector<LineResult> readAll(std::istream& in, const std::shared_ptr<const Format>& format,
                                              const SourceSettings& settings, std::chrono::sys_seconds arrived,
                                              std::vector<std::string>* lines);

// Runs the test lines of a format; each text says what differs. `count` gets the number of lines.
[[nodiscard]] std::vector<std::string> checkFormat(const std::shared_ptr<const Format>& format, std::size_t& count);

// Local text "YYYY-MM-DD HH:MM:SS" in the settings' zone. Throws SettingError.
[[nodiscard]] std::chrono::sys_seconds arrivalOf(const std::string& text, const SourceSettings& settings);

}  // namespace capture
