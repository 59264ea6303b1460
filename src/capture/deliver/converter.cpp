#include "capture/deliver/converter.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

namespace capture {

namespace {

// A batch is handed over when it has as much, so that catching up with a long journal takes steps that are not lost.
constexpr std::size_t kFullRecords = 512 * 1024;  // bytes
constexpr std::uint64_t kFullEntries = 5000;
constexpr std::size_t kFreshLimit = 20'000;       // entries kept in memory for a conversion that is late
constexpr std::uint64_t kStateEntries = 100'000;  // enough for every state of a parser at any rate
constexpr std::int64_t kMillisecondsPerHour = 3'600'000;
constexpr std::size_t kShownLength = 400;  // characters of an unknown line

std::chrono::sys_seconds secondsOf(std::int64_t milliseconds) {
  return std::chrono::floor<std::chrono::seconds>(
      std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(milliseconds)));
}

std::string localDay(std::int64_t milliseconds) {
  const std::time_t seconds = milliseconds / 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", &local);
  return text;
}

void append(std::vector<LineResult>& to, std::vector<LineResult> more) {
  std::move(more.begin(), more.end(), std::back_inserter(to));
}

}  // namespace

Converter::Converter(std::filesystem::path journal, Parser parser, RecordEncoder encoder, SourceState known)
    : journal_(std::move(journal)), parser_(std::move(parser)), encoder_(std::move(encoder)) {
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
    if (entry->time >= since) static_cast<void>(parse(*entry));
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

std::optional<std::int64_t> Converter::due() const {
  std::optional<std::int64_t> earliest;
  if (const auto parser = parser_.due()) earliest = parser->time_since_epoch().count();
  if (const std::int64_t repeats = repeats_.due(); repeats > 0) {
    earliest = std::min(earliest.value_or(INT64_MAX), repeats / 1000 + 1);
  }
  return earliest;
}

std::vector<LineResult> Converter::parse(const JournalEntry& entry) {
  RepeatFilter::Result lines;
  switch (entry.kind) {
    case EntryKind::Line:
      lines = repeats_.line({entry.position, entry.time, entry.bytes});
      break;
    case EntryKind::Break:
      lines = repeats_.breakCame();
      break;
    case EntryKind::Tick:
      if (repeats_.due() > 0 && entry.time >= repeats_.due()) lines = repeats_.release();
      break;
  }
  std::vector<LineResult> results;
  for (const RepeatFilter::Line& line : lines.repeated) {
    results.push_back({line.position, Outcome::Skipped, {}, "sent again after a break"});
    ++batch_.after.counts.repeats;
  }
  for (const RepeatFilter::Line& line : lines.passed) {
    append(results, parser_.line(line.position, line.text, secondsOf(line.time)));
  }
  if (entry.kind == EntryKind::Tick) append(results, parser_.tick(secondsOf(entry.time)));
  return results;
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
  for (const LineResult& result : parse(entry)) {
    count(result, entry);
    if (observe) observe(result, entry.time);
  }
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
  batch_.unknown.push_back({result.position, entry.time, escapeBytes(text).substr(0, kShownLength), result.reason});
}

}  // namespace capture
