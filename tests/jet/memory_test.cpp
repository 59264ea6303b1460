#include "base/printf.h"
#include "database_fixture.h"
#include "jet/engine/memory/contains_index.h"
#include "jet/error.h"

namespace jet::test {

namespace {

class MemoryTest : public DatabaseFixture {
 protected:
  MemoryTest() {
    database_->createTable({.name = "Numbers", .fields = {{.name = "number", .type = Type::Text}}});
    database_->createTable({.name = "People",
                            .fields = {{.name = "RecordID", .type = Type::Long},
                                       {.name = "Contact", .type = Type::Text},
                                       {.name = "Tel_String", .type = Type::Text}}});
  }

  static constexpr int kPeople = 70000;  // more than are held whole

  static std::string telephone(std::int64_t person) {
    return base::format("0040%09d", person * 7919 % 900000000 + 1000);
  }

  // The table is asked until it is worth an index.
  void addPeople() {
    Transaction transaction(*database_);
    const auto people = database_->openRecordset("select * from People");
    for (int i = 0; i < kPeople; ++i) {
      people->addNew();
      people->set("RecordID", i);
      people->set("Contact", base::format("Person %d", i));
      people->set("Tel_String", telephone(i) + ", " + telephone(i + 1000000));
      people->update();
    }
    transaction.commit();
    askOften();
  }

  std::string contactOf(const std::string& number) {
    const Snapshot found = database_->openSnapshot("SELECT * FROM People WHERE Tel_String LIKE \"*" + number + "*\"");
    std::string names;
    for (std::size_t i = 0; i < found.rowCount(); ++i) names += found.at(i, "Contact").toText() + ";";
    return names;
  }

  void askOften() {
    for (int i = 0; i < 10; ++i) contactOf("99999999999");
  }
};

TEST_F(MemoryTest, ATextWithinATextIsFoundByIndex) {
  addPeople();
  EXPECT_EQ(contactOf(telephone(4711)), "Person 4711;");
  EXPECT_EQ(contactOf(telephone(1000007)), "Person 7;");
  EXPECT_EQ(contactOf(telephone(5).substr(3)), "Person 5;");
  EXPECT_EQ(contactOf(telephone(5) + "1"), "");
  // Too many to be narrowed by their keys, and too short for the index.
  const auto count = [this](const std::string& condition) {
    return database_->openSnapshot("select RecordID from People where " + condition).rowCount();
  };
  EXPECT_EQ(count("Tel_String like '*, 00400*'"),
            std::stoul(rows("select count(*) from People where Tel_String like '*, 00400*'")));
  EXPECT_EQ(count("Tel_String like '*91234*'"),
            std::stoul(rows("select count(*) from People where Tel_String like '*91234*'")));
  EXPECT_EQ(count("Tel_String like '*" + telephone(9) + "*' and Contact = 'x'"), 0U);
  EXPECT_EQ(count("(Tel_String like '*" + telephone(9) + "*' or RecordID = 3)"), 2U);
}

TEST_F(MemoryTest, ATableTooLargeToBeHeldIsReadByKey) {
  database_->createTable({.name = "Notes",
                          .fields = {{.name = "Id", .type = Type::Long},
                                     {.name = "Title", .type = Type::Text},
                                     {.name = "Body", .type = Type::Text, .size = 0}}});
  constexpr int kNotes = 3000;
  {
    Transaction transaction(*database_);
    const std::string body(10000, 'x');
    for (int i = 0; i < kNotes; ++i) {
      database_->execute(base::format("insert into Notes (Id, Title, Body) values (%d, 'Note number %05d', '%s')",
                                      kNotes - i, i, body));
    }
    transaction.commit();
  }
  const auto ids = [this](const std::string& condition) {
    const Snapshot found = database_->openSnapshot("select Id from Notes where " + condition);
    std::string text;
    for (std::size_t i = 0; i < found.rowCount(); ++i) text += found.at(i, 0).toText() + ";";
    return text;
  };
  for (int i = 0; i < 40; ++i) EXPECT_EQ(ids("Title like '*number 99999*'"), "");
  EXPECT_EQ(ids("Title like '*NUMBER 00017*'"), "2983;");
  EXPECT_EQ(ids("Title like '*number 0001*' and Id < 2985"), "2984;2983;2982;2981;");
  EXPECT_EQ(ids("Title like '*number 0001*' order by Id").substr(0, 10), "2981;2982;");
  EXPECT_EQ(ids("Title like '*number 000*' and Id > 2997"), "3000;2999;2998;") << "more than fit one look-up by key";
}

TEST_F(MemoryTest, AChangeIsSeenByTheNextSelect) {
  addPeople();
  const std::string number = "0049301234567";
  EXPECT_EQ(contactOf(number), "");
  database_->execute("update People set Tel_String = '" + number + "' where RecordID = 12");
  EXPECT_EQ(contactOf(number), "Person 12;");
  askOften();
  EXPECT_EQ(contactOf(number), "Person 12;");
  database_->execute("delete from People where RecordID = 12");
  EXPECT_EQ(contactOf(number), "");
}

TEST_F(MemoryTest, AChangeByAnotherCopyIsSeenByTheNextSelect) {
  const std::string all = "select [number] & ' ' as n from Numbers";
  const std::string one = "select * from Numbers where [number] = '%s'";
  const auto other = openDatabase(file_, OpenMode::ReadWrite);
  EXPECT_EQ(database_->openSnapshot(all).rowCount(), 0U);
  for (int i = 1; i < 20; ++i) {
    other->execute(base::format("insert into Numbers ([number]) values ('%d')", i));
    seeOthers();
    EXPECT_EQ(database_->openSnapshot(all).rowCount(), static_cast<std::size_t>(i));
    EXPECT_EQ(database_->openSnapshot(base::format(one, std::to_string(i))).rowCount(), 1U);
    EXPECT_EQ(database_->openSnapshot(base::format(one, std::to_string(i + 1))).rowCount(), 0U);
  }
  other->execute("delete from Numbers");
  seeOthers();
  EXPECT_TRUE(database_->openSnapshot(all).empty());
}

TEST_F(MemoryTest, WithinAReadViewTheRowsOfItsStartServe) {
  const std::string all = "select * from Numbers";
  EXPECT_TRUE(database_->openSnapshot(all).empty());
  const auto other = openDatabase(file_, OpenMode::ReadWrite);
  {
    const ReadView view(*database_);
    other->execute("insert into Numbers ([number]) values ('1')");
    EXPECT_TRUE(database_->openSnapshot(all).empty());
    database_->execute("insert into Numbers ([number]) values ('2')");
    EXPECT_EQ(database_->openSnapshot(all).rowCount(), 2U) << "an own change is seen at once";
  }
  seeOthers();
  EXPECT_EQ(database_->openSnapshot(all).rowCount(), 2U);
}

TEST_F(MemoryTest, WhatIsUndoneIsForgotten) {
  const std::string all = "select * from Numbers";
  {
    const Transaction transaction(*database_);
    database_->execute("insert into Numbers ([number]) values ('1')");
    EXPECT_EQ(database_->openSnapshot(all).rowCount(), 1U);
  }
  EXPECT_TRUE(database_->openSnapshot(all).empty());
}

TEST_F(MemoryTest, ANewColumnIsThereAtOnce) {
  database_->execute("insert into Numbers ([number]) values ('1')");
  EXPECT_EQ(database_->openSnapshot("select * from Numbers").columns().size(), 1U);
  database_->execute("ALTER table Numbers ADD COLUMN Folder TEXT");
  EXPECT_EQ(database_->openSnapshot("select * from Numbers").columns().size(), 2U);
  EXPECT_TRUE(database_->openSnapshot("select Folder from Numbers").at(0, 0).isNull());
}

TEST_F(MemoryTest, FaultsAreThoseOfTheFile) {
  database_->execute("insert into Numbers ([number]) values ('x')");
  EXPECT_EQ(errorOf([this] { database_->openSnapshot("select * from Nowhere"); }), 3078);
  EXPECT_EQ(errorOf([this] { database_->openSnapshot("select colour from Numbers"); }), 3061);
  EXPECT_EQ(errorOf([this] { database_->openSnapshot("select [number] * 2 from Numbers"); }), 3421);
  EXPECT_EQ(errorOf([this] { database_->openSnapshot("select * frm Numbers"); }), 3075);
  EXPECT_EQ(errorOf([this] { database_->openSnapshot("delete from Numbers"); }), 3065);
}

TEST_F(MemoryTest, ASnapshotIsSearchedByCriteria) {
  {
    Transaction transaction(*database_);
    for (int i = 0; i < 1000; ++i) {
      database_->execute(base::format("insert into Numbers ([number]) values ('%d')", 5000 + i));
    }
    database_->execute("insert into Numbers ([number]) values ('Ana')");
    database_->execute("insert into Numbers ([number]) values (null)");
    transaction.commit();
  }
  const Snapshot snapshot = database_->openSnapshot("select [number] & ' ' as n from Numbers");
  const struct {
    const char* criteria;
    std::optional<std::size_t> row;
  } cases[] = {{"n=\"5000 \"", 0},           {"n=\"5999 \"", 999}, {"n=\"500 \"", std::nullopt},
               {"n=\"5000\"", std::nullopt}, {"N = 'ANA '", 1000}, {"n = ' '", 1001},
               {"n like '5?9? '", 90},       {"n > '5998 '", 999}, {"n = '5003 ' or n = '5002 '", 2}};
  for (const auto& each : cases) EXPECT_EQ(snapshot.findFirst(each.criteria), each.row) << each.criteria;
  EXPECT_EQ(errorOf([&] { static_cast<void>(snapshot.findFirst("colour = 1")); }), 3061);
  EXPECT_EQ(errorOf([&] { static_cast<void>(snapshot.findFirst("n = = 1")); }), 3075);
  EXPECT_EQ(Snapshot().findFirst("n = 1"), std::nullopt);
}

TEST(ContainsIndex, FindsWhatReadingFinds) {
  memory::ContainsIndex index;
  std::vector<std::string> texts;
  for (int i = 0; i < 2000; ++i) {
    texts.push_back(std::to_string(i * 104729LL % 1000003) + std::string(static_cast<std::size_t>(i % 5), 'a') +
                    std::to_string(i));
  }
  texts.emplace_back("");
  for (std::size_t i = 0; i < texts.size(); ++i) index.add(static_cast<std::int64_t>(i * 10), texts[i]);
  index.finish();
  std::vector<std::int64_t> keys;
  for (std::size_t i = 0; i < texts.size(); i += 7) {
    for (std::size_t start = 0; start < 4; ++start) {
      for (const std::size_t length : {4U, 7U, 8U, 9U, 10U, 40U}) {
        if (start + 4 > texts[i].size()) continue;
        const std::string wanted = texts[i].substr(start, length);
        std::vector<std::int64_t> expected;
        for (std::size_t t = 0; t < texts.size(); ++t) {
          if (texts[t].find(wanted) != std::string::npos) expected.push_back(static_cast<std::int64_t>(t * 10));
        }
        index.find(wanted, keys);
        ASSERT_EQ(keys, expected) << wanted;
      }
    }
  }
}

}  // namespace

}  // namespace jet::test
