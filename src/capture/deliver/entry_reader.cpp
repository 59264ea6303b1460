#include "capture/deliver/entry_reader.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace capture {

namespace {

std::chrono::sys_seconds secondsOf(std::int64_t milliseconds) {
  return std::chrono::floor<std::chrono::seconds>(
      std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(milliseconds)));
}

void append(std::vector<LineResult>& to, std::vector<LineResult> more) {
  std::move(more.begin(), more.end(), std::back_inserter(to));
}

}  // namespace

std::vector<LineResult> EntryReader::read(const JournalEntry& entry) {
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
    ++dropped_;
  }
  for (const RepeatFilter::Line& line : lines.passed) {
    append(results, parser_.line(line.position, line.text, secondsOf(line.time)));
  }
  if (entry.kind == EntryKind::Tick) append(results, parser_.tick(secondsOf(entry.time)));
  return results;
}

std::optional<std::int64_t> EntryReader::due() const {
  std::optional<std::int64_t> earliest;
  if (const auto parser = parser_.due()) earliest = parser->time_since_epoch().count();
  if (const std::int64_t repeats = repeats_.due(); repeats > 0) {
    earliest = std::min(earliest.value_or(INT64_MAX), repeats / 1000 + 1);
  }
  return earliest;
}

}  // namespace capture
