#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "capture/deliver/entry_reader.h"
#include "capture/deliver/record_encoder.h"
#include "capture/deliver/state_store.h"
#include "capture/journal/journal_reader.h"

namespace capture {

// The outcome of a line and when the line came: what watches over a source wants to know.
using LineObserver = std::function<void(const LineResult& result, std::int64_t arrival)>;

// What a stretch of the journal gave.
struct Batch {
  std::uint64_t first = 0;  // positions of the entries; 0: none
  std::uint64_t last = 0;
  std::string records;
  std::vector<std::uint64_t> recorded;  // positions of lines that gave records
  std::vector<UnknownLine> unknown;
  SourceState after;  // the state when all of it is handed over
};

// Turns the entries of one source's journal into records, in order and each once. Its result depends on the entries
// alone, so that after a crash the same entries give the same records.
class Converter {
 public:
  // `known` is the state that was committed last; the parser is brought to where it was then. Throws
  // std::runtime_error when the journal cannot be read.
  Converter(std::filesystem::path journal, Parser parser, RecordEncoder encoder, SourceState known);

  // An entry that was just written to the journal; saves reading it from there.
  void offer(JournalEntry entry);
  // Reads entries up to position `end` until there are none or the batch is full. True when there are more.
  bool convert(std::uint64_t end, const LineObserver& observe);
  [[nodiscard]] const Batch& batch() const { return batch_; }
  // Begins a new batch after the one that was handed over.
  void handedOver();

  // When the parser settles a line that waits for another, seconds since 1970; nothing while none waits.
  [[nodiscard]] std::optional<std::int64_t> due() const { return entries_.due(); }

 private:
  void restoreParser();
  std::optional<JournalEntry> nextEntry(std::uint64_t end);
  void take(const JournalEntry& entry, const LineObserver& observe);
  void count(const LineResult& result, const JournalEntry& entry);
  void addUnknown(const LineResult& result, const JournalEntry& entry);

  std::filesystem::path journal_;
  EntryReader entries_;
  RecordEncoder encoder_;
  Batch batch_;
  std::uint64_t next_ = 1;
  std::deque<JournalEntry> fresh_;
  std::optional<JournalReader> reader_;
};

}  // namespace capture
