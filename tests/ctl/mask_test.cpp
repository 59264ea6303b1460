// A user who sees numbers and names in part, in an installation and in its twin where the masked digits and names are
// others: a difference tells about one that he may not see.

#include "ctl/twins.h"
#include "jet/database.h"

namespace {

using namespace twins;

// Ends a number with three other digits, which tell rows apart that were alike and make alike what was not.
std::string otherDigits(const char* table, const char* column, const char* key) {
  return std::string("update ") + table + " set [" + column + "] = Left([" + column + "], Len([" + column +
         "]) - 3) & Right('00' & ((" + key + " * 7 + 5) Mod 1000), 3) where Len([" + column + "]) > 3";
}

class Masks : public TwinTest {
 protected:
  Masks() : TwinTest("--mask-digits 3 --mask-private-names") {}
  void makeDifferent() override {
    for (Installation* each : {&whole, &twin}) {
      const auto main = jet::openDatabase(each->path("data/tallybook.mdb"), jet::OpenMode::ReadWrite);
      main->execute("update Calls set Hidden = True where RecordID Mod 5 = 0");
      main->execute("update Calls set Name = 'Known ' & (RecordID Mod 7) where RecordID Mod 3 <> 0");
      main->execute("update Contacts set [Note] = 'private: 0722 111 ' & Tel");
    }
    const auto main = jet::openDatabase(twin.path("data/tallybook.mdb"), jet::OpenMode::ReadWrite);
    main->execute(otherDigits("Calls", "DialNumber", "RecordID"));
    main->execute("update Calls set Name = 'Secret ' & RecordID where Hidden and Name <> ''");
    for (const char* column : {"Tel", "Tel_View", "Tel_String", "Note"}) {
      main->execute(otherDigits("Contacts", column, "RecordID"));
    }
  }
};

TEST_F(Masks, NoCommandTellsWhatTheyHide) {
  for (const std::string line : kLines) {
    // The new calls' names come from the contacts, as they are recorded.
    if (line == "import" || line.starts_with("sample-calls")) continue;
    expectAlike(line);
  }
  const std::string list = answers["folder show 100"];
  EXPECT_NE(list.find("XXX"), std::string::npos);
  EXPECT_NE(list.find("***"), std::string::npos);
  EXPECT_NE(list.find("Known 1"), std::string::npos);
  for (const char* refused :
       {"hide 0264123456", "export-tables tables", "forget 0264123456", "anonymise --older-than 10",
        "recalc --from 2026-01-01 --to 2026-12-31 --reprice", "alarm list", "contact edit 1 --note seen",
        "contact add --name Zed --phones \"0264 123 999\"", "user set jur --restriction \"\"",
        "group add Readers --rights view-calls"}) {
    EXPECT_NE(answers[refused].find("jur sees numbers and names in part only"), std::string::npos)
        << refused << ": " << answers[refused];
  }
}

TEST_F(Masks, HoldInConditionsAndOrder) {
  const auto number =
      jet::openDatabase(whole.path("data/tallybook.mdb"), jet::OpenMode::ReadOnly)
          ->openSnapshot(
              "select top 1 DialNumber from Calls where Len(DialNumber) = 10 and not Hidden order by RecordID")
          .at(0, 0)
          .toText();
  const std::string masked = number.substr(0, 7) + "XXX";
  expectAlike("filter set OnFilter=1 Number=" + number);
  expectAlike("folder show 100");
  EXPECT_EQ(answers["folder show 100"].find(masked), std::string::npos);
  expectAlike("filter set OnFilter=1 Number=" + masked);
  expectAlike("folder show 100");
  EXPECT_NE(answers["folder show 100"].find(masked), std::string::npos);
  const std::vector<std::string> lines = {"filter set OnFilter=1 Number= NumberPrefix=" + number.substr(0, 8),
                                          "folder show 102",
                                          "filter set NumberPrefix= OnName=1 Name=Secret",
                                          "folder show 100",
                                          "filter set OnName=0",
                                          "folder show 100 --sort=401",
                                          "folder show 100 --sort=402 --limit 20",
                                          "folder show 102 --sort=401 --limit 20"};
  for (const std::string& line : lines) {
    expectAlike(line);
  }
}

// What is stored stays, whichever user records.
TEST_F(Masks, DoNotReachWhatIsStored) {
  const std::string query = "select DialNumber, Name from Calls order by RecordID";
  const auto stored = [&] {
    std::string all;
    jet::openDatabase(whole.path("data/tallybook.mdb"), jet::OpenMode::ReadOnly)
        ->forEachRow(query, [&](const std::vector<jet::Value>& row) {
          all += row[0].toText() + ";" + row[1].toText() + "\n";
          return true;
        });
    return all;
  };
  const std::string before = stored();
  whole.answer("sample-calls 20 --out data/monitor/monitor.data --until 2026-03-31");
  EXPECT_EQ(whole.answer("import").at("out"), "imported 20\n");
  const std::string after = stored();
  EXPECT_TRUE(after.starts_with(before));
  EXPECT_EQ(after.find('X'), std::string::npos);
  EXPECT_EQ(std::ranges::count(after, '\n'), 320);
}

// The strictest of a user's own mask and his groups' holds; somebody who can take masks away stays.
TEST_F(Masks, OfUserAndGroupsTheStrictestHolds) {
  const auto admin = [&](const std::string& line) { return whole.run("--user admin " + line, "TALLYBOOK_PASSWORD="); };
  const auto digits = [&] {
    const std::string list = whole.answer("folder show 100").at("out");
    return list.find("XXXXX") != std::string::npos ? 5 : list.find("XXX") != std::string::npos ? 3 : 0;
  };
  EXPECT_EQ(admin("group add Guests --rights view-calls --mask-digits 5"), 0);
  EXPECT_EQ(admin("user set jur --groups Administrators,Guests"), 0);
  EXPECT_EQ(digits(), 5);
  EXPECT_EQ(admin("group set Guests --mask-digits 2"), 0);
  EXPECT_EQ(digits(), 3);
  EXPECT_EQ(admin("user set jur --mask-digits 0 --show-private-names"), 0);
  EXPECT_EQ(admin("group delete Guests"), 0);
  EXPECT_EQ(digits(), 0);
  EXPECT_EQ(admin("group set Administrators --mask-digits 3"), 1);
}

}  // namespace
