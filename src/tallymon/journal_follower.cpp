#include "tallymon/journal_follower.h"

#include <unistd.h>

#include <algorithm>
#include <deque>
#include <stdexcept>

#include "capture/journal/journal_reader.h"
#include "capture/watch/times.h"

namespace tallymon {

namespace {

constexpr std::int64_t kKnownMilliseconds = std::int64_t{capture::Parser::kStateHours} * 3'600'000;

void refuseUnreadable(const std::filesystem::path& folder) {
  if (!std::filesystem::exists(folder.parent_path()) || ::access(folder.c_str(), R_OK | X_OK) == 0) return;
  if (errno == ENOENT) return;  // no line has come yet
  throw std::runtime_error("tallymon runs, and its journal " + folder.string() +
                           " may not be read by this user; members of the group \"tallymon\" may");
}

}  // namespace

// The entries before are read too: they hold the headings and dates that later lines need.
JournalFollower::JournalFollower(std::filesystem::path folder, std::size_t last, ShownLines& shown)
    : folder_(std::move(folder)), shown_(shown) {
  refuseUnreadable(folder_);
  auto reader = capture::JournalReader::since(folder_, capture::nowMilliseconds() - kKnownMilliseconds);
  std::deque<capture::JournalEntry> held;
  while (auto entry = reader.next()) {
    next_ = entry->position + 1;
    held.push_back(std::move(*entry));
    if (held.size() <= last) continue;
    shown_.know(held.front());
    held.pop_front();
  }
  for (const capture::JournalEntry& entry : held) shown_.show(entry);
  if (next_ > 1) return;
  // Nothing in the last days: where the journal ends.
  capture::JournalReader all(folder_, 1);
  while (const auto entry = all.next()) next_ = entry->position + 1;
}

void JournalFollower::showNew() {
  capture::JournalReader reader(folder_, next_);
  while (const auto entry = reader.next()) {
    next_ = entry->position + 1;
    shown_.show(*entry);
  }
}

}  // namespace tallymon
