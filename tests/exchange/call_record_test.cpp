#include "exchange/call_record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace exchange {
namespace {

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

RecordBuffer bufferOf(const std::string& bytes) {
  RecordBuffer buffer{};
  std::copy(bytes.begin(), bytes.end(), buffer.begin());
  return buffer;
}

CallRecord sampleCall() {
  CallRecord call;
  call.month = 3;
  call.day = 4;
  call.year = 2024;
  call.hour = 13;
  call.minute = 45;
  call.second = 59;
  call.extension = 201;
  call.trunk = -7;
  call.dialledNumber = "0213456789";
  call.durationHours = 1;
  call.durationMinutes = 2;
  call.durationSeconds = 3;
  call.accountCode = "12ab";
  call.redirected = 1;
  call.ring = 8;
  call.cd = "XY";
  call.incoming = 1;
  call.pulses = 260;
  return call;
}

TEST(CallRecordTest, StandsAtTheMonitorsOffsets) {
  const std::string bytes = encodeRecord(sampleCall(), false, 1252);
  ASSERT_EQ(bytes.size(), 156u);
  const auto byte = [&bytes](std::size_t offset) { return static_cast<unsigned char>(bytes[offset]); };
  EXPECT_EQ(byte(0), 255);
  EXPECT_EQ(byte(4), 3);
  EXPECT_EQ(byte(8), 4);
  EXPECT_EQ(byte(12) + 256 * byte(13), 2024);
  EXPECT_EQ(byte(16), 13);
  EXPECT_EQ(byte(28), 201);
  EXPECT_EQ(byte(32), 0xF9);
  EXPECT_EQ(byte(35), 0xFF);
  EXPECT_EQ(bytes.substr(36, 11), std::string("0213456789\0", 11));
  EXPECT_EQ(byte(100), 1);
  EXPECT_EQ(bytes.substr(112, 5), std::string("12ab\0", 5));
  EXPECT_EQ(byte(128), 1);
  EXPECT_EQ(byte(132), 8);
  EXPECT_EQ(bytes.substr(136, 3), std::string("XY\0", 3));
  EXPECT_EQ(byte(144), 1);
  EXPECT_EQ(byte(148), 59);
  EXPECT_EQ(byte(152) + 256 * byte(153), 260);
}

TEST(CallRecordTest, ANormalRecordGetsItsTextsFromTheNumbers) {
  RecordBuffer buffer = bufferOf(encodeRecord(sampleCall(), false, 1252));
  std::fill(buffer.begin() + 156, buffer.end(), static_cast<unsigned char>('9'));  // the tail of an earlier record
  fillTexts(buffer);
  const CallRecord call = decodeRecord(buffer, 1252);
  EXPECT_EQ(call.extensionText, "201");
  EXPECT_EQ(call.trunkText, "-7");
  EXPECT_EQ(call.dialledNumber, "0213456789");
  EXPECT_EQ(call.durationInSeconds(), 3723);
}

TEST(CallRecordTest, AnExtendedRecordKeepsItsTexts) {
  CallRecord sent = sampleCall();
  sent.extensionText = "Reception";
  sent.trunkText = "L-01";
  const std::string bytes = encodeRecord(sent, true, 1252);
  ASSERT_EQ(bytes.size(), 220u);
  const CallRecord call = decodeRecord(bufferOf(bytes), 1252);
  EXPECT_EQ(call.extensionText, "Reception");
  EXPECT_EQ(call.trunkText, "L-01");
}

TEST(CallRecordTest, ATextWithoutEndStopsAtItsField) {
  RecordBuffer buffer;
  buffer.fill('7');
  const CallRecord call = decodeRecord(buffer, 1252);
  EXPECT_EQ(call.dialledNumber, std::string(64, '7'));
  EXPECT_EQ(call.accountCode, std::string(16, '7'));
  EXPECT_EQ(call.cd, std::string(8, '7'));
  EXPECT_EQ(call.trunkText, std::string(32, '7'));
  EXPECT_EQ(call.extensionText, std::string(32, '7'));
}

TEST(CallRecordTest, LongTextsAreCutToTheirField) {
  CallRecord call = sampleCall();
  call.dialledNumber.assign(100, '5');
  const CallRecord read = decodeRecord(bufferOf(encodeRecord(call, false, 1252)), 1252);
  EXPECT_EQ(read.dialledNumber, std::string(63, '5'));
  EXPECT_EQ(read.durationHours, 1);
}

TEST(CallRecordTest, TextsAreInTheLanguagesCodePage) {
  RecordBuffer buffer = bufferOf(encodeRecord(sampleCall(), false, 1252));
  buffer[136] = 0xBA;  // s with cedilla in 1250, the masculine ordinal in 1252
  buffer[137] = 0;
  EXPECT_EQ(decodeRecord(buffer, 1250).cd, "\u015F");
  EXPECT_EQ(decodeRecord(buffer, 1252).cd, "\u00BA");
}

TEST(CallRecordTest, HoursOfBothClocks) {
  const struct {
    std::int32_t hour;
    std::int32_t marker;
    std::int32_t hour24;
  } cases[] = {
      {12, 'A', 0}, {1, 'A', 1}, {12, 'P', 12}, {1, 'P', 13}, {11, 'P', 23}, {12, 0, 12}, {23, ' ', 23}, {13, 'P', 25},
  };
  for (const auto& test : cases) {
    CallRecord call;
    call.hour = test.hour;
    call.clockMarker = test.marker;
    EXPECT_EQ(call.hour24(), test.hour24) << test.hour << " marker " << test.marker;
  }
}

TEST(CallRecordTest, ImpossibleStartsAreNone) {
  const auto startOf = [](std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                          std::int32_t marker) {
    CallRecord call;
    call.year = year;
    call.month = month;
    call.day = day;
    call.hour = hour;
    call.clockMarker = marker;
    return call.start();
  };
  EXPECT_TRUE(startOf(2024, 2, 29, 23, 0));
  EXPECT_FALSE(startOf(2023, 2, 29, 23, 0));
  EXPECT_FALSE(startOf(2024, 13, 1, 0, 0));
  EXPECT_FALSE(startOf(2024, 1, 1, 13, 'P'));
  EXPECT_FALSE(startOf(0, 0, 0, 0, 0));
  EXPECT_FALSE(startOf(kMost, kMost, kMost, kMost, 'P'));
  EXPECT_FALSE(startOf(kLeast, kLeast, kLeast, kLeast, 'A'));
}

TEST(CallRecordTest, GarbageDurationsStayInRange) {
  const struct {
    std::int32_t hours, minutes, seconds, total;
  } cases[] = {{0, 0, -5, -5}, {1, -60, 0, 0}, {kMost, kMost, kMost, kMost}, {kLeast, kLeast, kLeast, kLeast}};
  for (const auto& test : cases) {
    CallRecord call;
    call.durationHours = test.hours;
    call.durationMinutes = test.minutes;
    call.durationSeconds = test.seconds;
    EXPECT_EQ(call.durationInSeconds(), test.total);
  }
}

TEST(CallRecordTest, DurationsAreSplit) {
  CallRecord call;
  call.setDuration(3723);
  EXPECT_EQ(call.durationHours, 1);
  EXPECT_EQ(call.durationMinutes, 2);
  EXPECT_EQ(call.durationSeconds, 3);
  call.setDuration(-10);
  EXPECT_EQ(call.durationInSeconds(), 0);
}

}  // namespace
}  // namespace exchange
