#pragma once

#include <optional>
#include <string>

#include "capture/deliver/entry_reader.h"
#include "capture/site/site.h"

namespace tallymon {

// Prints the entries of a source as they come: every line with control characters shown, and what its format makes of
// it. As JSON one object a line, flushed at once:
//   {"event": "line", "line": 7, "time": UTC, "text": ...}
//   {"event": "result", "line": 7, "outcome": ..., "records": [...] or "reason": ...}   a waiting line has it later
//   {"event": "connection", "connected": ..., "text": ...}, {"event": "lost", "bytes": ...}
class ShownLines {
 public:
  enum class Style { Lines, LinesAndRecords, Json };
  // Throws capture::FormatError or SettingError when the source's format cannot be had.
  ShownLines(const capture::SourceSite& source, Style style);

  // An entry that came before those to be shown: headings and dates count.
  void know(const capture::JournalEntry& entry) { static_cast<void>(reader_.read(entry)); }
  void show(const capture::JournalEntry& entry);
  // Settles lines that have waited for another for long enough.
  void settle(std::int64_t now);
  void connected(bool yes, const std::string& what);
  void lost(std::uint64_t bytes);

 private:
  void showResults(const capture::JournalEntry& entry);

  Style style_;
  capture::EntryReader reader_;
  std::optional<bool> connected_;
  std::string connection_;
};

}  // namespace tallymon
