#include "ui/read_ahead.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ui {

namespace {

using std::chrono::milliseconds;

// A step and the pause after it. Unasked, the program takes less than half of a processor.
constexpr milliseconds kAheadStep(8);
constexpr milliseconds kAheadPause(12);
constexpr milliseconds kAskedPause(0);
// Between the opening of a list and the first step, and between a change of its rows and the first step: an import may
// change them again and again. Where another program does so, a file's table is read whole each time, so the pauses
// grow.
constexpr milliseconds kSoon(200);
constexpr milliseconds kLater(3000);
constexpr milliseconds kLatest(300'000);
// While other work goes on.
constexpr milliseconds kWhileBusy(100);
// Rows of a table that is read unasked: about 100 MB.
constexpr std::int64_t kMostUnasked = 2'000'000;

}  // namespace

ReadAhead::ReadAhead(jet::Database& database, const platform::Operator& person, QObject* parent)
    : QObject(parent), database_(database), person_(person), later_(kLater) {
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &ReadAhead::step);
}

void ReadAhead::begin(std::string select, When when) {
  select_ = std::move(select);
  asked_ = when == When::Now;
  if (when == When::Later) {
    timer_.start(later_);
    later_ = std::min(2 * later_, kLatest);
  } else {
    timer_.start(asked_ ? kAskedPause : kSoon);
    later_ = kLater;
  }
}

void ReadAhead::step() {
  timer_.stop();
  if (person_.busy()) return timer_.start(kWhileBusy);
  try {
    const std::int64_t mostRows = asked_ ? std::numeric_limits<std::int64_t>::max() : kMostUnasked;
    if (database_.readAhead(select_, kAheadStep, mostRows)) timer_.start(asked_ ? kAskedPause : kAheadPause);
  } catch (const jet::Error&) {
    // The search comes upon the same fault.
  }
}

}  // namespace ui
