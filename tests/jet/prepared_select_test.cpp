#include "jet/prepared_select.h"

#include <stdexcept>

#include "differential_fixture.h"
#include "jet/parser/parser.h"

namespace jet::test {
namespace {

using Values = std::vector<base::FormatArgument>;

TEST(PreparedSelectTest, HandsOverTheLiteralsOfItsText) {
  const struct {
    const char* pattern;
    Values values;
    const char* text;
    bool needsText = false;
  } cases[] = {
      {"select a from T where n = %d and m <> 5", {7}, "select a from T where n = 7 and m <> 5"},
      {"select a from T where a <> '' and '%s' like a+'*' order by 1 desc",
       {"0040"},
       "select a from T where a <> '' and '0040' like a+'*' order by 1 desc"},
      {"select a from T where a like \"*%s*\"", {"it's"}, "select a from T where a like \"*it's*\""},
      {"select a from [T%%'] where t <= #%d:%d# and n = %d",
       {607, 3},
       "select a from [T%'] where t <= #10:7# and n = 3"},
      {"select a from T where a = '%s'", {""}, "select a from T where a = ''"},
      {"select a from T where a = '%s'", {"it's"}, "select a from T where a = 'it's'", true},
      {"select a from T where n = %d", {-1}, "select a from T where n = -1", true},
      {"select a from T where n = %d", {"7"}, "select a from T where n = 7", true},
  };
  for (const auto& test : cases) {
    PreparedSelect select(test.pattern);
    EXPECT_EQ(select.text(test.values), test.text);
    const auto literals = select.literals(test.values);
    EXPECT_EQ(literals.has_value(), !test.needsText) << test.text;
    if (!literals) continue;
    Shape shape;
    shapeOf(test.text, shape);
    EXPECT_EQ(std::vector<Value>(literals->begin(), literals->end()), shape.literals) << test.text;
  }
}

TEST(PreparedSelectTest, RefusesPlaceholdersThatAreNoValues) {
  for (const char* pattern : {"select %s from T", "select a from T where n = 1%d", "select top %d a from T",
                              "select a from T where a = '%s%s'", "select a from T where a = 'x' %"}) {
    EXPECT_THROW(PreparedSelect{pattern}, std::logic_error) << pattern;
  }
  EXPECT_THROW(PreparedSelect("select a from T where a = 'x"), Error);
  EXPECT_THROW(PreparedSelect("n = %d").literals({}), std::logic_error);
}

// Every select is answered twice: with its values handed over, and as its text, by the file.
class PreparedDifferentialTest : public DifferentialTest {
 protected:
  PreparedDifferentialTest() {
    database_->createTable({.name = "Bands",
                            .fields = {{.name = "prefix"},
                                       {.name = "n", .type = Type::Long},
                                       {.name = "days", .type = Type::Long},
                                       {.name = "starts", .type = Type::DateTime}}});
    Transaction transaction(*database_);
    for (int i = 0; i < 400; ++i) {
      database_->execute("insert into Bands (prefix, n, days, starts) values (" +
                         one({"''", "null", "'0'", "'00'", "'0040'", "'0?4'", "'it''s'", "'ăla'"}) + ", " +
                         one({"null", "0", "1", "2", "3"}) + ", " + one({"null", "0", "2", "6", "30", "510510", "-4"}) +
                         ", " + one({"null", "#0:00#", "#8:30#", "#23:59#", "#1/2/2024#"}) + ")");
    }
    transaction.commit();
  }

  std::string prepared(PreparedSelect& select, const Values& values) {
    return answer([&] { return shown(select.openWith(*database_, values)); });
  }

  const std::vector<std::string> texts_ = {"", "0", "0040213", "00400", "it's", "0?4", "ăla x"};
};

TEST_F(PreparedDifferentialTest, ValuesAndTextGiveTheSameRows) {
  PreparedSelect selects[] = {
      PreparedSelect("select prefix, days from Bands where n = %d and '%s' like prefix+'*' order by prefix desc, days"),
      PreparedSelect("select * from Bands where n = %d and (days mod 3 = 0 or prefix = '%s')"),
      PreparedSelect("select * from Bands where days mod %d >= 0 and prefix like '%s*'"),
      PreparedSelect("select top 3 * from Bands where n <= %d and prefix <> '%s' order by starts, days, prefix"),
      PreparedSelect("select distinct(prefix) from Bands where n = %d or prefix = \"%s\" order by 1"),
  };
  PreparedSelect byTime("select * from Bands where n = %d and ((days mod %d = 0 and starts <= #%d:%d#) or days = 6)");
  int answered = 0;
  for (int i = 0; i < 600; ++i) {
    const auto number = static_cast<std::int64_t>(random_() % 6) - 1;
    const std::string& text = one(texts_);
    PreparedSelect& select = selects[random_() % std::size(selects)];
    const Values values = {number, std::string_view(text)};
    const std::string expected = streamed(select.text(values));
    ASSERT_EQ(prepared(select, values), expected) << select.text(values);
    answered += expected.starts_with("error") || expected.empty() ? 0 : 1;
    const Values times = {number, number + 1, static_cast<std::int64_t>(random_() % 1440)};
    ASSERT_EQ(prepared(byTime, times), streamed(byTime.text(times))) << byTime.text(times);
    if (i % 150 == 0) database_->execute("update Bands set n = n + 1 where n = 1 and days = 6");
  }
  EXPECT_GT(answered, 200);
}

// What a select keeps belongs to one database, and to the masks that are in force.
TEST_F(PreparedDifferentialTest, FollowsDatabaseDefinitionsAndMasks) {
  PreparedSelect select("select * from Bands where prefix = '%s'");
  const Values values = {"0040"};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(prepared(select, values), streamed(select.text(values)));
  const auto masks = std::make_shared<const Masks>(std::vector<ColumnMask>{
      {.table = "Bands", .column = "prefix", .function = &maskFunction("mask_number"), .second = 2}});
  for (int round = 0; round < 3; ++round) {
    database_->setMasks(masks);
    EXPECT_EQ(prepared(select, values), "");
    EXPECT_NE(prepared(select, {"00XX"}), "");
    database_->setMasks(nullptr);
    EXPECT_EQ(prepared(select, values), streamed(select.text(values)));
  }
  database_->execute("alter table Bands add column note text");
  EXPECT_EQ(prepared(select, values), streamed(select.text(values)));
  const auto other = createDatabase(place_.database("other.mdb"));
  EXPECT_EQ(errorOf([&] { select.openWith(*other, values); }), 3078);
  EXPECT_EQ(prepared(select, values), streamed(select.text(values)));
}

}  // namespace
}  // namespace jet::test
