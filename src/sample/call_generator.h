#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "exchange/call_record.h"
#include "sample/random.h"
#include "sample/romania.h"

namespace sample {

struct CallPlan {
  std::int64_t count = 0;  // records to make; not negative
  base::DateTime lastDay;  // the latest calls are of this day
  int days = 30;           // length of the period, 1 or more
  std::uint64_t seed = 1;
};

// Records as the sample exchange's monitor would write them, in order of time: office hours busy, nights and week-ends
// quiet. Equal plans give equal records on every machine.
class CallGenerator {
 public:
  explicit CallGenerator(const CallPlan& plan);

  // The next record as bytes of a monitor file. Called at most plan.count times.
  [[nodiscard]] std::string next();

 private:
  base::DateTime nextStart();
  void fillIncoming(exchange::CallRecord& record);
  void fillOutgoing(exchange::CallRecord& record);
  std::string strangersNumber();
  std::string homeNumber(const Area& area);
  std::string numberAbroad();
  std::string digits(int count);
  int trunkFor(const std::string& number);
  std::string accountCode();

  CallPlan plan_;
  Random random_;
  std::vector<int> extensions_;  // the busy ones several times
  std::vector<int> hourWeights_;
  std::int64_t totalWeight_ = 0;  // of the hours, in weight seconds
  std::int64_t made_ = 0;
  std::size_t hour_ = 0;           // of the period, of the call made last
  std::int64_t weightBefore_ = 0;  // weight seconds before that hour
};

}  // namespace sample
