#include <gtest/gtest.h>

#include "jet/error.h"
#include "jet/operators.h"
#include "jet/values.h"

namespace jet {
namespace {

// A Wednesday, in the first quarter.
const base::DateTime kMoment = date(2025, 3, 5, 14, 30, 59);

Value call(std::string_view name, const std::vector<Value>& arguments) {
  const Function* function = findFunction(name);
  if (function == nullptr) throw std::logic_error("no function " + std::string(name));
  return function->call(arguments);
}

struct Case {
  std::string_view name;
  std::vector<Value> arguments;
  Value result;
};

template <std::size_t Count>
void expectResults(const Case (&cases)[Count]) {
  for (const auto& each : cases) {
    std::string text(each.name);
    for (const auto& argument : each.arguments) text += " <" + argument.toText() + ">";
    const Value result = call(each.name, each.arguments);
    EXPECT_EQ(result, each.result) << text << " gives " << result.toText();
  }
}

TEST(Functions, OfDates) {
  const Case cases[] = {
      {"weekday", {kMoment}, 4},
      {"weekday", {kMoment, 2}, 3},
      {"weekday", {date(2025, 3, 2)}, 1},
      {"weekday", {date(2025, 3, 1)}, 7},
      {"weekday", {"3/5/2025"}, 4},
      {"year", {kMoment}, 2025},
      {"month", {kMoment}, 3},
      {"day", {kMoment}, 5},
      {"hour", {kMoment}, 14},
      {"minute", {kMoment}, 30},
      {"second", {kMoment}, 59},
      {"hour", {0.75}, 18},
      {"datepart", {"yyyy", kMoment}, 2025},
      {"datepart", {"q", kMoment}, 1},
      {"datepart", {"Q", date(2025, 10, 1)}, 4},
      {"datepart", {"y", kMoment}, 64},
      {"datepart", {"w", kMoment}, 4},
      {"datepart", {"ww", date(2025, 1, 1)}, 1},
      {"datepart", {"ww", date(2025, 1, 5)}, 2},  // a Sunday
      {"datepart", {"ww", date(2024, 12, 31)}, 53},
      {"datepart", {"ww", date(2024, 12, 31), 2, 2}, 1},  // week by ISO 8601
      {"datepart", {"ww", date(2021, 1, 3), 2, 2}, 53},
      {"datepart", {"ww", date(2025, 1, 5), 2, 3}, 53},  // Monday 2025-01-06 begins the first full week
      {"datepart", {"n", kMoment}, 30},
      {"dateadd", {"m", 1, date(2025, 1, 31)}, date(2025, 2, 28)},
      {"dateadd", {"m", -3, date(2025, 1, 31, 10)}, date(2024, 10, 31, 10)},
      {"dateadd", {"yyyy", 1, date(2024, 2, 29)}, date(2025, 2, 28)},
      {"dateadd", {"q", 2, kMoment}, date(2025, 9, 5, 14, 30, 59)},
      {"dateadd", {"ww", 1, kMoment}, date(2025, 3, 12, 14, 30, 59)},
      {"dateadd", {"h", 10, kMoment}, date(2025, 3, 6, 0, 30, 59)},
      {"dateadd", {"s", 1, kMoment}, date(2025, 3, 5, 14, 31)},
      {"datediff", {"yyyy", date(2024, 12, 31), date(2025, 1, 1)}, 1},
      {"datediff", {"m", date(2024, 12, 31), date(2025, 3, 1)}, 3},
      {"datediff", {"d", date(2025, 1, 2, 1), date(2025, 1, 1, 23)}, -1},
      {"datediff", {"h", date(2025, 1, 1, 1, 59), date(2025, 1, 1, 2, 0)}, 1},
      {"datediff", {"w", date(2025, 1, 1), date(2025, 1, 14)}, 1},
      {"datediff", {"ww", date(2025, 1, 4), date(2025, 1, 5)}, 1},
      {"datediff", {"ww", date(2025, 1, 4), date(2025, 1, 5), 2}, 0},
      {"datediff", {"s", date(1899, 12, 29, 23, 59), date(1899, 12, 30)}, 60},
      {"dateserial", {2025, 13, 1}, date(2026, 1, 1)},
      {"dateserial", {2025, 3, 0}, date(2025, 2, 28)},
      {"dateserial", {29, 1, 1}, date(2029, 1, 1)},
      {"dateserial", {30, 1, 1}, date(1930, 1, 1)},
      {"timeserial", {1, 90, 0}, date(1899, 12, 30, 2, 30)},
      {"datevalue", {"3/5/2025 10:00"}, date(2025, 3, 5)},
      {"cdate", {2.5}, date(1900, 1, 1, 12)},
      {"year", {null}, null},
      {"dateadd", {"d", null, kMoment}, null},
  };
  expectResults(cases);
}

TEST(Functions, OfTexts) {
  const Case cases[] = {
      {"left", {"Ștefan", 2}, "Șt"},
      {"left", {"ab", 9}, "ab"},
      {"right", {"Ionuț", 2}, "uț"},
      {"right", {"ab", 9}, "ab"},
      {"mid", {"Ștefan", 2, 3}, "tef"},
      {"mid", {"abc", 2}, "bc"},
      {"mid", {"abc", 9, 1}, ""},
      {"len", {"Șț"}, 2},
      {"len", {12345}, 5},
      {"instr", {"Brașov", "ȘO"}, 4},
      {"instr", {"abcabc", "c"}, 3},
      {"instr", {4, "abcabc", "C"}, 6},
      {"instr", {1, "abC", "c", 0}, 0},
      {"instr", {2, "abc", ""}, 2},
      {"instr", {9, "abc", ""}, 0},
      {"ucase", {"șaé\xFF"}, "ȘAÉ\xFF"},
      {"lcase", {"ÎȚA"}, "îța"},
      {"trim", {"  a b \t "}, "a b \t"},
      {"ltrim", {"  a "}, "a "},
      {"rtrim", {"  a "}, "  a"},
      {"trim", {"   "}, ""},
      {"rtrim", {""}, ""},
      {"val", {" 1 615 198th Street"}, 1615198.0},
      {"val", {"-2.5e1x"}, -25.0},
      {"val", {"+3"}, 3.0},
      {"val", {"x1"}, 0.0},
      {"val", {"inf"}, 0.0},
      {"str", {5}, " 5"},
      {"str", {-5.25}, "-5.25"},
      {"cstr", {1.5}, "1.5"},
      {"space", {3}, "   "},
      {"string", {3, "ab"}, "aaa"},
      {"string", {2, 0x219}, "șș"},
      {"strcomp", {"ABC", "abc"}, 0},
      {"strcomp", {"ABC", "abc", 0}, -1},
      {"strcomp", {"b", "a"}, 1},
      {"replace", {"a.b.c", ".", "--"}, "a--b--c"},
      {"replace", {"aXbx", "x", "", 1, -1, 1}, "ab"},
      {"replace", {"aXbx", "x", ""}, "aXb"},
      {"replace", {"abab", "a", "c", 2}, "bcb"},
      {"replace", {"aaa", "a", "b", 1, 2}, "bba"},
      {"replace", {"ȘșA", "ș", "s", 1, -1, 1}, "ssA"},
      {"replace", {"abc", "", "x"}, "abc"},
      {"asc", {"șa"}, 0x219},
      {"chr", {0x219}, "ș"},
      {"left", {null, 2}, null},
      {"replace", {"a", null, "b"}, null},
  };
  expectResults(cases);
}

TEST(Functions, OfNumbers) {
  const Case cases[] = {
      {"iif", {true, 1, 2}, 1},
      {"iif", {null, 1, 2}, 2},
      {"iif", {0, 1, null}, null},
      {"isnull", {null}, true},
      {"isnull", {""}, false},
      {"abs", {-5}, 5},
      {"abs", {-5.5}, 5.5},
      {"int", {-2.5}, -3.0},
      {"fix", {-2.5}, -2.0},
      {"int", {kMoment}, date(2025, 3, 5)},
      {"int", {"7.9"}, 7.0},
      {"sgn", {-0.5}, -1},
      {"sgn", {0}, 0},
      {"round", {2.5}, 2.0},
      {"round", {3.5}, 4.0},
      {"round", {0.125, 2}, 0.12},
      {"round", {-1.255, 1}, -1.3},
      {"round", {7, 2}, 7},
      {"sqr", {9}, 3.0},
      {"clng", {2.5}, 2},
      {"clng", {"12"}, 12},
      {"cint", {true}, -1},
      {"cdbl", {"1.5"}, 1.5},
      {"abs", {null}, null},
  };
  expectResults(cases);
}

TEST(Functions, RefuseWhatTheyCannotTake) {
  const std::pair<std::string_view, std::vector<Value>> cases[] = {
      {"year", {"yesterday"}},
      {"weekday", {kMoment, 8}},
      {"datepart", {"x", kMoment}},
      {"dateadd", {"yyyy", 9000, kMoment}},
      {"dateadd", {"d", 1e15, kMoment}},
      {"dateadd", {"s", 1e300, kMoment}},
      {"dateserial", {20250, 1, 1}},
      {"left", {"a", -1}},
      {"mid", {"a", 0}},
      {"space", {2000000000}},
      {"chr", {0xD800}},
      {"asc", {""}},
      {"sqr", {-1}},
      {"round", {1.5, -1}},
      {"cint", {40000}},
      {"clng", {3e9}},
      {"cdbl", {"x"}},
      {"replace", {std::string(5000, 'a'), "a", std::string(5000, 'b')}},
  };
  for (const auto& [name, arguments] : cases) {
    try {
      ADD_FAILURE() << name << " gives " << call(name, arguments).toText();
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), 3421) << name;
    }
  }
}

TEST(Functions, AreAClosedList) {
  EXPECT_EQ(functions().size(), 47U);
  for (const auto& each : functions()) EXPECT_EQ(findFunction(each.name), &each) << each.name;
  for (const auto name : {"", "Left", "shell", "count", "zzz"}) EXPECT_EQ(findFunction(name), nullptr) << name;
  EXPECT_TRUE(isAggregate("first"));
  EXPECT_FALSE(isAggregate("left"));
}

TEST(Functions, OfTheClock) {
  const Value now = call("now", {});
  ASSERT_EQ(now.type(), Type::DateTime);
  EXPECT_LE(now.dateTime().dayNumber() - call("date", {}).dateTime().dayNumber(), 1);
  EXPECT_EQ(call("time", {}).dateTime().dayNumber(), 0);
  EXPECT_FALSE(findFunction("now")->deterministic);
}

}  // namespace
}  // namespace jet
