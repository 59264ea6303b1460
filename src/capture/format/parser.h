#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "capture/call.h"
#include "capture/format/source_settings.h"

namespace capture {

class Format;

// Reads the lines of one source, in the order in which they came, and gives every line its outcome.
//
// The results are a pure function of the calls made: the same lines with the same positions and arrival times, and the
// same ticks in the same places, give the same results in the same order. So that this holds over a restart, a caller
// that keeps a journal notes there each tick that gave a result, as an entry of its own; the results that entry p
// releases then belong to p, and a range of entries a..b always gives the same records.
//
// State (headings, dates, calls that wait for a further line, ids already seen) comes back by giving the parser the
// entries before the continuation point again and dropping the results: kStateHours of them are enough.
class Parser {
 public:
  static constexpr int kStateHours = 72;

  // Throws SettingError when a setting does not fit (unknown zone, bad pattern).
  Parser(std::shared_ptr<const Format> format, const SourceSettings& settings);
  ~Parser();
  Parser(Parser&&) noexcept;
  Parser& operator=(Parser&&) noexcept;

  // The code page of the records, to whose letters the texts of the calls are reduced (1252 ...).
  [[nodiscard]] int codepage() const;

  // One line without its end, as the framer gave it. Positions must rise. The results are those that are certain now:
  // as a rule the line's own; none while it waits for another; those of earlier lines that it settles, oldest first.
  std::vector<LineResult> line(std::uint64_t position, std::string_view text, std::chrono::sys_seconds arrived);

  // When tick() is next due, if no line comes before; nothing while no line waits.
  [[nodiscard]] std::optional<std::chrono::sys_seconds> due() const;
  // Settles the lines that have waited long enough.
  std::vector<LineResult> tick(std::chrono::sys_seconds now);

  // The source has ended (a whole file, a test): settles everything that waits.
  std::vector<LineResult> finish();

 private:
  class Reader;
  std::unique_ptr<Reader> reader_;
};

}  // namespace capture
