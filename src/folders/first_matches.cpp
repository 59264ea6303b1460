#include "folders/first_matches.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "base/printf.h"

namespace folders {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCallTime = 401;
// A stretch is to take about this long.
constexpr std::chrono::milliseconds kShort(3);
constexpr std::chrono::milliseconds kLong(8);
// The first stretch is so small a part of the list's time that ten million calls have few in it.
constexpr std::int64_t kFirstPart = 16'384;

// The time of the list's first row; nothing without rows.
std::optional<base::DateTime> firstTime(FolderView& list) {
  std::optional<base::DateTime> first;
  list.forEachOrderedRow([&](FolderView::OrderedRow&& row) {
    if (row.by.type() == jet::Type::DateTime) first = row.by.dateTime();
    return false;
  });
  return first;
}

}  // namespace

bool FirstMatches::canFind(const FolderView& list) {
  return !isStatistic(list.folder().definition()) && std::abs(list.sortKey()) == kCallTime;
}

FirstMatches::FirstMatches(std::unique_ptr<FolderView> list, std::string criteria, std::size_t most)
    : list_(std::move(list)),
      own_(list_->narrowing()),
      criteria_(std::move(criteria)),
      most_(most),
      newestFirst_(list_->sortKey() < 0),
      next_(firstTime(*list_)) {
  FolderView back(list_->folder().definition(), list_->services(), list_->formatter(), -list_->sortKey());
  back.narrow(own_);
  last_ = firstTime(back);
  if (!next_ || !last_) {
    next_.reset();
    return;
  }
  stretch_ = std::abs(next_->secondsSinceDayZero() - last_->secondsSinceDayZero()) / kFirstPart + 1;
}

void FirstMatches::lookFor(std::chrono::milliseconds time) {
  const auto end = Clock::now() + time;
  while (!done() && Clock::now() < end) {
    const auto begun = Clock::now();
    const base::DateTime beyond = next_->plusSeconds(newestFirst_ ? -stretch_ : stretch_);
    if (newestFirst_) {
      lookThrough(beyond.plusSeconds(1), next_->plusSeconds(1));
    } else {
      lookThrough(*next_, beyond);
    }
    const bool ended = newestFirst_ ? beyond < *last_ : beyond > *last_;
    next_ = ended ? std::nullopt : std::optional(beyond);
    const auto taken = Clock::now() - begun;
    if (taken < kShort) stretch_ *= 2;
    if (taken > kLong) stretch_ = std::max<std::int64_t>(1, stretch_ / 2);
  }
}

// Calls of one second follow in the order of their keys, in the direction of the list, whatever the database does.
void FirstMatches::lookThrough(const base::DateTime& from, const base::DateTime& beyond) {
  std::string criteria =
      base::format("[DateTime] >= %s And [DateTime] < %s And (%s)", from.format(jet::kDateTimeLiteral),
                   beyond.format(jet::kDateTimeLiteral), criteria_);
  if (own_ && !own_->criteria.empty()) criteria = "(" + own_->criteria + ") And " + criteria;
  list_->narrow(Narrowing{criteria, {}});
  std::vector<FolderView::OrderedRow> found;
  list_->forEachOrderedRow([&](FolderView::OrderedRow&& row) {
    if (row.by.type() != jet::Type::DateTime) return true;  // a text that is no date
    const bool enough =
        !found.empty() && rows_.size() + found.size() >= most_ && row.by.dateTime() != found.back().by.dateTime();
    if (!enough) found.push_back(std::move(row));
    return !enough;
  });
  std::ranges::sort(found, [this](const auto& a, const auto& b) {
    const auto& [first, second] = newestFirst_ ? std::tie(b, a) : std::tie(a, b);
    if (first.by.dateTime() != second.by.dateTime()) return first.by.dateTime() < second.by.dateTime();
    return first.key < second.key;
  });
  for (FolderView::OrderedRow& each : found) {
    if (rows_.size() < most_) rows_.push_back(std::move(each.row));
  }
}

}  // namespace folders
