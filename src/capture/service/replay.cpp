#include "capture/service/replay.h"

#include <algorithm>
#include <map>

#include "capture/deliver/entry_reader.h"
#include "capture/deliver/source_delivery.h"
#include "capture/format/format.h"
#include "capture/journal/journal_reader.h"
#include "capture/time_units.h"

namespace capture {

namespace {

// What one format makes of the entries: the results by the position of their line.
class Reading {
 public:
  explicit Reading(Parser parser) : entries_(std::move(parser)) {}

  void feed(const JournalEntry& entry) {
    for (LineResult& result : entries_.read(entry)) results_[result.position] = std::move(result);
  }
  [[nodiscard]] LineResult of(std::uint64_t position) const {
    const auto found = results_.find(position);
    return found == results_.end() ? LineResult{position, Outcome::Part, {}, "it waits for a further line"}
                                   : found->second;
  }

 private:
  EntryReader entries_;
  std::map<std::uint64_t, LineResult> results_;
};

}  // namespace

Replay replayLines(const Site& site, const SourceSite& source, const std::string& format, std::int64_t from,
                   std::int64_t to, const StateStore& state) {
  const auto library = FormatLibrary::standard();
  Reading before(Parser(library.load(source.format), source.settings));
  Reading after(Parser(library.load(format), source.settings));
  const std::uint64_t converted = state.load(source.id).converted;
  // Lines before the time give the state (headings, dates); lines after it may settle one that waited.
  JournalReader reader =
      JournalReader::since(site.dataFolder / "journal" / source.id, from - Parser::kStateHours * kMillisecondsPerHour);
  std::vector<std::pair<std::uint64_t, std::string>> wanted;
  while (const auto entry = reader.next()) {
    if (entry->position > converted) break;
    before.feed(*entry);
    after.feed(*entry);
    if (entry->kind == EntryKind::Line && entry->time >= from && entry->time <= to) {
      wanted.emplace_back(entry->position, escapeBytes(entry->bytes));
    }
  }
  Replay replay;
  replay.lines = wanted.size();
  for (auto& [position, text] : wanted) {
    ReplayedLine line{position, std::move(text), before.of(position), after.of(position), false};
    line.isNew = line.after.outcome == Outcome::Record && !state.gaveRecord(source.id, position);
    const bool differs = line.before.outcome != line.after.outcome || line.before.records != line.after.records;
    if (line.isNew) ++replay.newLines;
    if (line.isNew || differs) replay.differences.push_back(std::move(line));
  }
  return replay;
}

std::size_t deliverReplay(const Site& site, const SourceSite& source, const std::string& format, const Replay& replay,
                          StateStore& state) {
  const Parser parser(FormatLibrary::standard().load(format), source.settings);
  RecordEncoder encoder(source.rules, state, parser.codepage());
  std::string records;
  std::vector<std::uint64_t> recorded;
  std::size_t calls = 0;
  for (const ReplayedLine& line : replay.differences) {
    if (!line.isNew) continue;
    bool any = false;
    for (const Call& call : line.after.records) {
      if (!encoder.wanted(call)) continue;
      records += encoder.encode(call);
      any = true;
      ++calls;
    }
    if (any) recorded.push_back(line.position);
  }
  if (recorded.empty()) return 0;
  const Spool spool(site.folder, Spool::Role::Guest);
  const auto [first, last] = std::minmax_element(recorded.begin(), recorded.end());
  handOverReplay(state, spool, {source.id, *first, *last, true}, records, recorded);
  return calls;
}

}  // namespace capture
