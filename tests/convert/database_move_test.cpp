#include "convert/database_move.h"

#include <gtest/gtest.h>

#include "convert/conversion_error.h"
#include "odd_database.h"
#include "support/test_place.h"

namespace convert {

namespace {

namespace fs = std::filesystem;

// Stops the work at a step of its progress.
class ImpatientOperator : public platform::NoOperator {
 public:
  bool progressStep(std::int64_t) override { return --left > 0; }
  int left = 1;
};

// From a folder to the server that the environment names, else to another folder.
class DatabaseMoveTest : public ::testing::Test {
 protected:
  DatabaseMoveTest() {
    makeOddDatabase(from_);
    jet::createDatabase(from_ / schema::kTariffFile);
    const auto main = jet::openDatabase(from_ / schema::kMainFile, jet::OpenMode::ReadWrite);
    jet::Transaction transaction(*main);
    for (int i = 0; i < 2500; ++i) {
      main->execute("insert into Calls (Extension, TotalTime, Price) values ('" + std::to_string(200 + i % 30) + "', " +
                    std::to_string(i) + ", 0.1)");
    }
    transaction.commit();
  }

  std::vector<MovedTable> move(const fs::path& from, const fs::path& to) {
    return moveDatabases({schema::DatabasePlace::ofTyped(from), to, place_.folder() / ""}, *operator_);
  }

  support::TestPlace place_;
  fs::path from_ = place_.folder() / "from";
  fs::path to_ = place_.onServer() ? fs::path(place_.prefix()) : place_.folder() / "to";
  platform::NoOperator nobody_;
  platform::Operator* operator_ = &nobody_;
};

}  // namespace

TEST_F(DatabaseMoveTest, ThereAndBackEveryTableIsTheSame) {
  const auto there = move(from_, to_);
  const auto place = schema::DatabasePlace::ofTyped(to_);
  expectSameDatabase(from_ / schema::kMainFile, place.file(schema::Which::Main));
  EXPECT_TRUE(place.exists(schema::Which::Phonebook)) << "one that was missing is made empty";
  {
    // Is as good as one that was made there.
    const auto main = place.open(schema::Which::Main, jet::OpenMode::ReadWrite);
    main->execute("insert into Calls (Extension) values ('999')");
    EXPECT_EQ(main->openSnapshot("select max(RecordID) from Calls").at(0, 0U).toLong(), 2501);
    main->execute("delete from Calls where Extension = '999'");
  }
  const auto back = move(to_, place_.folder() / "back");
  expectSameDatabase(from_ / schema::kMainFile, place_.folder() / "back" / schema::kMainFile);
  ASSERT_GE(back.size(), there.size());
  for (std::size_t i = 0; i < there.size(); ++i) {
    EXPECT_EQ(there[i].table, back[i].table);
    EXPECT_EQ(there[i].tally.rows, back[i].tally.rows);
    EXPECT_EQ(there[i].tally.checksum, back[i].tally.checksum) << there[i].table;
  }
}

TEST_F(DatabaseMoveTest, RefusesWhatIsThere) {
  move(from_, to_);
  EXPECT_THROW(move(from_, to_), ConversionError);
  EXPECT_THROW(move(place_.folder() / "nothing", place_.folder() / "new"), ConversionError);
  EXPECT_FALSE(fs::exists(place_.folder() / "new"));
}

TEST_F(DatabaseMoveTest, StoppedItLeavesNothingAndCanBeDoneAgain) {
  ImpatientOperator impatient;
  operator_ = &impatient;
  for (const int steps : {1, 2, 4}) {  // copying, and reading back
    impatient.left = steps;
    EXPECT_THROW(move(from_, to_), ConversionStopped);
    EXPECT_FALSE(schema::DatabasePlace::ofTyped(to_).exists(schema::Which::Main));
  }
  operator_ = &nobody_;
  EXPECT_FALSE(move(from_, to_).empty());
}

}  // namespace convert
