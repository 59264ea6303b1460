#include "jet/parser/parser.h"

#include <gtest/gtest.h>

#include "jet/error.h"
#include "jet/parser/shape_memory.h"
#include "tree_text.h"

namespace jet {
namespace {

using test::treeText;

std::string conditionText(std::string_view condition) {
  return treeText(*parseCondition(condition));
}

// The number and the description, or what was parsed instead.
template <typename Parse>
std::string faultOf(Parse parse) {
  try {
    return "no fault: " + parse();
  } catch (const Error& error) {
    return std::to_string(error.number()) + " " + error.description();
  }
}

std::string statementFault(std::string_view sql) {
  return faultOf([sql] { return treeText(*parseStatement(sql)); });
}

std::string conditionFault(std::string_view condition) {
  return faultOf([condition] { return conditionText(condition); });
}

struct ParserCase {
  std::string_view text;
  std::string_view tree;
};

TEST(Parser, ReadsTheStatementsOfTheSystem) {
  const ParserCase cases[] = {
      {"SELECT * FROM Log ORDER BY DateTime DESC;", "select * from Log order DateTime desc"},
      {"select [number] & ' ' as n from FilteredNumbers", "select (& number ?0:text)=n from FilteredNumbers"},
      {"select distinct(profile_name) from profiles where provider_id = 3",
       "select distinct profile_name from profiles where (= provider_id ?0:long)"},
      {"select distinct(Area) from Calls where Area <> '' and Area <> null order by Area",
       "select distinct Area from Calls where (and (<> Area ?0:text) (notnull Area)) order Area"},
      {"SELECT TOP 1 * FROM profiles WHERE (profile_name = '' or profile_name is null) and profile_start_date <= "
       "#3/15/2025# and provider_id = 2 order by profile_start_date desc",
       "select top 1 * from profiles where (and (and (or (= profile_name ?0:text) (isnull profile_name)) "
       "(<= profile_start_date ?1:date)) (= provider_id ?2:long)) order profile_start_date desc"},
      {"select destination_id from prefixe where prefix_id <> '' and provider_id=2 and '0213' like prefix_id+'*' "
       "order by prefix_id desc",
       "select destination_id from prefixe where (and (and (<> prefix_id ?0:text) (= provider_id ?1:long)) "
       "(like ?2:text (+ prefix_id ?3:text))) order prefix_id desc"},
      {"select * from charges where destination_id = 1 and profile_id = 2 and ( (charge_days mod 3 = 0)  and "
       "charge_start_time <= #23:59#) and charge_minimum_digits <= 9",
       "select * from charges where (and (and (and (= destination_id ?0:long) (= profile_id ?1:long)) (and (= (mod "
       "charge_days ?2:long) ?3:long) (<= charge_start_time ?4:date))) (<= charge_minimum_digits ?5:long))"},
      {"SELECT Weekday(DateTime) AS RecordID, Weekday(DateTime) AS WD, count(*) as cnt, SUM(Price_Ref * (19 + 100)/100 "
       ") AS SUM_Price, First(Name) as Numele FROM [Calls] as toptab WHERE  not Hidden AND (Trunk=3)  group by "
       "Weekday(DateTime)  ORDER BY   4 ASC",
       "select (weekday() DateTime)=RecordID (weekday() DateTime)=WD (count() *)=cnt (sum() (/ (* Price_Ref (+ ?0:long "
       "?1:long)) ?2:long))=SUM_Price (first() Name)=Numele from Calls=toptab where (and (not Hidden) (= Trunk "
       "?3:long)) "
       "group (weekday() DateTime) order #4"},
      {"SELECT RecordID, Price_Ref * (+ 100)/100 as padaos FROM [Calls] as toptab WHERE 1=1 ORDER BY Price_Ref DESC",
       "select RecordID (/ (* Price_Ref ?0:long) ?1:long)=padaos from Calls=toptab where (= ?2:long ?3:long) order "
       "Price_Ref desc"},
      {"SELECT [Calls].*, A.x, B.[y z] FROM (A RIGHT JOIN (B RIGHT JOIN [Calls]  ON B.k = [Calls].[f])  ON A.k = "
       "[Calls].[g]) ",
       "select Calls.* A.x B.y z from (A right (B right Calls on (= B.k Calls.f)) on (= A.k Calls.g))"},
      {"SELECT * FROM A LEFT OUTER JOIN B ON A.k=B.k INNER JOIN C ON C.k=B.k",
       "select * from ((A left B on (= A.k B.k)) inner C on (= C.k B.k))"},
      {"insert into Clients (Name, Account, Folder) values ('a', 'it''s', -5)",
       "insert Clients Name:=?0:text Account:=?1:text Folder:=(neg ?2:long)"},
      {"UPDATE charges SET charge_value = charge_value / 10000, charge_currency='RON' WHERE charge_currency = 'ROL'",
       "update charges charge_value:=(/ charge_value ?0:long) charge_currency:=?1:text where (= charge_currency "
       "?2:text)"},
      {"DELETE FROM Calls WHERE [DateTime] < #1/31/2025#", "delete Calls where (< DateTime ?0:date)"},
      {"DELETE FROM Log", "delete Log"},
      {"ALTER table calls ADD COLUMN Folder TEXT", "alter calls Folder text 255"},
      {"alter table calls add Note memo", "alter calls Note text 0"},
      {"alter table calls add column Code text(12);", "alter calls Code text 12"},
      {"select Level, Desc, Value, Name, Default, Password, top from Log having count(*) > 1 order by Desc desc, 2 + 1",
       "select Level Desc Value Name Default Password top from Log having (> (count() *) ?0:long) order Desc desc "
       "order "
       "(+ ?1:long ?2:long)"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(treeText(*parseStatement(each.text)), each.tree) << each.text;
  }
}

TEST(Parser, ReadsConditions) {
  const ParserCase cases[] = {
      {"Path = \"general\\DbVersion\"", "(= Path ?0:text)"},
      {"Groups LIKE \"*;5;*\"", "(like Groups ?0:text)"},
      {"(Name LIKE \"*a*\" OR Organization LIKE \"*a*\") AND Tel_String LIKE \"*1*\"",
       "(and (or (like Name ?0:text) (like Organization ?1:text)) (like Tel_String ?2:text))"},
      {" (Name NOT LIKE 'x*' or Name IS NULL)", "(or (notlike Name ?0:text) (isnull Name))"},
      {"DAY(DateTime)=3 and Not Incoming = 0", "(and (= (day() DateTime) ?0:long) (not (= Incoming ?1:long)))"},
      {"null <> x and x = Null and y is not null", "(and (and (notnull x) (isnull x)) (notnull y))"},
      {"a between 1 and 2 and b not between -1 and c & 'x'",
       "(and (between a ?0:long ?1:long) (notbetween b (neg ?2:long) (& c ?3:text)))"},
      {"a in (1, 'x') or b not in (null)", "(or (in a ?0:long ?1:text) (notin b null))"},
      {"a imp b eqv c xor d or e and not f", "(imp a (eqv b (xor c (or d (and e (not f))))))"},
      {"a = not b and c", "(and (= a (not b)) c)"},
      {"1 + 2 & 3 = 4", "(= (& (+ ?0:long ?1:long) ?2:long) ?3:long)"},
      {"a - b - c * d \\ e mod f", "(- (- a b) (mod (\\ (* c d) e) f))"},
      {"-a ^ 2 ^ -b", "(^ (^ (neg a) ?0:long) (neg b))"},
      {"1.5 > .5 and 2e3 >= 12345678901234567890", "(and (> ?0:double ?1:double) (>= ?2:double ?3:double))"},
      {"Hidden = true or T.true", "(or (= Hidden ?0:bool) T.true)"},
      {"[Date] < #1/2/2025 3:04 pm# and d=#2025-01-02#", "(and (< Date ?0:date) (= d ?1:date))"},
      {"iif(isnull(Left), left(a,1), instr(1,a,b))",
       "(iif() (isnull() Left) (left() a ?0:long) (instr() ?1:long a b))"},
      {"Ș\xC8\x9B = 'ț'", "(= Ș\xC8\x9B ?0:text)"},
  };
  for (const auto& each : cases) EXPECT_EQ(conditionText(each.text), each.tree) << each.text;
}

TEST(Parser, NamesThePlaceOfAFault) {
  const ParserCase cases[] = {
      {"select * from Calls where a b",
       "3075 Syntax error (missing operator) in query expression 'select * from Calls where a b' at character 29."},
      {"select '\xC8\x98' from T where",
       "3075 Syntax error (missing operator) in query expression 'select '\xC8\x98' from T "
       "where' at character 24."},
      {"select x from T where Name = 'O'Neil'",
       "3075 Syntax error in string in query expression 'select x from T where Name = 'O'Neil'' at character 37."},
      {"select x from T where d = #13/32/2025#",
       "3075 Syntax error in date in query expression 'select x from T where d = #13/32/2025#' at character 27."},
      {"select Shell('x') from T", "3085 Undefined function 'Shell' in expression."},
      {"select left(a) from T",
       "3075 Wrong number of arguments used with function in query expression 'select left(a) "
       "from T' at character 8."},
  };
  for (const auto& each : cases) EXPECT_EQ(statementFault(each.text), each.tree);
}

TEST(Parser, RefusesWhatIsNotInTheGrammar) {
  const std::string_view statements[] = {
      "",
      ";",
      "drop table Calls",
      "select * from Calls; delete from Calls",
      "select * from Calls -- all",
      "select * /* all */ from Calls",
      "select * from Calls where x = ?",
      "select * from Calls where x in (select x from T)",
      "select * from A, B",
      "select a b from T",
      "select top 5 from T where",
      "select a from T order by 2",
      "select a from T order by 0",
      "select a from T union select b from U",
      "select a from T where count(*) > 1",
      "select sum(count(*)) from T",
      "select sum(*) from T",
      "select [a from T",
      "select [] from T",
      "select 5abc from T",
      "insert into T (a, b) values (1)",
      "insert into T values (1)",
      "update T set a = 1, where b",
      "update T where b",
      "delete from T where x = 1 or",
      "alter table T add column c text(0)",
      "alter table T drop column c",
      "select a from T where x is 5",
      "select a from T where x not 5",
  };
  for (const auto sql : statements)
    EXPECT_TRUE(statementFault(sql).starts_with("3075 ")) << sql << ": " << statementFault(sql);
  for (const std::string_view condition : {"", "1=1;", "1=1)", "(1=1", "count(*)>1", "a=1) or (1=1"}) {
    EXPECT_TRUE(conditionFault(condition).starts_with("3075 ")) << condition;
  }
}

TEST(Parser, BoundsTheDepthAndLengthOfATree) {
  const auto repeat = [](std::string_view piece, int count) {
    std::string text;
    for (; count > 0; --count) text += piece;
    return text;
  };
  EXPECT_NO_THROW(parseCondition(repeat("(", 150) + "a" + repeat(")", 150)));
  EXPECT_NO_THROW(parseCondition("a" + repeat(" and a=1", 900)));
  for (const std::string& text :
       {repeat("(", 20000) + "a" + repeat(")", 20000), repeat("not ", 5000) + "a", repeat("- ", 5000) + "a",
        "a" + repeat(" and a", 9000), repeat("abs(", 5000) + "a" + repeat(")", 5000), repeat("a=1 and ", 9000) + "a"}) {
    EXPECT_TRUE(conditionFault(text).starts_with("3075 "));
  }
  EXPECT_TRUE(statementFault("select * from " + repeat("(", 5000)).starts_with("3075 "));
  EXPECT_TRUE(statementFault("select * from a" + repeat(" left join b on 1", 2000)).starts_with("3075 "));
}

std::string keyOf(std::string_view sql) {
  Shape shape;
  shapeOf(sql, shape);
  return shape.key;
}

TEST(Shape, TakesTheLiteralsOutInTheirOrder) {
  Shape shape;
  shapeOf(
      "select top 1 a, 'it''s' from T where b = 5 and c <= #1/31/2025# and d > 1.5 and e = \"\" and f = true order by "
      "2",
      shape);
  const std::vector<Value> expected = {"it's", 5, *base::DateTime::fromParts(2025, 1, 31), 1.5, "", true};
  EXPECT_EQ(shape.literals, expected);
  shapeOf("Owner = \"x\\\" AND RecordID = 7", shape);
  EXPECT_EQ(shape.literals, (std::vector<Value>{"x\\", 7}));
}

TEST(Shape, IsOneForTextsThatDifferInValuesOnly) {
  EXPECT_EQ(keyOf("a = 5 and b = 'x'"), keyOf("a = 77 and b = 'long''er'"));
  const std::pair<std::string_view, std::string_view> different[] = {
      {"a = 5", "a = '5'"},
      {"a = 5", "a = 5.0"},
      {"a = '1:00'", "a = #1:00#"},
      {"a = 1", "a = true"},
      {"a = null", "a = 1"},
      {"select top 1 * from T", "select top 2 * from T"},
      {"select a, b from T order by 1", "select a, b from T order by 2"},
      {"select a, b from T order by a, 1 desc", "select a, b from T order by a, 2 desc"},
      {"alter table T add column c text(5)", "alter table T add column c text(6)"},
  };
  for (const auto& [one, other] : different) EXPECT_NE(keyOf(one), keyOf(other)) << one;
}

TEST(Shape, CountsLiteralsAsTheParserDoes) {
  const std::string_view texts[] = {
      "select top 3 a, 1 from T where left(b, 2) = 'x' order by 1, left(b, 3), 2 desc;",
      "select a, b from T order by 1 + 2, 2",
      "select a from T where b in (1, 2) and c between #1:00# and #2:00#",
      "alter table T add column c text(5)",
      "update T set a = -5, b = false",
  };
  for (const auto sql : texts) {
    Shape shape;
    shapeOf(sql, shape);
    EXPECT_EQ(shape.literals.size(), parseStatement(sql)->literalCount) << sql;
  }
}

TEST(Shape, OfATextWithOtherLiteralsIsTheOneThatTheLexerFinds) {
  ShapeMemory memory;
  Shape remembered;
  const auto textOf = [](std::string_view number, std::string_view text) {
    return "select a from T where n = " + std::string(number) + " and (t = " + std::string(text) + ")";
  };
  memory.shapeOf(textOf("1", "'x'"), remembered);
  for (const std::string_view number : {"0", "007", "123456789012345678", "1234567890123456789", "12.5", "1.", "1e3",
                                        "12abc", "-3", "(4)", "'5'", "#1/2/2025#", "true", "", " 6"}) {
    for (const std::string_view text : {"'y'", "''", "'it''s'", "'a''", "\"y\"", "\"a'b\"", "7", "'\xC8\x98'"}) {
      const std::string sql = textOf(number, text);
      const auto cut = [&](auto shape) {
        return faultOf([&] {
          Shape found;
          shape(found);
          std::string all = found.key;
          for (const Value& literal : found.literals) {
            all += "|" + std::to_string(static_cast<int>(literal.type())) + literal.toText();
          }
          return all;
        });
      };
      EXPECT_EQ(cut([&](Shape& out) { memory.shapeOf(sql, out); }), cut([&](Shape& out) { shapeOf(sql, out); })) << sql;
    }
  }
}

TEST(Shape, RefusesTextsThatDoNotEnd) {
  Shape shape;
  for (const std::string_view sql :
       {"a = 'x", "a = \"x", "a = #1/1/2025", "[a", "a = #x#", "a ? b", "a -- b", "a /* b"}) {
    EXPECT_THROW(shapeOf(sql, shape), Error) << sql;
  }
}

}  // namespace
}  // namespace jet
