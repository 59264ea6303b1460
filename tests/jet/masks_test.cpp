#include "jet/masks.h"

#include "jet/database_fixture.h"

namespace jet {
namespace {

TEST(MaskFunctions, HideTheLastDigits) {
  struct {
    const char* function;
    const char* text;
    std::int64_t digits;
    const char* shown;
  } const cases[] = {
      {"mask_number", "0722123456", 3, "0722123XXX"},
      {"mask_number", "112", 3, "XXX"},
      {"mask_number", "11", 3, "XX"},
      {"mask_number", "+40 (722) 123-45-6#", 3, "+40 (722) 123-XX-X#"},
      {"mask_number", "", 3, ""},
      {"mask_numbers", "0264 123 456, 0744/111222;7", 2, "0264 123 4XX, 07XX/1112XX;X"},
      {"mask_forms", "0264123456 0040264123456", 4, "026412XXXX 004026412XXXX"},
      {"mask_text", "Ana: 0722 123 456 since 2024, room 12", 3, "Ana: 0722 123 XXX since 2024, room 12"},
      {"mask_text", "Exception while adding call (02\"1)", 3, "Exception while adding call (02\"1)"},
  };
  for (const auto& each : cases) {
    const Value shown = maskFunction(each.function).call({Value(each.text), Value(each.digits)});
    EXPECT_EQ(shown.toText(), each.shown) << each.function;
  }
  EXPECT_TRUE(maskFunction("mask_number").call({Value(), Value(3)}).isNull());
  for (const auto& [name, hide, shown] : {std::tuple{"Ana", Value(true), "***"},
                                          {"Ana", Value(false), "Ana"},
                                          {"", Value(true), ""},
                                          {"Ana", Value(), "Ana"}}) {
    EXPECT_EQ(maskFunction("mask_name").call({Value(name), hide}).toText(), shown);
  }
}

class MasksTest : public test::DatabaseFixture {
 protected:
  MasksTest() {
    database_->createTable({.name = "T",
                            .fields = {{.name = "ID", .type = Type::Long, .autoIncrement = true},
                                       {.name = "Number"},
                                       {.name = "Name"},
                                       {.name = "Hide", .type = Type::Boolean},
                                       {.name = "Cost", .type = Type::Long}},
                            .indexes = {{{"Number"}}}});
    constexpr const char* kNumbers[] = {"0722111222", "0722111333", "0213330000", "0722111222", "112"};
    for (int i = 0; i < 5; ++i) {
      database_->execute("insert into T (Number, Name, Hide, Cost) values ('" + std::string(kNumbers[i]) + "', 'n" +
                         std::to_string(i) + "', " + (i % 2 == 0 ? "True" : "False") + ", " + std::to_string(i) + ")");
    }
    database_->setMasks(masks(3));
  }
  static MasksPtr masks(std::int64_t digits) {
    return std::make_shared<const Masks>(std::vector<ColumnMask>{
        {.table = "T", .column = "Number", .function = &maskFunction("mask_number"), .second = digits},
        {.table = "T", .column = "Name", .function = &maskFunction("mask_name"), .secondColumn = "Hide"}});
  }
  // The rows of a select by each way of reading, which must not differ.
  std::string shown(const std::string& sql) {
    const std::string streamed = rows(sql);
    const auto text = [](const Snapshot& read) {
      std::string all;
      for (std::size_t row = 0; row < read.rowCount(); ++row) {
        if (row > 0) all += ';';
        for (std::size_t i = 0; i < read.columns().size(); ++i) all += (i == 0 ? "" : "|") + read.at(row, i).toText();
      }
      return all;
    };
    for (int i = 0; i < 3; ++i) EXPECT_EQ(text(database_->openSnapshot(sql)), streamed) << sql;
    const auto window = database_->openWindow(sql);
    EXPECT_EQ(text(window->rows(0, window->rowCount())), streamed) << sql;
    std::string all;
    const auto recordset = database_->openRecordset(sql);
    for (; !recordset->eof(); recordset->moveNext()) {
      if (!all.empty()) all += ';';
      for (std::size_t i = 0; i < recordset->fieldNames().size(); ++i) {
        all += (i == 0 ? "" : "|") + recordset->get(i).toText();
      }
    }
    EXPECT_EQ(all, streamed) << sql;
    return streamed;
  }
};

TEST_F(MasksTest, AreSeenByEveryPartOfASelect) {
  struct {
    const char* sql;
    const char* rows;
  } const cases[] = {
      {"select * from T where ID < 3 order by ID", "1|0722111XXX|***|-1|0;2|0722111XXX|n1|0|1"},
      {"select ID from T where Number = '0722111222'", ""},
      {"select ID from T where Number = '0722111XXX' order by ID", "1;2;4"},
      {"select ID from T where Number like '*222*'", ""},
      {"select ID from T where Number in ('112', 'XXX')", "5"},
      {"select ID from T where Number > '0722111222' order by ID", "1;2;4;5"},
      {"select ID from T where Name = 'n0'", ""},
      {"select ID from T where Name = 'n1'", "2"},
      {"select Number, count(*) as n, sum(Cost) as c from T group by Number order by 1",
       "0213330XXX|1|2;0722111XXX|3|4;XXX|1|4"},
      {"select max(Number) as m, min(Name) as n, first(Number) as f from T", "XXX|***|0722111XXX"},
      {"select distinct(Number) from T order by Number", "0213330XXX;0722111XXX;XXX"},
      {"select ID from T order by Number, ID desc", "3;4;2;1;5"},
      {"select t.ID, Right(t.Number, 4) as r from T as t where t.ID = 1", "1|1XXX"},
  };
  for (const auto& each : cases) EXPECT_EQ(shown(each.sql), each.rows) << each.sql;
}

TEST_F(MasksTest, HoldForFindingToo) {
  const auto window = database_->openWindow("select * from T order by Number");
  EXPECT_EQ(window->find("Number = '0213330000'"), std::nullopt);
  EXPECT_EQ(window->find("Number = '0213330XXX'"), 0);
  const auto recordset = database_->openRecordset("select * from T");
  recordset->findFirst("Number = '112'");
  EXPECT_TRUE(recordset->noMatch());
  recordset->findFirst("Name = 'n1'");
  EXPECT_FALSE(recordset->noMatch());
}

TEST_F(MasksTest, ARecordsetOverThemIsNotChangedAndOneAsStoredIs) {
  const auto masked = database_->openRecordset("select * from T");
  EXPECT_EQ(errorOf([&] { masked->edit(); }), 3027);
  EXPECT_EQ(errorOf([&] { masked->addNew(); }), 3027);
  std::unique_ptr<Recordset> stored;
  {
    const AsStored whole(*database_);
    stored = database_->openRecordset("select * from T");
    EXPECT_EQ(database_->openSnapshot("select Number from T where ID = 1").at(0, 0).toText(), "0722111222");
  }
  stored->edit();
  stored->set("Cost", 50);
  stored->update();
  EXPECT_EQ(stored->get("Number").toText(), "0722111222");
  EXPECT_EQ(shown("select Number, Cost from T where ID = 1"), "0722111XXX|50");
}

TEST_F(MasksTest, ComeAndGo) {
  const std::string sql = "select Number from T where ID = 1";
  EXPECT_EQ(shown(sql), "0722111XXX");
  database_->setMasks(masks(5));
  EXPECT_EQ(shown(sql), "07221XXXXX");
  database_->setMasks(nullptr);
  EXPECT_EQ(shown(sql), "0722111222");
  EXPECT_EQ(errorOf([&] { (void)rows("select mask_number(Number, 3) from T"); }), 3085);
}

}  // namespace
}  // namespace jet
