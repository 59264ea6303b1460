#include <algorithm>

#include "differential_fixture.h"

namespace jet::test {

namespace {

// Every select is answered twice: by openSnapshot(), from memory where that is possible, and by forEachRow(), always by
// the file.
class MemoryDifferentialTest : public DifferentialTest {
 protected:
  MemoryDifferentialTest() {
    // Without an index of the file's own, so that its order of reading is that of the rows.
    database_->createTable({.name = "Things",
                            .fields = {{.name = "label", .type = Type::Text},
                                       {.name = "prefix", .type = Type::Text},
                                       {.name = "n", .type = Type::Long},
                                       {.name = "m", .type = Type::Long},
                                       {.name = "price", .type = Type::Double},
                                       {.name = "since", .type = Type::DateTime},
                                       {.name = "flag", .type = Type::Boolean}}});
    Transaction transaction(*database_);
    for (int i = 0; i < 120; ++i) {
      database_->execute("insert into Things (label, prefix, n, m, price, since, flag) values (" +
                         one({"'red'", "'Red'", "'RED wine'", "'green'", "'Grün'", "'GRÜN'", "''", "null", "'7'",
                              "'07'", "'7.5'", "'yes'", "'00402134567'", "'red wine 0040213'"}) +
                         ", " +
                         one({"''", "null", "'0'", "'00'", "'0040'", "'004021'", "'0040213'", "'00402135'", "'0049'",
                              "'00[4-5]0'", "'0?40'", "'*5'", "'0#'", "'ab'", "'AB'", "'é'"}) +
                         ", " + one({"null", "0", "1", "2", "7", "-3", "70000"}) + ", " + one({"1", "2", "3"}) + ", " +
                         one({"null", "0", "7.5", "7", "-0.25", "100"}) + ", " +
                         one({"null", "#1/2/2024#", "#12:30#", "#5/6/2025 13:00:01#"}) + ", " + one({"1", "0"}) + ")");
    }
    transaction.commit();
  }

  std::string atom() {
    return one({"label = 'red'",
                "label = 'grün'",
                "label <> 'RED'",
                "label = 7",
                "label = 7.5",
                "label < 'm'",
                "label >= 'Red'",
                "label = null",
                "label is not null",
                "label like 'r*'",
                "label like '*WINE*'",
                "label like '*00402134567*'",
                "label like '*ed wine 0040*'",
                "label like '*grün*'",
                "label like '[r-s]e?'",
                "label not like '#*'",
                "label in ('red', 'GREEN', '7')",
                "label between 'green' and 'red'",
                "label & prefix = 'red00'",
                "label + prefix = 'red00'",
                "len(label) > 3",
                "ucase(label) = 'RED'",
                "left(label, 1) = 'r'",
                "'0040213999' like prefix+'*'",
                "'00402135' like prefix+'*'",
                "'abc' like prefix+'*'",
                "'école' like prefix+'*'",
                "'' like prefix+'*'",
                "'0040' like prefix+'?'",
                "'0040213' not like prefix+'*'",
                "prefix <> ''",
                "(prefix = '' or prefix is null)",
                "n = 7",
                "n = '7'",
                "n = 7.0",
                "n = 7.5",
                "n = 'red'",
                "n <> 'red'",
                "n > 1",
                "n > 'red'",
                "not n > 1",
                "n is null",
                "n in (1, 2, 'x')",
                "n not in (1, 2)",
                "n between 0 and 7",
                "n not between 0 and 7",
                "n + m = 9",
                "n * m > 3",
                "n / m > 0.5",
                "n \\ m = 3",
                "n mod 2 = 0",
                "-n < 0",
                "n = m",
                "m = 2",
                "m = 3",
                "1 = m",
                "price = 7",
                "price = 7.5",
                "price > n",
                "price = '7.5'",
                "round(price) = 8",
                "abs(price) < 1",
                "iif(n > 1, m, 0) = 2",
                "isnull(price)",
                "since = #1/2/2024#",
                "since <= #12:30#",
                "since > '2024-01-01'",
                "since + 1 > #1/3/2024#",
                "hour(since) = 13",
                "weekday(since) = 3",
                "flag",
                "not flag",
                "flag = 1",
                "flag = true",
                "flag = -1",
                "flag <> 0",
                "n = true",
                "m",
                "null"});
  }

  std::string condition(int depth) {
    if (depth == 0) return atom();
    return one({condition(depth - 1) + " and " + condition(depth - 1), condition(depth - 1) + " and " + atom(),
                "(" + condition(depth - 1) + " or " + atom() + ")", "not (" + condition(depth - 1) + ")", atom()});
  }

  std::string select() {
    const std::string head =
        one({"select * from Things", "select top 1 * from Things", "select top 5 n, label from Things",
             "select label, n * 2 as twice, flag from [Things] as t", "select t.* from Things as t",
             "select distinct(label) from Things", "select distinct n, flag from Things",
             "select [label] & ' ' as x, prefix from Things",
             "select n + price, n / m, n = 1, since, -flag, price * 2 from Things"});
    const bool distinctLabel = head.find("distinct(label)") != std::string::npos;
    const bool distinctN = head.find("distinct n") != std::string::npos;
    const std::string where = one({"", " where ", " where ", " where ", " where "});
    std::string sql = head + where + (where.empty() ? "" : condition(static_cast<int>(random_() % 4)));
    if (distinctLabel) return sql + one({"", " order by label", " order by 1 desc"});
    if (distinctN) return sql + one({"", " order by 1 desc, 2", " order by flag, n"});
    return sql + one({"", "", " order by label", " order by 2 desc", " order by prefix desc, n", " order by n + m desc",
                      " order by since, price desc", " order by flag desc, len(label)"});
  }
};

}  // namespace

TEST_F(MemoryDifferentialTest, MemoryAndFileGiveTheSameRows) {
  int rowsSeen = 0;
  for (int i = 0; i < 1000; ++i) {
    const std::string sql = select();
    const std::string expected = streamed(sql);
    ASSERT_EQ(snapshot(sql), expected) << sql;
    rowsSeen += static_cast<int>(std::count(expected.begin(), expected.end(), '\n'));
    if (i % 200 == 0) database_->execute("update Things set n = n + 1 where m = 2 and n < 100");
  }
  EXPECT_GT(rowsSeen, 2000);
}

}  // namespace jet::test
