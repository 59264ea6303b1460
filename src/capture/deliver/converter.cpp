#include "capture/deliver/converter.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "base/characters.h"
#include "capture/time_units.h"

namespace capture {

namespace {

// A batch is handed over when it has as much, so that catching up with a long journal takes steps that are not lost.
constexpr std::size_t kFullRecords = 512 * 1024;  // bytes
constexpr std::uint64_t kFullEntries = 5000;
constexpr std::size_t kFreshLimit = 20'000;       // entries kept in memory for a conversion that is late
constexpr std::uint64_t kStateEntries = 100'000;  // enough for every state of a parser at any rate
constexpr std::size_t kShownLength = 400;         // characters of an unknown line

std::string localDay(std::int64_t milliseconds) {
  const std::time_t seconds = milliseconds / 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", &local);
  return text;
}

}  // namespace

Converter::Converter(std::filesystem::path journal, Parser parser, RecordEncoder encoder, SourceState known)
    : journal_(std::move(journal)), entries_(std::move(parser)), encoder_(std::move(encoder)) {
  next_ = known.converted + 1;
  batch_.after = std::move(known);
  restoreParser();
}

void Converter::restoreParser() {
  const std::uint64_t converted = next_ - 1;
  if (converted == 0) return;
  const std::int64_t since = batch_.after.lastLine - Parser::kStateHours * kMillisecondsPerHour;
  JournalReader reader(journal_, converted > kStateEntries ? converted - kStateEntries : 1);
  while (const auto entry = reader.next()) {
    if (entry->position > converted) return;
    if (entry->time >= since) static_cast<void>(entries_.read(*entry));
  }
}

void Converter::offer(JournalEntry entry) {
  fresh_.push_back(std::move(entry));
  if (fresh_.size() > kFreshLimit) fresh_.clear();
}

std::optional<JournalEntry> Converter::nextEntry(std::uint64_t end) {
  while (!fresh_.empty() && fresh_.front().position < next_) fresh_.pop_front();
  if (!fresh_.empty() && fresh_.front().position == next_) {
    reader_.reset();
    JournalEntry entry = std::move(fresh_.front());
    fresh_.pop_front();
    return entry;
  }
  if (!reader_) reader_.emplace(journal_, next_);
  auto entry = reader_->next();
  if (!entry || entry->position > end) {
    reader_.reset();
    return std::nullopt;
  }
  return entry;
}

bool Converter::convert(std::uint64_t end, const LineObserver& observe) {
  const auto full = [this] {
    return batch_.records.size() >= kFullRecords || (batch_.first != 0 && batch_.last - batch_.first >= kFullEntries);
  };
  while (next_ <= end && !full()) {
    const auto entry = nextEntry(end);
    if (!entry) {
      next_ = end + 1;  // what is missing in the journal cannot be converted
      break;
    }
    take(*entry, observe);
    next_ = entry->position + 1;
  }
  return next_ <= end;
}

void Converter::handedOver() {
  SourceState state = std::move(batch_.after);
  batch_ = {};
  batch_.after = std::move(state);
}

void Converter::take(const JournalEntry& entry, const LineObserver& observe) {
  if (batch_.first == 0) batch_.first = entry.position;
  batch_.last = entry.position;
  SourceState& state = batch_.after;
  state.converted = entry.position;
  if (!entry.origin.empty()) state.origin = entry.origin;
  if (entry.kind == EntryKind::Line) {
    ++state.counts.lines;
    state.lastLine = entry.time;
  }
  const std::int64_t repeatsBefore = entries_.repeats();
  for (const LineResult& result : entries_.read(entry)) {
    count(result, entry);
    if (observe) observe(result, entry.time);
  }
  state.counts.repeats += entries_.repeats() - repeatsBefore;
}

void Converter::count(const LineResult& result, const JournalEntry& entry) {
  SourceState& state = batch_.after;
  SourceCounts& counts = state.counts;
  switch (result.outcome) {
    case Outcome::Record: {
      ++counts.recordLines;
      bool delivered = false;
      for (const Call& call : result.records) {
        if (!encoder_.wanted(call)) {
          ++counts.internal;
          continue;
        }
        batch_.records += encoder_.encode(call);
        ++counts.calls;
        state.lastCall = call.start.stored();
        delivered = true;
      }
      if (delivered) batch_.recorded.push_back(result.position);
      break;
    }
    case Outcome::Part:
      ++counts.parts;
      break;
    case Outcome::Heading:
      ++counts.headings;
      break;
    case Outcome::Skipped:
      ++counts.skipped;
      break;
    case Outcome::Alarm:
      ++counts.alarms;
      break;
    case Outcome::Unknown:
      ++counts.unknown;
      addUnknown(result, entry);
      break;
  }
}

void Converter::addUnknown(const LineResult& result, const JournalEntry& entry) {
  std::string day = localDay(entry.time);
  if (day != batch_.after.day) {
    batch_.after.day = std::move(day);
    batch_.after.unknownToday = 0;
  }
  ++batch_.after.unknownToday;
  std::string text = entry.bytes;
  if (result.position != entry.position) {
    const auto line = JournalReader(journal_, result.position).next();
    text = line ? line->bytes : std::string();
  }
  batch_.unknown.push_back({result.position, entry.time,
                            std::string(base::firstCharacters(escapeBytes(text), kShownLength)), result.reason});
}

}  // namespace capture
