#include "jet/value.h"

#include <gtest/gtest.h>

namespace jet {
namespace {

base::DateTime date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return *base::DateTime::fromParts(year, month, day, hour, minute, second);
}

TEST(Value, BecomesText) {
  const std::pair<Value, std::string_view> cases[] = {
      {Value(), ""},
      {true, "-1"},
      {false, "0"},
      {-42, "-42"},
      {0.1 + 0.2, "0.3"},
      {1.19, "1.19"},
      {-0.0, "0"},
      {1e20, "1E+20"},
      {1234567.0, "1234567"},
      {date(2025, 3, 5), "3/5/2025"},
      {date(2025, 3, 5, 7, 8, 9), "3/5/2025 7:08:09"},
      {date(1899, 12, 30, 14, 30), "14:30:00"},
      {date(1899, 12, 30), "0:00:00"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(value.toText(), text);
}

TEST(Value, BecomesANumber) {
  EXPECT_EQ(Value(2.5).toLong(), 2);
  EXPECT_EQ(Value(3.5).toLong(), 4);
  EXPECT_EQ(Value(-2.5).toLong(), -2);
  EXPECT_EQ(Value(true).toLong(), -1);
  EXPECT_EQ(Value(" 12 ").toLong(), 12);
  EXPECT_EQ(Value("+7.5").toLong(), 8);
  EXPECT_EQ(Value("9007199254740993").toLong(), 9007199254740993);  // more digits than a double keeps
  EXPECT_EQ(Value("12a").toLong(-5), -5);
  EXPECT_EQ(Value(1e300).toLong(-5), -5);
  EXPECT_EQ(Value().toLong(9), 9);
  EXPECT_EQ(Value(date(1900, 1, 1, 12)).toDouble(), 2.5);
  for (const char* text : {"", "abc", "1,5", "1 2", "0x10", "nan", "inf", "--1", "+-1", "1e999"}) {
    EXPECT_FALSE(Value(text).asNumber()) << text;
  }
  EXPECT_FALSE(Value().asNumber());
}

TEST(Value, BecomesATruth) {
  for (const Value& value : {Value(true), Value(5), Value(-0.5), Value("True"), Value("yes"), Value(" 1")}) {
    EXPECT_TRUE(value.toBool()) << value.toText();
  }
  for (const Value& value : {Value(false), Value(0), Value("No"), Value("false"), Value("0")}) {
    EXPECT_FALSE(value.toBool(true)) << value.toText();
  }
  EXPECT_TRUE(Value("abc").toBool(true));
  EXPECT_TRUE(Value().toBool(true));
}

TEST(Value, BecomesADate) {
  const auto expected = date(2025, 3, 5, 7, 8, 9);
  EXPECT_EQ(Value("2025-03-05 07:08:09").toDateTime(), expected);
  EXPECT_EQ(Value("3/5/2025 7:08:09").toDateTime(), expected);
  EXPECT_EQ(Value(2.25).toDateTime(), date(1900, 1, 1, 6));
  EXPECT_EQ(Value(date(1899, 12, 30, 1, 2, 3).serial()).toDateTime(), date(1899, 12, 30, 1, 2, 3));
  for (const Value& value : {Value(), Value("x"), Value(1e9), Value(true), Value("2025-13-01")}) {
    EXPECT_FALSE(value.toDateTime()) << value.toText();
  }
}

}  // namespace
}  // namespace jet
