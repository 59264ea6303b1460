#include "capture/journal/journal_reader.h"

#include <algorithm>

namespace capture {

JournalReader::JournalReader(const std::filesystem::path& folder, std::uint64_t from) : from_(from) {
  const auto all = listJournalFiles(folder);
  for (auto file = all.rbegin(); file != all.rend(); ++file) {
    files_.push_back(*file);
    const auto first = firstPosition(*file);
    if (first && *first <= from) break;
  }
}

JournalReader JournalReader::since(const std::filesystem::path& folder, std::int64_t time) {
  JournalReader reader;
  reader.since_ = time;
  reader.files_ = listJournalFiles(folder);
  std::reverse(reader.files_.begin(), reader.files_.end());
  return reader;
}

std::optional<JournalEntry> JournalReader::next() {
  std::string line;
  for (;;) {
    if (!lines_) {
      if (files_.empty()) return std::nullopt;
      lines_ = openJournalLines(files_.back());
      files_.pop_back();
    }
    while (lines_->next(line)) {
      auto entry = decodeEntry(line);
      if (!entry) {
        ++damaged_;
      } else if (wanted(*entry)) {
        return entry;
      }
    }
    lines_.reset();
  }
}

}  // namespace capture
