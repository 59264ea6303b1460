#include "analysis/missed_calls.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <tuple>
#include <unordered_map>

#include "base/printf.h"
#include "base/text.h"

namespace analysis {

namespace {

constexpr std::int64_t kSecondsAnHour = 3600;

using Subscribers = std::unordered_map<std::string, std::size_t, base::TextHash, std::equal_to<>>;

// Who missed calls came from, each numbered.
class Callers {
 public:
  explicit Callers(const SubscriberNumbers& numbers) : numbers_(numbers) {}

  // Nothing for callers who hid their number.
  std::optional<std::size_t> add(std::string_view number) {
    numbers_.keyInto(number, key_);
    if (key_.empty()) return std::nullopt;
    return known_.try_emplace(key_, known_.size()).first->second;
  }
  [[nodiscard]] std::optional<std::size_t> find(std::string_view number) {
    numbers_.keyInto(number, key_);
    const auto found = known_.find(std::string_view(key_));
    return found == known_.end() ? std::nullopt : std::optional(found->second);
  }
  [[nodiscard]] std::size_t count() const { return known_.size(); }

 private:
  const SubscriberNumbers& numbers_;
  Subscribers known_;
  std::string key_;
};

// A call of a subscriber who has a missed one.
struct Event {
  enum class Kind : std::uint8_t { Missed, Answered, CalledBack };
  std::size_t subscriber = 0;
  base::DateTime at = {};
  std::int64_t id = 0;
  Kind kind = Kind::Missed;
  std::size_t place = 0;  // of a missed call in the list, of a call back's extension in the names

  [[nodiscard]] auto order() const { return std::tuple(at, id); }
};

// Extensions of calls, each kept once.
class Extensions {
 public:
  std::size_t add(const std::string& name) {
    const auto [found, added] = places_.try_emplace(name, names_.size());
    if (added) names_.push_back(name);
    return found->second;
  }
  [[nodiscard]] const std::string& operator[](std::size_t place) const { return names_[place]; }

 private:
  std::unordered_map<std::string, std::size_t> places_;
  std::vector<std::string> names_;
};

// Finds what came of missed calls: one pass over the missed calls, one over the answered ones, and for each
// subscriber a sweep backwards in time that remembers the next call back and the next answered call.
class Search {
 public:
  Search(jet::Database& main, const CallScope& scope, const SubscriberNumbers& numbers, const MissedOptions& options,
         const base::Look& look)
      : main_(main), scope_(scope), options_(options), callers_(numbers), steps_(look) {}

  MissedCalls run() {
    readMissed();
    readAnswered();
    sweep();
    count();
    return std::move(result_);
  }

 private:
  void readMissed() {
    main_.forEachRow(selectCalls("RecordID, [DateTime], DialNumber, Name, Extension, Ring",
                                 "Incoming <> 0 and TotalTime = 0", scope_.chosen),
                     [&](const std::vector<jet::Value>& row) {
                       MissedCall call{.id = row[0].toLong(),
                                       .at = row[1].toDateTime(),
                                       .number = row[2].toText(),
                                       .name = row[3].toText(),
                                       .extension = row[4].toText(),
                                       .ring = row[5].toLong()};
                       if (!options_.during || (call.at && options_.during->contains(*call.at))) {
                         result_.rows.push_back(std::move(call));
                       }
                       return true;
                     });
    std::ranges::sort(result_.rows, [this](const MissedCall& left, const MissedCall& right) {
      steps_.step();
      return std::tie(left.at, left.id) < std::tie(right.at, right.id);
    });
    for (std::size_t place = 0; place < result_.rows.size(); ++place) {
      const MissedCall& call = result_.rows[place];
      if (!call.at) continue;
      const auto subscriber = callers_.add(call.number);
      if (!subscriber) continue;
      first_ = std::min(first_.value_or(*call.at), *call.at);
      last_ = std::max(last_.value_or(*call.at), *call.at);
      events_.push_back({*subscriber, *call.at, call.id, Event::Kind::Missed, place});
    }
  }

  void readAnswered() {
    if (!first_) return;
    main_.forEachRow(
        selectCalls("RecordID, [DateTime], DialNumber, Extension, Incoming", answeredCriteria(), scope_.visible),
        [&](const std::vector<jet::Value>& row) {
          const auto subscriber = row[2].type() == jet::Type::Text ? callers_.find(row[2].text()) : std::nullopt;
          const auto at = subscriber ? row[1].toDateTime() : std::nullopt;
          if (!at) return true;
          const bool incoming = row[4].toLong() != 0;
          events_.push_back({*subscriber, *at, row[0].toLong(),
                             incoming ? Event::Kind::Answered : Event::Kind::CalledBack,
                             incoming ? 0 : extensions_.add(row[3].toText())});
          return true;
        });
  }

  [[nodiscard]] std::string answeredCriteria() const {
    return base::format("TotalTime > 0 and [DateTime] >= %s and [DateTime] <= %s",
                        first_->format(jet::kDateTimeLiteral),
                        last_->plusSeconds(window()).format(jet::kDateTimeLiteral));
  }

  [[nodiscard]] std::int64_t window() const { return options_.withinHours * kSecondsAnHour; }

  void sweep() {
    const std::vector<std::size_t> begins = groupBySubscriber();
    for (std::size_t i = 0; i + 1 < begins.size(); ++i) {
      const std::span<Event> events(events_.data() + begins[i], begins[i + 1] - begins[i]);
      std::ranges::sort(events, {}, &Event::order);
      sweep(events);
    }
  }

  // Puts the events of one subscriber beside each other, which a sort of all would do several times as slowly. Where
  // each subscriber's begin, and where the last one's end.
  std::vector<std::size_t> groupBySubscriber() {
    std::vector<std::size_t> begins(callers_.count() + 1);
    for (const Event& event : events_) ++begins[event.subscriber + 1];
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    std::vector<std::size_t> next = begins;
    std::vector<Event> grouped(events_.size());
    for (const Event& event : events_) grouped[next[event.subscriber]++] = event;
    events_ = std::move(grouped);
    return begins;
  }

  // The events of one subscriber.
  void sweep(std::span<const Event> events) {
    const Event* back = nullptr;
    const Event* again = nullptr;
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
      steps_.step();
      switch (event->kind) {
        case Event::Kind::CalledBack:
          back = &*event;
          break;
        case Event::Kind::Answered:
          again = &*event;
          break;
        case Event::Kind::Missed:
          settle(result_.rows[event->place], back, again);
          break;
      }
    }
  }

  void settle(MissedCall& call, const Event* back, const Event* again) const {
    const base::DateTime limit = call.at->plusSeconds(window());
    if (back != nullptr && back->at <= limit) {
      call.back = {back->at, extensions_[back->place], back->at.secondsSinceDayZero() - call.at->secondsSinceDayZero()};
    }
    if (again != nullptr && again->at <= limit) call.again = again->at;
  }

  void count() {
    for (const MissedCall& call : result_.rows) {
      result_.open += call.open() ? 1 : 0;
      result_.calledBack += call.back ? 1 : 0;
      result_.answeredLater += call.again ? 1 : 0;
    }
  }

  jet::Database& main_;
  const CallScope& scope_;
  const MissedOptions& options_;
  Callers callers_;
  base::LookCounter steps_;
  Extensions extensions_;
  std::vector<Event> events_;
  std::optional<base::DateTime> first_;
  std::optional<base::DateTime> last_;
  MissedCalls result_;
};

}  // namespace

MissedCalls findMissedCalls(jet::Database& main, const CallScope& scope, const SubscriberNumbers& subscribers,
                            const MissedOptions& options, const base::Look& look) {
  return Search(main, scope, subscribers, options, look).run();
}

}  // namespace analysis
