#include "capture/merge/merged_calls.h"

#include <algorithm>
#include <utility>

namespace capture {

namespace {

constexpr std::size_t kMostCalls = 5000;
constexpr std::size_t kMostParts = 200;  // of one call: an endless one is told in pieces

bool answered(const LineResult& line) {
  return line.records.front().durationSeconds > 0;
}

}  // namespace

void MergedCalls::add(const std::string& key, LineResult line, std::chrono::sys_seconds arrived,
                      std::vector<LineResult>& out) {
  const auto found = byKey_.find(key);
  if (found != byKey_.end()) {
    waiting_.splice(waiting_.end(), waiting_, found->second);
  } else {
    if (waiting_.size() >= kMostCalls) settleFirst(out);
    waiting_.push_back({key, {}, {}});
    byKey_[key] = std::prev(waiting_.end());
  }
  Waiting& call = waiting_.back();
  call.due = arrived + window_;
  call.lines.push_back(std::move(line));
  if (call.lines.size() < kMostParts) return;
  waiting_.splice(waiting_.begin(), waiting_, std::prev(waiting_.end()));
  settleFirst(out);
}

std::optional<std::chrono::sys_seconds> MergedCalls::due() const {
  if (waiting_.empty()) return std::nullopt;
  return waiting_.front().due;
}

void MergedCalls::settleFirst(std::vector<LineResult>& out) {
  Waiting call = std::move(waiting_.front());
  byKey_.erase(call.key);
  waiting_.pop_front();
  auto told = std::find_if(call.lines.begin(), call.lines.end(), answered);
  if (told == call.lines.end()) told = call.lines.begin();
  for (auto line = call.lines.begin(); line != call.lines.end(); ++line) {
    if (line == told) continue;
    for (Call& whole : told->records) {
      for (const Call& part : line->records) {
        if (part.direction != whole.direction || part.durationSeconds == 0) continue;
        whole.durationSeconds += part.durationSeconds;
        whole.pulses += part.pulses;
        whole.redirected = true;
      }
    }
    line->outcome = Outcome::Part;
    line->records.clear();
    line->reason = "the call is told by another line";
  }
  std::move(call.lines.begin(), call.lines.end(), std::back_inserter(out));
}

void MergedCalls::settle(std::chrono::sys_seconds now, std::vector<LineResult>& out) {
  while (!waiting_.empty() && waiting_.front().due <= now) settleFirst(out);
}

void MergedCalls::settleAll(std::vector<LineResult>& out) {
  while (!waiting_.empty()) settleFirst(out);
}

}  // namespace capture
