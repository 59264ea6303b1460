// Backups and what is made from them.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "server/backup.h"
#include "support/tallyctl.h"

namespace {

namespace fs = std::filesystem;
using support::TallyctlRun;

// The one backup in folder "kept".
fs::path madeIn(const TallyctlRun& place) {
  for (const auto& entry : fs::directory_iterator(place.path("kept"))) return entry.path();
  ADD_FAILURE() << "no backup";
  return {};
}

void overwriteByte(const fs::path& file, std::streamoff at) {
  std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
  bytes.seekg(at);
  const char old = static_cast<char>(bytes.get());
  bytes.seekp(at);
  bytes.put(static_cast<char>(old ^ 0x55));
}

// Operators in the group of the service write what its administrator makes from a shell with the usual mask.
TEST(BackupTest, WhatIsMadeInASharedFolderIsTheGroups) {
  TallyctlRun place;
  SKIP_ON_SERVER(place);
  fs::create_directory(place.path("shared"));
  ASSERT_EQ(chmod(place.path("shared").c_str(), 02770), 0);
  place.succeed("init shared/data --sample");
  fs::create_directory(place.path("kept"));
  place.succeed("backup kept");
  place.succeed("restore '" + madeIn(place).string() + "' shared/again");
  for (const char* made : {"shared/data", "shared/again"}) {
    const fs::path folder = place.path(made);
    for (const fs::path& file : {folder, folder / "tallybook.mdb", folder / "template.html", folder / "monitor"}) {
      EXPECT_NE(fs::status(file).permissions() & fs::perms::group_write, fs::perms::none) << file;
      EXPECT_EQ(fs::status(file).permissions() & fs::perms::others_all, fs::perms::none) << file;
    }
  }
}

TEST(BackupTest, ARestoredOneHasEqualRows) {
  TallyctlRun place;
  SKIP_ON_SERVER(place);
  place.makeSample(200);
  fs::create_directory(place.path("kept"));
  place.succeed("backup kept");
  const auto before = place.stored("SELECT * FROM Calls ORDER BY 1");
  const std::string restored = place.succeed("restore '" + madeIn(place).string() + "' new");
  EXPECT_NE(restored.find("tallybook.mdb"), std::string::npos);
  place.succeed("reset calls --yes");
  EXPECT_EQ(place.stored("SELECT count(*) FROM Calls").front().front(), "0");

  place.succeed("setting set PathDatabase '" + place.path("new/").string() + "' --where machine");
  fs::remove_all(place.path("data"));
  fs::rename(place.path("new"), place.path("data"));
  EXPECT_EQ(place.stored("SELECT * FROM Calls ORDER BY 1"), before);
  place.succeed("setting set PathDatabase '" + place.path("data/").string() + "' --where machine");
  place.succeed("sample-calls 5 --out data/monitor/monitor.data --seed 9");
  place.succeed("import");
}

// Calls are imported while the backup is made: it holds those of one moment, and the import loses none.
TEST(BackupTest, AWriterGoesOn) {
  TallyctlRun place;
  place.makeSample(200);
  place.succeed("sample-calls 3000 --out data/monitor/monitor.data --seed 6");
  fs::create_directory(place.path("kept"));
  std::thread writer = place.start("import", "imported");
  for (int i = 0; i < 3; ++i) {
    place.succeed("backup kept");
    const fs::path made = madeIn(place);
    EXPECT_NO_THROW(server::checkBackup(made));
    fs::remove_all(made);
  }
  writer.join();
  EXPECT_EQ(support::readFile(place.path("status")), "0\n") << support::readFile(place.path("imported"));
  EXPECT_EQ(place.stored("SELECT count(*) FROM Calls").front().front(), "3200");
}

TEST(BackupTest, ADamagedOneIsRefused) {
  TallyctlRun place;
  SKIP_ON_SERVER(place);
  place.makeSample(100);
  fs::create_directory(place.path("kept"));
  place.succeed("backup kept");
  const fs::path whole = madeIn(place);
  struct Case {
    const char* what;
    void (*damage)(const fs::path& backup);
  };
  for (const Case& c :
       {Case{"a byte", [](const fs::path& backup) { overwriteByte(backup / "tallybook.mdb", 9000); }},
        Case{"a tail", [](const fs::path& backup) { fs::resize_file(backup / "tariffs.mdb", 4096); }},
        Case{"a file", [](const fs::path& backup) { fs::remove(backup / "phonebook.mdb"); }},
        Case{"the list", [](const fs::path& backup) { fs::remove(backup / "backup.json"); }},
        Case{"a torn list", [](const fs::path& backup) { fs::resize_file(backup / "backup.json", 90); }},
        Case{"an empty list", [](const fs::path& backup) {
               std::ofstream(backup / "backup.json") << R"({"made":"2026-11-25 10:00:00","files":[]})";
             }}}) {
    const fs::path damaged = place.path("damaged");
    fs::remove_all(damaged);
    fs::copy(whole, damaged);
    c.damage(damaged);
    const TallyctlRun::Result result = place.run("restore damaged new");
    EXPECT_EQ(result.status, 1) << c.what;
    EXPECT_NE(result.err.find("is no whole backup"), std::string::npos) << c.what << result.err;
    EXPECT_FALSE(fs::exists(place.path("new"))) << c.what;
  }
  // Nothing is ever restored over what is there.
  EXPECT_EQ(place.run("restore '" + whole.string() + "' data").status, 1);
}

TEST(BackupTest, BeforeMuchIsDeletedTheLastOneIsNamed) {
  TallyctlRun place;
  place.makeSample(20);
  EXPECT_NE(place.run("reset calls").err.find("No backup was made yet"), std::string::npos);
  fs::create_directory(place.path("kept"));
  place.succeed("backup kept");
  const std::string named = "The last backup was made on ";
  EXPECT_NE(place.run("reset contacts").err.find(named), std::string::npos);
  EXPECT_NE(place.succeed("anonymise --older-than 30000").find(named), std::string::npos);
  // Retention of more than a day's calls, after the setting was changed.
  place.succeed("sample-calls 50 --out data/monitor/monitor.data --seed 7 --days 20 --until 2020-03-31");
  place.succeed("import");
  place.succeed("setting set Sterge 365 --section Calls");
  const TallyctlRun::Result purged = place.run("purge");
  EXPECT_NE(purged.err.find(named), std::string::npos) << purged.err;
  EXPECT_NE(purged.out.find("deleted 50"), std::string::npos) << purged.out;
  EXPECT_EQ(place.run("purge").err.find(named), std::string::npos);
  EXPECT_NE(place.succeed("reset calls --yes").find(named), std::string::npos);
}

TEST(BackupTest, ItNeedsItsFolderAndAllCalls) {
  TallyctlRun place;
  place.makeSample(5);
  EXPECT_NE(place.run("backup nowhere").err.find("There is no folder nowhere"), std::string::npos);
  EXPECT_EQ(place.run("backup . --keep 0").status, 2);
}

TEST(BackupTest, OldOnesAreThinned) {
  struct Case {
    const char* what;
    std::size_t keep;
    std::vector<std::string> names;  // newest first
    std::vector<std::string> deleted;
  };
  const auto day = [](const char* date) { return std::string("tallybook-") + date + "-023000"; };
  for (const Case& c :
       {Case{"no more than are kept", 3, {day("20261125"), day("20261124")}, {}},
        Case{"the newest of a month stays",
             2,
             {day("20261125"), day("20261124"), day("20261123"), day("20261031"), day("20261030")},
             {day("20261123"), day("20261030")}},
        Case{"of a day before the newest one stays, of the newest all",
             2,
             {day("20261125"), "tallybook-20261125-010000", day("20261124"), "tallybook-20261124-010000"},
             {"tallybook-20261124-010000"}},
        Case{"days without a backup do not count", 2, {day("20261125"), day("20261101")}, {}},
        Case{"a year of months",
             1,
             {day("20261201"), day("20261101"), day("20261001"), day("20260901"), day("20260801"), day("20260701"),
              day("20260601"), day("20260501"), day("20260401"), day("20260301"), day("20260201"), day("20260101"),
              day("20251201")},
             {day("20251201")}},
        Case{"what is none is left alone",
             1,
             {day("20261125"), "tallybook-old", "tallybook-20261399-000000x", "notes"},
             {}}}) {
    EXPECT_EQ(server::backupsToDelete(c.names, c.keep), c.deleted) << c.what;
    EXPECT_EQ(server::backupsToDelete({c.names.rbegin(), c.names.rend()}, c.keep), c.deleted) << c.what;
  }
}

}  // namespace
