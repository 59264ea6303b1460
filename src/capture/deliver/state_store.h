#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "capture/deliver/sqlite_file.h"

namespace capture {

// Totals of one source since its state began. lines = recordLines + parts + headings + skipped + alarms + unknown + the
// lines that still wait for another.
struct SourceCounts {
  std::int64_t lines = 0;
  std::int64_t recordLines = 0;  // lines that gave records
  std::int64_t parts = 0;
  std::int64_t headings = 0;
  std::int64_t skipped = 0;
  std::int64_t alarms = 0;
  std::int64_t unknown = 0;
  std::int64_t calls = 0;     // records handed over
  std::int64_t internal = 0;  // calls between extensions, not handed over
  std::int64_t repeats = 0;   // of the skipped: sent again after a break
};

// What is known of a source, committed together with the decision to hand over a ready file.
struct SourceState {
  std::uint64_t converted = 0;  // position of the last journal entry that became records (or none)
  // Ready file that is decided on but may still have its temporary name; empty when there is none.
  std::string pending;
  // Ready file whose records are in the pending one too.
  std::string replaced;
  std::string origin;  // of the last entry that has one; for the time after the journal is deleted
  SourceCounts counts;
  std::int64_t lastLine = 0;  // arrival, milliseconds since 1970; 0: none yet
  std::string lastCall;       // its start, "YYYY-MM-DD HH:MM:SS" local time; empty: none yet
  std::string day;            // of unknownToday, "YYYY-MM-DD" local time
  std::int64_t unknownToday = 0;
};

struct UnknownLine {
  std::uint64_t position = 0;
  std::int64_t time = 0;  // arrival, milliseconds since 1970
  std::string text;       // control characters made visible
  std::string reason;
};

enum class NumberKind { Trunk = 0, Extension = 1 };

// A name that has a number for ever.
struct NumberRow {
  std::string source;
  std::string name;
  std::int32_t number = 0;
};

// What the capture program remembers between its runs: a small SQLite file, which several of its commands may use at a
// time. Every call throws StateFault when the file cannot be read or written.
class StateStore {
 public:
  explicit StateStore(const std::filesystem::path& file);

  [[nodiscard]] SourceState load(std::string_view source) const;
  [[nodiscard]] std::vector<std::string> sources() const;
  // In one transaction: the state, the positions that gave records, and lines that could not be read.
  void commit(std::string_view source, const SourceState& state, const std::vector<std::uint64_t>& recorded,
              const std::vector<UnknownLine>& unknown);

  // Whether the entry at that position has given a record.
  [[nodiscard]] bool gaveRecord(std::string_view source, std::uint64_t position) const;
  // In one transaction: positions that a replay delivers, and the ready file that holds their records.
  void commitReplay(std::string_view source, const std::vector<std::uint64_t>& recorded, std::string_view readyFile);
  [[nodiscard]] std::vector<std::string> pendingReplays() const;
  void replayDone(std::string_view readyFile);

  // The first unknown lines of the newest day that had any.
  [[nodiscard]] std::vector<UnknownLine> unknownLines(std::string_view source) const;
  // Blanks a telephone number in the lines kept here; the count of lines changed.
  std::size_t forgetNumber(std::string_view number);

  // The number of a name, given now when it has none: trunks from 1001, extensions from 9,000,001. Never used twice.
  std::int32_t numberOf(NumberKind kind, std::string_view source, std::string_view name);
  [[nodiscard]] std::vector<NumberRow> numbers(NumberKind kind, std::string_view source) const;

  // Files of a watched folder that have been taken whole.
  [[nodiscard]] bool isTaken(std::string_view source, std::string_view name) const;
  void setTaken(std::string_view source, std::string_view name, std::int64_t time);
  // Forgets which positions before this one gave records: their entries are gone.
  void forgetRecorded(std::string_view source, std::uint64_t before);

 private:
  std::optional<std::int32_t> knownNumber(NumberKind kind, std::string_view source, std::string_view name) const;
  void addRecorded(std::string_view source, const std::vector<std::uint64_t>& positions);
  void keepUnknown(std::string_view source, const std::vector<UnknownLine>& unknown);

  mutable SqliteFile file_;
};

}  // namespace capture
