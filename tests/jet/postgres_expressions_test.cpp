// Every function and operator of the dialect over awkward values: the server must give what a file gives.

#include <gtest/gtest.h>

#include "differential_fixture.h"
#include "jet/values.h"

namespace jet::test {

namespace {

struct Column {
  const char* name;
  Type type;
  std::vector<Value> values;
};

// Read side by side, the shorter ones again from the start.
const std::vector<Column>& columns() {
  static const std::vector<Column> all = {
      {"t",
       Type::Text,
       {"",
        "Ana",
        "ANA",
        "ștefan",
        "ȘTEFAN",
        "Șz",
        "Șa",
        "sz",
        "T",
        "Ă",
        "Â",
        "á",
        "ß",
        "İstanbul",
        "K",
        "각",
        "漢字",
        "100%",
        "a_b",
        "a\\b",
        "[x]",
        "a-c",
        "!",
        "  12 ",
        "+7.5",
        "-1e3",
        "1e400",
        "1e-400",
        "0x10",
        "1.",
        ".5",
        "12,5",
        "nan",
        "3/5/2025",
        "2025-03-05 14:30:59",
        "13/2/1999",
        "2:30 pm",
        "25:00",
        "2/30/2025",
        "yes",
        "False",
        "it's",
        "a\nb\tc",
        "1 615 198th",
        "0721-123456; 0733 22",
        "\xff\xfe",

        "\U0001F600 ok",
        "\x01",
        Value()}},
      {"u", Type::Text, {"a",      "N",  "*",     "?n?",     "[a-z]*", "*a*",   "[!a]*",    "#*",   "[]a[]", "[",
                         "]",      "a[", "ș*",    "*ș*",     "[ă-ș]*", "%",     "_*",       "a\\*", "",      "ana",
                         "ȘTEFAN", "s",  "[z-a]", "[!z-a]*", "[*]",    Value(), "[a-c-e]*", "*\n*"}},
      {"n", Type::Long, {0, 1, -1, 7, -3, 12, 255, 2147483647, std::int64_t{-2147483648}, 100000, 45000, Value()}},
      {"m", Type::Long, {1, 2, 3, 0, -2, 5, 31, 400, Value(), 1000}},
      {"x", Type::Double, {0.0,        -0.0,    1.5,    2.5,      -2.5,  0.1,
                           1e308,      -1e308,  1e-308, 5e-324,   1e15,  999999999999999.9,
                           123456.789, 1e-5,    0.0001, 45000.75, -1.25, 2958465.999999,
                           1.0 / 3,    Value(), 9.3e18, 100.0}},
      {"y", Type::Double, {1.0, 0.0, 2.0, -0.5, 1e308, 1e-300, 3.0, 10.0, -2.0, Value(), 0.5, 1e200}},
      {"d",
       Type::DateTime,
       {date(2025, 3, 5, 14, 30, 59), date(1899, 12, 30), date(1899, 12, 30, 6, 0, 1), date(1899, 12, 29, 18, 0, 0),
        date(100, 1, 1), date(9999, 12, 31, 23, 59, 59), date(2024, 2, 29), date(2021, 1, 3),
        date(1850, 6, 15, 1, 2, 3), date(2024, 12, 31, 12, 0, 0), Value()}},
      {"e", Type::DateTime, {date(2025, 1, 1), date(2024, 2, 29, 23, 0, 0), date(1900, 1, 1), Value()}},
      {"b", Type::Boolean, {true, false}},
  };
  return all;
}

constexpr int kRows = 60;

// Arguments for the places of a pattern: "%t" any, "%k" numbers, "%w" small numbers, "%d" dates.
std::vector<std::string> choices(char place) {
  switch (place) {
    case 't':
      return {"t", "n", "x", "d", "b"};
    case 'k':
      return {"x", "n", "t", "d", "b"};
    case 'w':
      return {"m", "y", "b"};
    default:
      return {"d", "t", "x", "b"};
  }
}

std::vector<std::string> spreadOut(const std::string& pattern) {
  const std::size_t mark = pattern.find('%');
  if (mark == std::string::npos) return {pattern};
  std::vector<std::string> all;
  for (const std::string& choice : choices(pattern[mark + 1])) {
    for (std::string& each : spreadOut(pattern.substr(0, mark) + choice + pattern.substr(mark + 2))) {
      all.push_back(std::move(each));
    }
  }
  return all;
}

class PostgresExpressionsTest : public DifferentialTest {
 protected:
  void SetUp() override {
    if (!place_.onServer()) GTEST_SKIP() << "the environment names no server";
    TableDef table{.name = "V", .fields = {{.name = "id", .type = Type::Long, .autoIncrement = true}}};
    for (const Column& column : columns()) table.fields.push_back({.name = column.name, .type = column.type});
    for (Database* database : {database_.get(), onFile_.get()}) {
      database->createTable(table);
      const auto rows = database->openRecordset("select * from V");
      for (std::size_t row = 0; row < kRows; ++row) {
        rows->addNew();
        for (const Column& column : columns()) rows->set(column.name, column.values[row % column.values.size()]);
        rows->update();
      }
    }
  }

  static std::string rowsOf(Database& database, const std::string& sql) {
    return answer([&] {
      std::string text;
      database.forEachRow(sql, [&](const std::vector<Value>& row) {
        for (const Value& value : row) text += shown(value);
        text += '\n';
        return true;
      });
      return text;
    });
  }

  void expectSame(const std::string& sql) {
    EXPECT_EQ(rowsOf(*database_, sql), rowsOf(*onFile_, sql)) << sql;
    ++compared_;
  }

  // Row by row where an error would hide the others.
  void expectSameValues(const std::string& expression) {
    const std::string all = "select id, " + expression + " from V order by id";
    const std::string expected = rowsOf(*onFile_, all);
    if (!expected.starts_with("error")) return expectSame(all);
    for (int row = 1; row <= kRows; ++row) {
      expectSame("select " + expression + " from V where id = " + std::to_string(row));
    }
  }

  support::TestPlace folder_{Where::InAFolder};
  std::unique_ptr<Database> onFile_ = createDatabase(folder_.database("test.mdb"));
  int compared_ = 0;
};

}  // namespace

TEST_F(PostgresExpressionsTest, FunctionsGiveTheSameValues) {
  const std::string patterns[] = {"weekday(%d)",
                                  "weekday(%d, %w)",
                                  "year(%d)",
                                  "month(%d)",
                                  "day(%d)",
                                  "hour(%d)",
                                  "minute(%d)",
                                  "second(%d)",
                                  "datevalue(%d)",
                                  "cdate(%d)",
                                  "dateadd('m', %w, %d)",
                                  "dateserial(2025, %w, %w)",
                                  "dateserial(n, m, 1)",
                                  "timeserial(%w, %w, %w)",
                                  "left(%t, %w)",
                                  "right(%t, %w)",
                                  "mid(%t, %w)",
                                  "mid(%t, m, %w)",
                                  "len(%t)",
                                  "instr(t, u)",
                                  "instr(%w, t, u)",
                                  "instr(1, t, 'A', 0)",
                                  "instr(1, t, 'Ș', %w)",
                                  "ucase(%t)",
                                  "lcase(%t)",
                                  "trim(%t)",
                                  "ltrim(t)",
                                  "rtrim(t)",
                                  "val(%t)",
                                  "str(%k)",
                                  "cstr(%t)",
                                  "space(%w)",
                                  "string(%w, t)",
                                  "string(2, %k)",
                                  "strcomp(t, u)",
                                  "strcomp(t, u, %w)",
                                  "replace(t, 'A', u)",
                                  "replace(t, 'a', u, %w)",
                                  "replace(t, 'A', 'xy', 1, 1, 1)",
                                  "replace(t, '', u)",
                                  "asc(%t)",
                                  "chr(n)",
                                  "chr(m)",
                                  "abs(%k)",
                                  "int(%k)",
                                  "fix(%k)",
                                  "sgn(%k)",
                                  "round(%k)",
                                  "round(%k, %w)",
                                  "sqr(%k)",
                                  "clng(%k)",
                                  "cint(%k)",
                                  "cdbl(%k)",
                                  "iif(%k > 1, t, x)",
                                  "iif(b, n, x)",
                                  "isnull(%t)"};
  for (const std::string& pattern : patterns) {
    for (const std::string& expression : spreadOut(pattern)) expectSameValues(expression);
  }
  for (const char* part : {"yyyy", "q", "m", "y", "d", "w", "ww", "h", "N", "s", "x"}) {
    const std::string quoted = "'" + std::string(part) + "'";
    for (const std::string& form :
         {"datepart(" + quoted + ", d)", "datepart(" + quoted + ", d, m)", "datepart(" + quoted + ", d, 2, 2)",
          "datepart(" + quoted + ", e, 1, 3)", "dateadd(" + quoted + ", n, d)", "dateadd(" + quoted + ", m, e)",
          "datediff(" + quoted + ", d, e)", "datediff(" + quoted + ", e, d, 2)",
          "datediff(" + quoted + ", e, d, 3, n)"}) {
      expectSameValues(form);
    }
  }
  EXPECT_GT(compared_, 1000);
}

TEST_F(PostgresExpressionsTest, OperatorsGiveTheSameValues) {
  for (const char* sign : {" + ", " - ", " * ", " / ", " \\ ", " mod ", " ^ "}) {
    for (const std::string left : {"x", "n", "b", "5", "1.5"}) {
      for (const std::string right : {"y", "m", "x", "2", "0"}) {
        expectSameValues(left + sign + right);
      }
    }
    expectSameValues("t" + std::string(sign) + "m");
  }
  for (const char* expression : {"d + n",
                                 "d - m",
                                 "d - e",
                                 "e + x",
                                 "d + t",
                                 "t + u",
                                 "t & u",
                                 "x & t",
                                 "d & b",
                                 "-x",
                                 "-n",
                                 "-b",
                                 "-t",
                                 "(x + y) * 2",
                                 "x * (19 + 100) / 100",
                                 "(x / y) * (y / x)",
                                 "x + 1 - y * 3",
                                 "x * y / 100",
                                 "n * x / m",
                                 "x / y / m",
                                 "x / (n / y)",
                                 "1.5 * x * y * m"}) {
    expectSameValues(expression);
  }
}

TEST_F(PostgresExpressionsTest, ConditionsChooseTheSameRows) {
  const std::string atoms[] = {"t = u",
                               "t = 'ana'",
                               "t = 'ȘTEFAN'",
                               "t <> 'ana'",
                               "t <> 'ș'",
                               "t < 'b'",
                               "t >= 'ș'",
                               "t < u",
                               "t > 'z'",
                               "t = 12",
                               "t = x",
                               "t < n",
                               "t in ('ana', 'K')",
                               "t in ('ș', 'ăb')",
                               "t not in ('ana')",
                               "t like u",
                               "t not like u",
                               "t like 'a*'",
                               "t like '*'",
                               "t like '*N*'",
                               "t like '*%*'",
                               "t like '*_*'",
                               "t like '*\\*'",
                               "t like 'ANA'",
                               "t like 'ș*'",
                               "t like '?'",
                               "t like '#*'",
                               "t like '[!a-z]*'",
                               "'ana' like u",
                               "x like '1*'",
                               "d like '3/*'",
                               "'ana' like u+'*'",
                               "'ab' like t+'*'",
                               "'ș' like t+'*'",
                               "left(t, 2) like 'a*'",
                               "left(t, 2) = 'an'",
                               "n = 7",
                               "n = 7.5",
                               "n = '7'",
                               "n = 'red'",
                               "n <> 'red'",
                               "n < 2.5",
                               "n in (1, 7.0, 'x')",
                               "x = 1.5",
                               "x = '1.5'",
                               "x <> 'red'",
                               "x > n",
                               "x between n and y",
                               "d = #3/5/2025 14:30:59#",
                               "d = '2025-03-05 14:30:59'",
                               "d = 'red'",
                               "d <> 'red'",
                               "d < '2000-01-01'",
                               "d > 45000",
                               "d = t",
                               "d <= e",
                               "b",
                               "not b",
                               "b = 1",
                               "b = 'yes'",
                               "b = 'red'",
                               "b <> 'red'",
                               "b in ('red', 1)",
                               "b = n",
                               "n = true",
                               "b > false",
                               "x",
                               "n",
                               "null",
                               "t = null",
                               "not (x > y)",
                               "b xor n > 1",
                               "b eqv x > 1",
                               "b imp x > 1",
                               "n or x",
                               "(n and x) is null",
                               "t is null",
                               "isnull(x)",
                               "n mod 2 = 0",
                               "n / m > 1",
                               "iif(b, t, u) = 'ana'"};
  for (const std::string& atom : atoms) {
    expectSame("select id from V where " + atom + " order by id");
    expectSame("select id from V where not (" + atom + ") order by id");
    expectSame("select count(*) from V where " + atom);
  }
}

TEST_F(PostgresExpressionsTest, GroupsAndOrderAreTheSame) {
  const std::string selects[] = {
      "select t, id from V order by t, id",
      "select t, id from V order by t desc, id desc",
      "select u from V order by u, x, id",
      "select x, id from V order by x desc, id",
      "select d, b, id from V order by b, d desc, id",
      "select t, count(*) from V group by t order by t",
      "select t, count(*), sum(m), avg(m) from V group by t order by 2 desc, 1",
      "select b, min(t), max(t), min(d), max(d), count(x) from V group by b order by b",
      "select b, first(t), last(t), first(x), last(d) from V group by b order by 1",
      "select min(b), max(b), stdev(m), var(m), count(*) from V",
      "select first(t), last(u), min(t) from V where id > 1000",
      "select left(t, 1) & '!', count(*) from V where t is not null group by left(t, 1) order by left(t, 1)",
      "select hour(d), count(*) from V group by hour(d) order by hour(d)",
      "select ucase(u) as k, sum(m) as s from V group by ucase(u) having sum(m) > 10 order by s desc, k",
      "select distinct t from V order by t",
      "select distinct u, b from V order by u desc, b",
      "select distinct n mod 3 as r from V order by r",
      "select distinct count(*) as c from V group by n order by c",
      "select top 5 t from V order by t desc, id",
      "select a.id, c.t from V as a inner join V as c on a.t = c.t order by a.id, c.id",
      "select a.id, c.id from V as a left join V as c on a.n = c.m order by a.id, c.id",
      "select c.u, count(*) from V as a inner join V as c on a.id = c.id group by c.u order by c.u",
      "select id, t from V where t > 'a' and b order by t, id"};
  for (const std::string& sql : selects) expectSame(sql);
}

TEST_F(PostgresExpressionsTest, ChangesStoreTheSameValues) {
  const std::string changes[] = {"update V set t = x where id < 20",
                                 "update V set t = left(t, 300) where id < 40",
                                 "update V set t = d",
                                 "update V set n = x where id < 5",
                                 "update V set n = t where id > 20",
                                 "update V set n = y",
                                 "update V set x = t where id = 24",
                                 "update V set x = n",
                                 "update V set d = t where id < 3",
                                 "update V set d = n where id < 9",
                                 "update V set b = n",
                                 "update V set b = t where id = 40",
                                 "update V set b = null",
                                 "update V set t = string(300, 'a')",
                                 "update V set u = null",
                                 "insert into V (t, n, b) values (7, '8', 'yes')",
                                 "insert into V (t, x, d) values ('a' & 1, 1 / 3, #1/1/2000# + 1)",
                                 "delete from V where t like '*a*'"};
  const auto run = [](Database& database, const std::string& sql) {
    return answer([&] {
      database.execute(sql);
      return std::string("done");
    });
  };
  for (const std::string& sql : changes) {
    EXPECT_EQ(run(*database_, sql), run(*onFile_, sql)) << sql;
    expectSame("select * from V order by id");
  }
}

}  // namespace jet::test
