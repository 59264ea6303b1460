// Copies of a database that is in use.

#include <fstream>

#include "database_fixture.h"
#include "jet/error.h"

namespace jet::test {

class FileCopyTest : public DatabaseFixture {
 protected:
  FileCopyTest() : DatabaseFixture(Where::InAFolder) {
    TableDef table;
    table.name = "Calls";
    table.fields = {{.name = "id", .type = Type::Long}, {.name = "name", .type = Type::Text, .size = 50}};
    database_->createTable(table);
    Transaction transaction(*database_);
    for (int i = 0; i < kRows; ++i) {
      database_->execute("insert into Calls (id, name) values (" + std::to_string(i) + ", '" + std::string(40, 'x') +
                         "')");
    }
    transaction.commit();
    copy_ = place_.folder() / "copy.mdb";
  }

  static constexpr int kRows = 40'000;  // more pages than are copied in one step
  std::filesystem::path copy_;
};

TEST_F(FileCopyTest, ItIsWholeByItselfAndKeepsTheOrderOfTheTable) {
  EXPECT_EQ(database_->copyTo(copy_), (std::vector<TableRows>{{"Calls", kRows}}));
  EXPECT_FALSE(std::filesystem::exists(copy_.string() + "-wal"));
  const auto copy = openDatabase(copy_, OpenMode::ReadOnly);
  EXPECT_TRUE(copy->damage().empty());
  EXPECT_EQ(rows(*copy, "SELECT * FROM Calls"), rows("SELECT * FROM Calls"));
}

// What another copy of the program commits meanwhile neither gets in nor makes the work begin again.
TEST_F(FileCopyTest, ItIsOfOneMoment) {
  const auto other = openDatabase(file_, OpenMode::ReadWrite);
  int steps = 0;
  database_->watch([&] {
    other->execute("insert into Calls (id, name) values (" + std::to_string(kRows + ++steps) + ", 'late')");
    return true;
  });
  EXPECT_EQ(database_->copyTo(copy_), (std::vector<TableRows>{{"Calls", kRows}}));
  database_->watch({});
  ASSERT_GT(steps, 1);
  EXPECT_EQ(rows(*openDatabase(copy_, OpenMode::ReadOnly), "SELECT Count(*) FROM Calls"), std::to_string(kRows));
  EXPECT_EQ(rows("SELECT Count(*) FROM Calls"), std::to_string(kRows + steps));
}

TEST_F(FileCopyTest, AStoppedOneLeavesNothing) {
  database_->watch([] { return false; });
  EXPECT_EQ(errorOf([&] { database_->copyTo(copy_); }), Error::kCanceled);
  EXPECT_FALSE(std::filesystem::exists(copy_));
  database_->watch({});
  database_->execute("insert into Calls (id, name) values (-1, 'after')");
}

TEST_F(FileCopyTest, NothingIsReplaced) {
  std::ofstream(copy_) << "a file of somebody's";
  EXPECT_EQ(errorOf([&] { database_->copyTo(copy_); }), 3204);
  EXPECT_EQ(std::filesystem::file_size(copy_), 20U);
  EXPECT_EQ(errorOf([&] { database_->copyTo(place_.folder() / "nowhere" / "copy.mdb"); }), 3051);
}

TEST_F(FileCopyTest, DamageIsFound) {
  EXPECT_TRUE(database_->damage().empty());
  database_.reset();
  {
    std::fstream file(file_, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(20 * 4096);
    file << std::string(4096, '\1');
  }
  EXPECT_FALSE(openDatabase(file_, OpenMode::ReadOnly)->damage().empty());
}

}  // namespace jet::test
