#include "sample/call_generator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>

#include "sample/company.h"

namespace sample {
namespace {

CallPlan plan(std::int64_t count, std::uint64_t seed = 1) {
  return {.count = count, .lastDay = *base::DateTime::fromParts(2026, 11, 20), .days = 30, .seed = seed};
}

std::string monitorFile(const CallPlan& plan) {
  CallGenerator generator(plan);
  std::string bytes;
  for (std::int64_t i = 0; i < plan.count; ++i) bytes += generator.next();
  return bytes;
}

exchange::CallRecord decode(const std::string& bytes) {
  exchange::RecordBuffer buffer{};
  std::memcpy(buffer.data(), bytes.data(), bytes.size());
  if (bytes.size() == exchange::kNormalRecordSize) exchange::fillTexts(buffer);
  return exchange::decodeRecord(buffer, 1252);
}

// FNV-1a.
std::uint64_t hash(const std::string& bytes) {
  std::uint64_t value = 14695981039346656037ULL;
  for (const char c : bytes) value = (value ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
  return value;
}

TEST(CallGenerator, SameSeedGivesTheSameFileOnEveryMachine) {
  // A changed number means that everybody's files of a known seed change.
  EXPECT_EQ(hash(monitorFile(plan(2000, 7))), 8626006397522128040U);
  EXPECT_NE(monitorFile(plan(50, 7)), monitorFile(plan(50, 8)));
}

TEST(CallGenerator, CallsComeInOrderOfTimeWithinThePeriod) {
  for (const std::int64_t count : {1, 2, 777, 20000}) {
    CallGenerator generator(plan(count));
    base::DateTime before = *base::DateTime::fromParts(2026, 10, 22);
    for (std::int64_t i = 0; i < count; ++i) {
      const auto start = decode(generator.next()).start();
      ASSERT_TRUE(start.has_value());
      ASSERT_GE(*start, before) << "call " << i << " of " << count;
      before = *start;
    }
    EXPECT_LT(before, *base::DateTime::fromParts(2026, 11, 21));
  }
}

TEST(CallGenerator, ADayOfTheOfficeIsBusyByDayAndTheWeekEndQuiet) {
  CallGenerator generator(plan(20000));
  std::map<int, int> byHour;
  std::map<int, int> byWeekday;
  for (int i = 0; i < 20000; ++i) {
    const auto start = decode(generator.next()).start();
    ++byHour[start->parts().hour];
    ++byWeekday[start->weekday()];
  }
  EXPECT_GT(byHour[10], 20 * byHour[3]);
  EXPECT_GT(byHour[3], 0);
  EXPECT_GT(byWeekday[2], 4 * byWeekday[6]);
  EXPECT_GT(byWeekday[6], byWeekday[0]);
  EXPECT_GT(byWeekday[0], 0);
}

TEST(CallGenerator, EveryKindOfRecordOccurs) {
  CallGenerator generator(plan(20000));
  std::set<std::string> seen;
  std::set<std::int32_t> trunksSeen;
  for (int i = 0; i < 20000; ++i) {
    const std::string bytes = generator.next();
    seen.insert(bytes.size() == exchange::kExtendedRecordSize ? "extended" : "normal");
    const exchange::CallRecord call = decode(bytes);
    trunksSeen.insert(call.trunk);
    seen.insert(call.incoming != 0 ? "incoming" : "outgoing");
    if (call.clockMarker == 'A') seen.insert("morning");
    if (call.clockMarker == 'P') seen.insert("afternoon");
    if (call.redirected > 0) seen.insert("redirected");
    if (call.ring > 0) seen.insert("ring");
    if (!call.cd.empty()) seen.insert("cd");
    if (!call.accountCode.empty()) seen.insert("account");
    if (call.durationInSeconds() == 0) seen.insert("unanswered");
    if (call.dialledNumber.starts_with("00")) seen.insert("abroad");
    if (call.dialledNumber.starts_with("07")) seen.insert("mobile");
    if (call.dialledNumber.starts_with("*31*")) seen.insert("service code");
    if (call.dialledNumber.size() == 3) seen.insert("short");
    if (call.dialledNumber.empty()) seen.insert("hidden caller");
    const bool metered = trunks()[static_cast<std::size_t>(call.trunk) - 1].pulses;
    ASSERT_TRUE(call.pulses == 0 || metered) << call.dialledNumber;
    if (call.pulses > 0) seen.insert("pulses");
    ASSERT_LE(call.durationInSeconds(), 2 * 4096);
  }
  EXPECT_EQ(seen.size(), 17U);
  EXPECT_EQ(trunksSeen.size(), trunks().size());
}

}  // namespace
}  // namespace sample
