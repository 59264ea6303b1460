#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/deliver/repeat_filter.h"
#include "capture/format/parser.h"
#include "capture/journal/journal_entry.h"

namespace capture {

// Reads the entries of a journal with a format. The results depend on the entries alone.
class EntryReader {
 public:
  explicit EntryReader(Parser parser) : parser_(std::move(parser)) {}

  // The results that the entry settles, of its own line or of earlier ones.
  [[nodiscard]] std::vector<LineResult> read(const JournalEntry& entry);
  // When a line that waits for another is settled by a tick, seconds since 1970; nothing while none waits.
  [[nodiscard]] std::optional<std::int64_t> due() const;
  // Lines so far that were dropped because they were sent again after a break.
  [[nodiscard]] std::int64_t repeats() const { return dropped_; }

 private:
  Parser parser_;
  RepeatFilter repeats_;
  std::int64_t dropped_ = 0;
};

}  // namespace capture
