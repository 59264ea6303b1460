// An old installation is carried over and worked with, through the program as its users meet it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/tallyctl.h"
#include "support/test_place.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

class Moving : public ::testing::Test, protected TallyctlRun {
 protected:
  void SetUp() override { SKIP_ON_SERVER(TestPlace()); }
  // What it wrote to both streams.
  std::string run(const std::string& arguments, int expected = 0) {
    const Result result = TallyctlRun::run(arguments, "TALLYBOOK_PASSWORD=");
    EXPECT_EQ(result.status, expected) << arguments << '\n' << result.out << result.err;
    return result.out + result.err;
  }

  void makeOldFolder(const char* main) {
    const fs::path files = fs::path(TALLYBOOK_SOURCE_DIR) / "tests/data/jet-files";
    for (const auto& entry : fs::directory_iterator(folder_)) fs::remove_all(entry);
    fs::create_directories(folder_ / "old");
    fs::copy_file(files / main / "tallybook.mdb", folder_ / "old/tallybook.mdb");
    fs::copy_file(files / "tariffs.mdb", folder_ / "old/tariffs.mdb");
    fs::copy_file(files / "phonebook.mdb", folder_ / "old/phonebook.mdb");
  }

  const fs::path folder_ = path("");
};

TEST_F(Moving, AConvertedInstallationWorks) {
  struct Case {
    const char* main;
    const char* calls;
    const char* after;
  };
  for (const Case& c : {Case{"text-extension", "Rows of Calls,309\n", "Rows of Calls,329\n"},
                        Case{"long-extension", "Rows of Calls,174\n", "Rows of Calls,194\n"}}) {
    makeOldFolder(c.main);
    const std::string report = run("convert old new --use");
    EXPECT_TRUE(contains(report, "Everything was carried over")) << report;
    EXPECT_TRUE(contains(report, "setting set PathMonitor")) << report;
    EXPECT_TRUE(fs::exists(folder_ / "new/conversion-report.txt"));
    run("setting set PathMonitor " + (folder_ / "monitor/").string() + " --where machine");
    run("setting set CountryCode 40 --where machine");
    run("setting set AreaCode 21 --where machine");
    fs::create_directories(folder_ / "monitor");

    // The old user, with the empty password whose digest is 0, and the rights of its old group. The first start
    // upgrades an earlier version.
    const std::string status = run("--user admin status --format csv");
    EXPECT_TRUE(contains(status, "Database version,1\n")) << status;
    EXPECT_TRUE(contains(status, c.calls)) << status;
    EXPECT_FALSE(contains(run("--user maria status", 1), "Rows of Calls")) << "another password than the empty one";

    EXPECT_TRUE(contains(run("--user admin folder show 100 --format csv"), "Popescu Ștefan"));
    run("--user admin trunk set 1 --label centrala --provider 1 --profile Standard");
    const std::string price = run("--user admin price 0721222333 --at '2026-11-24 10:00' --duration 95 --trunk 1");
    EXPECT_TRUE(contains(price, "Price: ")) << price;
    EXPECT_FALSE(contains(price, "Price: 0.0000")) << price;
    run("--user admin sample-calls 20 --out monitor/monitor.data");
    const std::string imported = run("--user admin import");
    EXPECT_TRUE(contains(imported, "imported 20\n")) << imported;
    // The earlier version still counted in ROL, which its first maintaining start converts.
    EXPECT_EQ(contains(imported, "convertit in RON"), std::string(c.main) == "long-extension");
    EXPECT_TRUE(contains(run("--user admin status --format csv"), c.after));
  }
}

TEST_F(Moving, AnOldFolderIsMetWithTheCommandThatCarriesItOver) {
  makeOldFolder("text-extension");
  run("setting set PathDatabase " + (folder_ / "old/").string() + " --where machine");
  for (const char* command : {"status", "import", "folder list"}) {
    EXPECT_TRUE(contains(run(command, 1), "tallyctl convert '" + (folder_ / "old/").string() + "' NEWDIR --use"))
        << command;
  }
  // No one can log in to the old one, so nothing is asked.
  run("convert old new --use");
  run("--user admin status");
  // From now on the store belongs to those who administer.
  EXPECT_TRUE(contains(run("--user maria convert old another --use", 1), "--user")) << "nobody is logged in";
  EXPECT_FALSE(fs::exists(folder_ / "another"));
  run("--user admin convert old another --use");
}

TEST_F(Moving, WhatWasLostIsStatus1) {
  makeOldFolder("text-extension");
  fs::resize_file(folder_ / "old/tallybook.mdb", fs::file_size(folder_ / "old/tallybook.mdb") / 2);
  run("convert old new", 1);
  EXPECT_FALSE(fs::exists(folder_ / "new"));
  EXPECT_TRUE(contains(run("convert old new --salvage", 1), "LOST"));
  EXPECT_TRUE(contains(readFile(folder_ / "new/conversion-report.txt"), "LOST"));
  run("convert old", 2);
  run("convert old newer --codepage many", 2);
}

TEST_F(Moving, TablesGoOutAndComeBack) {
  makeOldFolder("long-extension");
  run("convert old new --use");
  for (const char* format : {"csv", "json"}) {
    const std::string name = format;
    run("--user admin export-tables tables-" + name + " --format " + name);
    run("import-tables tables-" + name + " from-" + name);
    EXPECT_TRUE(fs::exists(folder_ / ("from-" + name) / "phonebook.mdb"));
  }
  run("--user maria export-tables mine", 1);
  run("import-tables nowhere other", 1);
  run("--user admin import-tables tables-csv from-csv", 1);  // never over something
}

TEST_F(Moving, DatabasesMoveToAnotherPlace) {
  makeOldFolder("long-extension");
  run("convert old new --use");
  run("--user maria move-database new other", 1);  // who may not see everything takes nothing along
  EXPECT_FALSE(fs::exists(folder_ / "other"));
  const std::string moved = run("--user admin move-database new other --use");
  EXPECT_TRUE(contains(moved, "is the same")) << moved;
  EXPECT_TRUE(contains(run("--user admin setting get PathDatabase"), (folder_ / "other/").string()));
  EXPECT_TRUE(contains(run("--user admin status --format csv"), "Rows of Calls,174\n"));
  run("--user admin move-database new other", 1);  // never over something
  run("--user admin move-database new third --role desk", 2);
}

}  // namespace
