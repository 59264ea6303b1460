#include "capture/merge/call_group.h"

#include <utility>

namespace capture {

namespace {

constexpr std::size_t kMostWaiting = 20000;

LineResult part(LineResult line, const char* why) {
  line.outcome = Outcome::Part;
  line.records.clear();
  line.reason = why;
  return line;
}

}  // namespace

void CallGroups::add(const std::string& key, LineResult line, std::chrono::sys_seconds arrived,
                     std::vector<LineResult>& out) {
  Group* group = groups_.find(key);
  if (group == nullptr) {
    // Fewer wait than are remembered: what waits is never forgotten.
    if (deadlines_.size() >= kMostWaiting) settleFirst(out);
    // The latest deadline holds when the clock was set back, so that the order stays.
    std::chrono::sys_seconds when = arrived + window_;
    if (!deadlines_.empty() && deadlines_.back().when > when) when = deadlines_.back().when;
    deadlines_.push_back({when, key});
    group = &groups_[key];
  }
  const bool answered = line.records.front().durationSeconds > 0;
  if (answered) {
    if (group->waiting) {
      out.push_back(part(*std::move(group->waiting), "another phone answered"));
      group->waiting.reset();
    }
    group->answered = true;
    out.push_back(std::move(line));
  } else if (group->answered) {
    out.push_back(part(std::move(line), "another phone answered"));
  } else if (group->waiting || group->settled) {
    out.push_back(part(std::move(line), "the call is told by another line"));
  } else {
    group->waiting = std::move(line);
  }
}

bool CallGroups::answeredBefore(const std::string& key) {
  const Group* group = groups_.find(key);
  return group != nullptr && group->answered;
}

std::optional<std::chrono::sys_seconds> CallGroups::due() const {
  if (deadlines_.empty()) return std::nullopt;
  return deadlines_.front().when;
}

void CallGroups::settleFirst(std::vector<LineResult>& out) {
  if (Group* group = groups_.find(deadlines_.front().key)) {
    group->settled = true;
    if (group->waiting) {
      out.push_back(*std::move(group->waiting));
      group->waiting.reset();
    }
  }
  deadlines_.pop_front();
}

void CallGroups::settle(std::chrono::sys_seconds now, std::vector<LineResult>& out) {
  while (!deadlines_.empty() && deadlines_.front().when <= now) settleFirst(out);
}

void CallGroups::settleAll(std::vector<LineResult>& out) {
  while (!deadlines_.empty()) settleFirst(out);
}

}  // namespace capture
