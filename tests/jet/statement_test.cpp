#include "database_fixture.h"

namespace jet::test {

namespace {

class StatementTest : public DatabaseFixture {
 protected:
  StatementTest() {
    database_->createTable({.name = "Calls",
                            .fields = {{.name = "RecordID", .type = Type::Long, .autoIncrement = true},
                                       {.name = "DateTime", .type = Type::DateTime},
                                       {.name = "Extension", .type = Type::Text},
                                       {.name = "Name", .type = Type::Text},
                                       {.name = "TotalTime", .type = Type::Long},
                                       {.name = "Price", .type = Type::Double},
                                       {.name = "Hidden", .type = Type::Boolean},
                                       {.name = "Currency", .type = Type::Text},
                                       {.name = "valuta", .type = Type::Text, .generatedFrom = "Currency"}},
                            .indexes = {{{"DateTime"}}}});
    add("#1/31/2025 10:20:30#", "'201'", "'Popa'", "60", "1.5", "0", "'RON'");
    add("#2/1/2025 23:59:59#", "'202'", "'popa'", "30", "2.5", "1", "'EUR'");
    add("#2/2/2025#", "'5'", "'\xC8\x98tefan'", "0", "0", "0", "'ron'");  // Ștefan
    add("Null", "Null", "Null", "Null", "Null", "0", "Null");
    database_->createTable({.name = "Clients", .fields = {{.name = "Name"}, {.name = "Account"}}});
    database_->execute("insert into Clients (Name, Account) values ('First', 'POPA')");
  }

  void add(const char* date, const char* extension, const char* name, const char* time, const char* price,
           const char* hidden, const char* currency) {
    database_->execute(std::string("insert into Calls ([DateTime], Extension, Name, TotalTime, Price, Hidden, "
                                   "[Currency]) values (") +
                       date + ", " + extension + ", " + name + ", " + time + ", " + price + ", " + hidden + ", " +
                       currency + ")");
  }
};

TEST_F(StatementTest, ResultsCarryTheTypeOfTheirColumn) {
  const Snapshot snapshot = database_->openSnapshot(
      "select DateTime, Hidden, Price, TotalTime, Name, Max(DateTime), DateAdd('d', 1, DateTime) as x, IsNull(Name) "
      "from Calls where RecordID = 3 group by DateTime, Hidden, Price, TotalTime, Name");
  const Type types[] = {Type::DateTime, Type::Boolean,  Type::Double,   Type::Long,
                        Type::Text,     Type::DateTime, Type::DateTime, Type::Boolean};
  for (std::size_t i = 0; i < std::size(types); ++i) EXPECT_EQ(snapshot.at(0, i).type(), types[i]) << i;
}

TEST_F(StatementTest, ChangesCountTheirRowsAndConvert) {
  EXPECT_EQ(database_->execute("update Calls set hidden=5 where name='POPA'"), 2);
  EXPECT_EQ(rows("select count(*) from Calls where Hidden"), "2");
  EXPECT_EQ(database_->execute("UPDATE Calls SET Price = Price / 10000"), 4);
  EXPECT_EQ(rows("select Price from Calls where RecordID = 1"), "0.00015");
  EXPECT_EQ(database_->execute("UPDATE Calls SET [Currency]='RON' WHERE [Currency]='ROL'"), 0);
  EXPECT_EQ(database_->execute("update Calls set TotalTime = '17', Extension = 300 where RecordID = 4"), 1);
  EXPECT_EQ(rows("select TotalTime, Extension from Calls where RecordID = 4"), "17|300");
  EXPECT_EQ(database_->execute("delete from calls where totaltime=0"), 1);
  EXPECT_EQ(database_->execute("DELETE FROM Calls WHERE [DateTime] < #2/1/2025#"), 1);
}

TEST_F(StatementTest, AddedColumnIsSeenByEveryLaterStatement) {
  EXPECT_EQ(rows("select * from Clients"), "First|POPA");
  database_->execute("ALTER table clients ADD COLUMN Folder TEXT");
  EXPECT_EQ(rows("select * from Clients"), "First|POPA|");
  database_->execute("update Clients set Folder = 'f'");
  EXPECT_EQ(rows("select * from Clients"), "First|POPA|f");
  EXPECT_EQ(errorOf([&] { database_->execute("ALTER table clients ADD COLUMN folder TEXT"); }), 3380);
}

TEST_F(StatementTest, AFaultKeepsTheStatement) {
  try {
    database_->openSnapshot("select x from Calls");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.description(), "Too few parameters. Expected 1.");
    EXPECT_EQ(error.statement(), "select x from Calls");
  }
}

TEST_F(StatementTest, TextsAreMeasuredInLetters) {
  EXPECT_EQ(errorOf([&] { database_->execute("update Calls set Name = '" + std::string(256, 'x') + "'"); }), 3163);
  // 255 letters of two bytes each fit.
  std::string letters;
  for (int i = 0; i < 255; ++i) letters += "\xC8\x99";
  EXPECT_EQ(database_->execute("update Calls set Name = '" + letters + "' where RecordID = 1"), 1);
}

TEST_F(StatementTest, LongChainsOfOperatorsStayCheap) {
  std::string sum = "1";
  for (int i = 0; i < 60; ++i) sum += " + 1";
  EXPECT_EQ(rows("select " + sum + " from Clients"), "61");
}

}  // namespace

}  // namespace jet::test
