// Every statistic folder of the sample exchange, all its rows and columns, against plain SQL over the stored calls.

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "support/tallyctl.h"

namespace {

using namespace support;

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

struct Statistic {
  int folder;
  const char* value;                                   // what the calls are grouped by
  std::string (*shown)(const std::string&) = nullptr;  // how a value shows, when not as it is
};

std::string weekday(const std::string& number) {
  constexpr const char* kNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  return kNames[std::stoi(number)];
}

std::string month(const std::string& number) {
  constexpr const char* kNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                    "July",    "August",   "September", "October", "November", "December"};
  return kNames[std::stoi(number) - 1];
}

std::string hour(const std::string& number) {
  return number + ":00 - " + number + ":59";
}

std::string day(const std::string& number) {
  return std::to_string(std::stoi(number));
}

constexpr Statistic kStatistics[] = {
    {101, "Extension"},
    {102, "DialNumber"},
    {103, "Area"},
    {104, "Trunk"},
    {106, "Department"},
    {107, "Owner"},
    {108, "Folder"},
    {109, "AccountCode"},
    {110, "Name"},
    {111, "Country"},
    {112, "Provider"},
    {113, "strftime('%w', [DateTime])", weekday},
    {114, "substr([DateTime], 9, 2)", day},
    {115, "substr([DateTime], 6, 2)", month},
    {116, "substr([DateTime], 12, 2)", hour},
};

std::string clock(const char* format, long first, long second, long third) {
  char text[40];
  std::snprintf(text, sizeof text, format, first, second, third);
  return text;
}

std::string hours(double seconds) {
  const auto whole = static_cast<long>(seconds);
  return clock("%02ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string minutes(double seconds) {
  const auto whole = static_cast<long>(seconds);
  return clock("%02ld:%02ld", whole % 3600 / 60, whole % 60, 0);
}

// A sum that differs in its last bits may round to the other side.
void expectMoney(const std::string& shown, const std::string& stored, const std::string& where) {
  const double amount = std::stod(stored);
  std::string digits = shown;
  std::erase(digits, ',');
  EXPECT_EQ(shown.find('.') == std::string::npos, amount > 100) << where << ": " << shown;
  EXPECT_NEAR(std::stod(digits), amount, amount > 100 ? 0.500001 : 0.005001) << where;
}

// Columns after the grouped value: seconds, calls, cost, price, ring, average cost, price and ring.
constexpr std::size_t kSums = 8;

class Statistics : public ::testing::Test, protected TallyctlRun {
 protected:
  // The rows that the folder should show: the grouped value, the values of the group's first call where the folder has
  // such columns, then kSums.
  Rows expectedRows(const Statistic& statistic, const std::string& condition) {
    const std::string first = statistic.folder == 102 ? "(select Extension from Calls where RecordID = first), "
                                                        "(select Name from Calls where RecordID = first), "
                                                      : "";
    // The extensions' average price is of the amounts in the calls' own currencies.
    const std::string averaged = statistic.folder == 101 ? "Price" : "Price_Ref";
    return stored("select value, " + first + "seconds, calls, cost, cost * 1.19, ring, cost1, price1 * 1.19, ring1 " +
                  "from (select " + statistic.value +
                  " as value, min(RecordID) as first, sum(TotalTime) as seconds, count(*) as calls, "
                  "sum(Price_Ref) as cost, sum(Ring) as ring, avg(Price_Ref) as cost1, avg(" +
                  averaged + ") as price1, avg(Ring) as ring1 from Calls where " + condition + " group by 1)");
  }

  // "201" for "201 (Reception)", the first name of the extension's definition.
  std::string shownExtension(const std::string& number) {
    for (const Row& extension : extensions_) {
      if (extension[0] == number) return number + " (" + extension[1] + ")";
    }
    return number == "0" ? "" : number;
  }

  Row shownTexts(const Statistic& statistic, const Row& expected) {
    Row texts(expected.begin(), expected.end() - kSums);
    if (statistic.shown != nullptr) texts[0] = statistic.shown(texts[0]);
    if (statistic.folder == 101) texts[0] = shownExtension(texts[0]);
    if (statistic.folder == 102) texts[1] = shownExtension(texts[1]);
    return texts;
  }

  void expectSums(const Row& shown, const Row& expected, const std::string& where) {
    const auto text = [&](std::size_t column) { return shown[shown.size() - kSums + column]; };
    const auto value = [&](std::size_t column) { return expected[expected.size() - kSums + column]; };
    const double seconds = std::stod(value(0));
    const double ring = std::stod(value(4));
    EXPECT_EQ(text(0), seconds == 0 ? "" : hours(seconds)) << where;
    EXPECT_EQ(text(1), value(1)) << where;
    for (const std::size_t money : {2U, 3U, 5U, 6U}) expectMoney(text(money), value(money), where);
    EXPECT_EQ(text(4), ring == 0 ? "" : minutes(ring)) << where;
    EXPECT_EQ(text(7), std::stod(value(7)) < 1 ? "" : minutes(std::stod(value(7)))) << where;
  }

  void expectTotals(const Row& totals, const Rows& expected) {
    const auto sum = [&](std::size_t column) {
      double all = 0;
      for (const Row& row : expected) all += std::stod(row[row.size() - kSums + column]);
      return all;
    };
    const std::size_t first = totals.size() - kSums;
    EXPECT_EQ(totals[first], hours(sum(0)));
    EXPECT_EQ(totals[first + 1], std::to_string(static_cast<long>(sum(1))));
    expectMoney(totals[first + 2], std::to_string(sum(2)), "totals");
    expectMoney(totals[first + 3], std::to_string(sum(3)), "totals");
    EXPECT_EQ(totals[first + 4], hours(sum(4)));
  }

  void check(const Statistic& statistic, const std::string& condition) {
    const auto page =
        nlohmann::json::parse(succeed("folder show " + std::to_string(statistic.folder) + " --json --totals"));
    Rows shown = page["rows"].get<Rows>();
    const Rows expected = expectedRows(statistic, condition);
    ASSERT_EQ(shown.size(), expected.size()) << statistic.folder;
    ASSERT_GT(expected.size(), 1U) << statistic.folder;
    for (const Row& row : expected) {
      const Row texts = shownTexts(statistic, row);
      const std::string calls = row[row.size() - kSums + 1];
      // Calls without the value and calls with an empty one are groups of their own that look alike.
      const auto found = std::ranges::find_if(shown, [&](const Row& candidate) {
        return std::equal(texts.begin(), texts.end(), candidate.begin()) && candidate[texts.size() + 1] == calls;
      });
      const std::string where = std::to_string(statistic.folder) + " " + texts[0] + " where " + condition;
      ASSERT_NE(found, shown.end()) << where;
      ASSERT_EQ(found->size(), row.size()) << where;
      expectSums(*found, row, where);
      shown.erase(found);
    }
    expectTotals(page["totals"].get<Row>(), expected);
  }

  Rows extensions_;
};

TEST_F(Statistics, AreTheSumsOfTheStoredCalls) {
  makeSample(1500);
  succeed("setting set OrganizationTAXE 19 --section general --where database");
  const auto definitions = nlohmann::json::parse(succeed("extension list --json"));
  for (const auto& extension : definitions) extensions_.push_back({extension["extension"], extension["description"]});
  for (const Statistic& statistic : kStatistics) check(statistic, "1");
  succeed("filter set OnFilter=1 OnMinDuration=1 MinDuration=60 OnIncoming=1");
  for (const Statistic& statistic : kStatistics) check(statistic, "TotalTime >= 60 and Incoming = 0");
}

}  // namespace
