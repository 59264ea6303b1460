// The engine over a driver that is no SQL database: recordsets, windows, answers from memory and transactions ask
// nothing of a driver but what engine/driver.h says.

#include "fake_driver.h"

#include <gtest/gtest.h>

#include "jet/engine/engine.h"

namespace jet::test {

namespace {

// A driver whose tables other connections change, too.
class SharedTables final : public FakeDriver {
 public:
  void lookForChanges(engine::ChangeListener& listener, bool) override {
    for (const std::string& table : changed_) listener.tableChanged(table);
    changed_.clear();
  }
  // As another connection changes a cell.
  void changeByOthers(const std::string& table, RowKey key, std::size_t field, Value value) {
    tableOf(*definition(table)).rows.at(key)[field] = std::move(value);
    changed_.push_back(table);
  }

 private:
  std::vector<std::string> changed_;
};

class EngineTest : public ::testing::Test {
 protected:
  EngineTest() {
    auto driver = std::make_unique<SharedTables>();
    driver_ = driver.get();
    engine_ = std::make_unique<engine::Engine>(std::move(driver), "nowhere");
    engine_->createTable({.name = "Calls",
                          .fields = {{.name = "id", .type = Type::Long, .autoIncrement = true},
                                     {.name = "name", .type = Type::Text},
                                     {.name = "price", .type = Type::Double},
                                     {.name = "at", .type = Type::DateTime}}});
    for (const char* row : {"'Popa', 1.5, #1/2/2025#", "'stan', 3, #1/3/2025#", "'Ștefan', 2, null", "null, 4, null"}) {
      engine_->execute("insert into Calls (name, price, at) values (" + std::string(row) + ")");
    }
  }

  static std::string shown(const Snapshot& snapshot) {
    std::string text;
    for (std::size_t row = 0; row < snapshot.rowCount(); ++row) text += snapshot.at(row, 0).toText() + ";";
    return text;
  }

  SharedTables* driver_;
  std::unique_ptr<engine::Engine> engine_;
};

TEST_F(EngineTest, SelectsRunWhereverTheyAreAsked) {
  const std::pair<const char*, const char*> cases[] = {
      {"select name from Calls where name like 's*' order by id", "stan;"},
      {"select name from Calls where name = 'ȘTEFAN'", "Ștefan;"},
      {"select id from Calls order by name desc", "3;2;1;4;"},
      {"select id from Calls where price * 2 > 3 and at is null", "3;4;"},
      {"select top 2 id from Calls order by price", "1;3;"},
      {"select distinct at from Calls where at is not null", "1/2/2025;1/3/2025;"},
  };
  for (const auto& [sql, rows] : cases) {
    EXPECT_EQ(shown(engine_->openSnapshot(sql)), rows) << sql;
    EXPECT_EQ(shown(engine_->openWindow(sql)->rows(0, 10)), rows) << sql;
    std::string streamed;
    engine_->forEachRow(sql, [&](const std::vector<Value>& row) {
      streamed += row[0].toText() + ";";
      return true;
    });
    EXPECT_EQ(streamed, rows) << sql;
  }
}

TEST_F(EngineTest, RecordsetsMoveFindAndChange) {
  const auto calls = engine_->openRecordset("select * from Calls order by price desc");
  calls->moveFirst();
  EXPECT_EQ(calls->get("id"), Value(4));
  calls->findFirst("name like 'p*'");
  EXPECT_EQ(calls->absolutePosition(), 3);
  calls->movePrevious();
  calls->edit();
  calls->set("name", "Ștefania");
  calls->update();
  calls->addNew();
  calls->set("price", 9);
  calls->update();
  EXPECT_EQ(calls->lastAddedKey(), 5);
  calls->findNext("price < 2");
  calls->remove();
  EXPECT_EQ(engine_->execute("delete from Calls where price > 8"), 1);
  EXPECT_EQ(shown(engine_->openSnapshot("select name from Calls order by name")), ";stan;Ștefania;");
}

TEST_F(EngineTest, WindowsReachAnyPlace) {
  {
    Transaction transaction(*engine_);
    for (int i = 0; i < 3000; ++i)
      engine_->execute("insert into Calls (name, price) values ('n', " + std::to_string(i) + ")");
    transaction.commit();
  }
  const auto window = engine_->openWindow("select price from Calls where name = 'n' order by price desc");
  EXPECT_EQ(window->rowCount(), 3000);
  EXPECT_EQ(shown(window->rows(1500, 2)), "1499;1498;");
  EXPECT_EQ(shown(window->rows(1403, 2)), "1596;1595;");
  EXPECT_EQ(shown(window->rows(2998, 5)), "1;0;");
  EXPECT_EQ(window->find("price = 7"), 2992);
}

TEST_F(EngineTest, TransactionsNestAndChangesByOthersAreSeen) {
  const std::string sql = "select price from Calls where name = 'stan'";
  EXPECT_EQ(shown(engine_->openSnapshot(sql)), "3;");
  driver_->changeByOthers("Calls", 2, 2, Value(7.0));
  EXPECT_EQ(shown(engine_->openSnapshot(sql)), "7;");
  {
    const Transaction undone(*engine_);
    engine_->execute("update Calls set price = 0");
    {
      Transaction inner(*engine_);
      engine_->execute("delete from Calls");
    }
    EXPECT_EQ(shown(engine_->openSnapshot(sql)), "0;");
  }
  EXPECT_EQ(shown(engine_->openSnapshot(sql)), "7;");
  EXPECT_THROW(engine_->openSnapshot("select nme from Calls"), Error);
}

}  // namespace

}  // namespace jet::test
