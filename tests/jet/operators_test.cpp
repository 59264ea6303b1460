#include "jet/operators.h"

#include <gtest/gtest.h>

#include <limits>

#include "jet/error.h"
#include "jet/values.h"

namespace jet {
namespace {

TEST(Operators, Compare) {
  struct Case {
    Value left;
    Value right;
    std::optional<int> order;
  };
  const Case cases[] = {
      {"Abc", "aBC", 0},
      {"abc", "abd", -1},
      {"ab", "abc", -1},
      {"[", "a", -1},  // folding is to lower case
      {"Ș", "ș", 0},
      {"sz", "Șa", -1},  // a reader's order: Ș is a letter after S
      {"Ș", "t", -1},
      {"Ă", "â", -1},
      {"zz", "Ж", -1},
      {"\xC8", "ж", 1},  // no UTF-8
      {"", null, std::nullopt},
      {5, 5.0, 0},
      {5, "5", 0},
      {"07", 7, 0},
      {5, "abc", std::nullopt},
      {"2", "10", 1},
      {true, 1, 0},  // by truth, not by number
      {true, -1, 0},
      {false, 0, 0},
      {true, false, -1},
      {true, "Yes", 0},
      {date(2025, 1, 2), "1/2/2025", 0},
      {date(2025, 1, 2), "2025-01-01 10:00:00", 1},
      {date(2025, 1, 2), "x", std::nullopt},
      {date(1900, 1, 1, 12), 2.5, 0},
      {std::int64_t{9007199254740993}, std::int64_t{9007199254740992}, 1},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(compare(each.left, each.right), each.order) << each.left.toText() << " : " << each.right.toText();
  }
}

TEST(Operators, ComparisonsAreThreeValued) {
  EXPECT_EQ(apply(Operator::Equal, null, 1), null);
  EXPECT_EQ(apply(Operator::NotEqual, null, null), null);
  EXPECT_EQ(apply(Operator::Like, null, "*"), null);
  EXPECT_EQ(apply(Operator::NotLike, "x", null), null);
  // What cannot be compared is unequal and stops nothing.
  EXPECT_EQ(apply(Operator::Equal, 5, "abc"), false);
  EXPECT_EQ(apply(Operator::NotEqual, 5, "abc"), true);
  EXPECT_EQ(apply(Operator::Less, 5, "abc"), false);
  EXPECT_EQ(apply(Operator::Like, 5012, "50*"), true);
  EXPECT_EQ(apply(Operator::IsNull, null), true);
  EXPECT_EQ(apply(Operator::IsNotNull, ""), true);
}

TEST(Operators, Arithmetic) {
  struct Case {
    Value (*operation)(const Value&, const Value&);
    Value left;
    Value right;
    Value result;
  };
  const Case cases[] = {
      {divide, 119, 100, 1.19},
      {divide, 4, 2, 2.0},
      {divide, 1, 0, null},
      {integerDivide, 7, 2, 3},
      {integerDivide, -7, 2, -3},
      {integerDivide, 5.5, 2.5, 3},  // 6 \ 2
      {integerDivide, 1, 0.4, null},
      {modulo, 2310, 11, 0},
      {modulo, 10.5, 3, 1},  // 10 mod 3
      {modulo, -7, 3, -1},
      {modulo, 5, 0, null},
      {power, 2, 10, 1024.0},
      {power, -8, 0.5, null},
      {add, 1, 2, 3},
      {add, 1, 0.5, 1.5},
      {add, "02", "13", "0213"},
      {add, "2", 3, 5.0},
      {add, "x", null, null},
      {add, date(2025, 1, 31), 1, date(2025, 2, 1)},
      {add, true, true, -2},
      {subtract, date(2025, 1, 2, 12), date(2025, 1, 1), 1.5},
      {subtract, date(2025, 1, 2), 0.5, date(2025, 1, 1, 12)},
      {multiply, 3, 4, 12},
      {multiply, std::int64_t{1} << 62, 2, 9223372036854775808.0},
      {multiply, "3", "4", 12.0},
      {concatenate, "a", null, "a"},
      {concatenate, null, null, ""},
      {concatenate, 5, " ", "5 "},
      {integerDivide, std::numeric_limits<std::int64_t>::min(), -1, 9223372036854775808.0},
      {modulo, std::numeric_limits<std::int64_t>::min(), -1, 0},
  };
  for (const auto& each : cases) {
    const Value result = each.operation(each.left, each.right);
    EXPECT_EQ(result, each.result) << each.left.toText() << " and " << each.right.toText() << " give "
                                   << result.toText();
  }
  EXPECT_THROW(add("abc", 1), Error);
  EXPECT_THROW(multiply("abc", "1"), Error);
  EXPECT_THROW(negate("abc"), Error);
  EXPECT_EQ(negate("2"), -2.0);
}

// F, N (Null) and T in every pair; the rows of a table are the left side.
TEST(Operators, LogicIsThreeValued) {
  const Value values[] = {false, null, true};
  const std::pair<Operator, std::string_view> tables[] = {
      {Operator::And, "FFF FNN FNT"}, {Operator::Or, "FNT NNT TTT"},  {Operator::Xor, "FNT NNN TNF"},
      {Operator::Eqv, "TNF NNN FNT"}, {Operator::Imp, "TTT NNT FNT"},
  };
  for (const auto& [op, table] : tables) {
    std::string result;
    for (const Value& left : values) {
      if (!result.empty()) result += ' ';
      for (const Value& right : values) {
        const auto holds = truth(apply(op, left, right));
        result += !holds ? 'N' : *holds ? 'T' : 'F';
      }
    }
    EXPECT_EQ(result, table);
  }
  EXPECT_EQ(apply(Operator::Not, null), null);
  EXPECT_EQ(apply(Operator::Not, 5), false);
  EXPECT_EQ(truth("abc"), std::nullopt);
  EXPECT_EQ(truth("no"), false);
}

}  // namespace
}  // namespace jet
