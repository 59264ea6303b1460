// The examination of an installation, with faults planted in it.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "support/tallyctl.h"

namespace {

namespace fs = std::filesystem;
using support::TallyctlRun;

void execute(const fs::path& file, const char* sql) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  sqlite3_close(database);
}

// Of the form "WRONG  part: what"; empty when nothing is wrong.
std::string wrongLines(const std::string& report) {
  std::string lines;
  std::istringstream all(report);
  for (std::string line; std::getline(all, line);) {
    if (line.starts_with("WRONG")) lines += line + "\n";
  }
  return lines;
}

TEST(DoctorTest, AnInstallationThatWorksIsGood) {
  TallyctlRun place;
  place.makeSample(20);
  const TallyctlRun::Result result = place.run("doctor");
  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_EQ(wrongLines(result.out), "");
  for (const char* line : {"good  databases: tallybook.mdb is whole", "good  change tags: all are there",
                           "note  backup: none was made yet", "note  service: no program"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << result.out;
  }
}

TEST(DoctorTest, WithoutADataFolderItSaysHowToMakeOne) {
  TallyctlRun place;
  const TallyctlRun::Result result = place.run("doctor");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.out.find("WRONG  data folder: no data folder is set"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("tallyctl init"), std::string::npos);
}

// The databases of a server that does not answer are neither there nor missing.
TEST(DoctorTest, AServerThatDoesNotAnswerIsTheOnlyFault) {
  TallyctlRun place;
  place.succeed("init data --sample");
  place.succeed("setting set PathDatabase postgresql://ana@127.0.0.1:1/office/ --where machine");
  const TallyctlRun::Result result = place.run("doctor");
  EXPECT_EQ(result.status, 1);
  const std::string wrong = wrongLines(result.out);
  EXPECT_TRUE(wrong.starts_with("WRONG  database server: it cannot be reached")) << result.out;
  EXPECT_EQ(std::count(wrong.begin(), wrong.end(), '\n'), 1) << wrong;
}

TEST(DoctorTest, PlantedFaultsAreFound) {
  SKIP_ON_SERVER(support::TestPlace());
  struct Case {
    const char* finding;
    void (*plant)(TallyctlRun& place);
  };
  for (const Case& c :
       {Case{"databases: tallybook.mdb lacks tables or columns",
             [](TallyctlRun& place) { execute(place.path("data/tallybook.mdb"), "DROP TABLE Groups"); }},
        Case{"databases: tallybook.mdb is damaged",
             [](TallyctlRun& place) {
               execute(place.path("data/tallybook.mdb"), "PRAGMA wal_checkpoint(TRUNCATE)");
               std::fstream file(place.path("data/tallybook.mdb"), std::ios::in | std::ios::out | std::ios::binary);
               file.seekp(3 * 4096);
               file << std::string(4096, 'x');
             }},
        Case{"databases: tariffs.mdb cannot be opened",
             [](TallyctlRun& place) {
               fs::remove(place.path("data/tariffs.mdb"));
               std::ofstream(place.path("data/tariffs.mdb")) << "no database at all, but a text of some length";
             }},
        Case{"change tags: some are missing: running programs do not notice each other's changes (Calls)",
             [](TallyctlRun& place) {
               execute(place.path("data/tallybook.mdb"), "DELETE FROM Touch WHERE Tag='Calls'");
             }},
        Case{"settings: OrganizationTVA of the database is not usable",
             [](TallyctlRun& place) {
               execute(place.path("data/tallybook.mdb"),
                       "INSERT INTO Config (Path, Int_Value) VALUES ('general\\OrganizationTVA', 190)");
             }},
        Case{"settings: Sterge of the database is not usable",
             [](TallyctlRun& place) {
               execute(place.path("data/tallybook.mdb"),
                       "INSERT INTO Config (Path, String_Value) VALUES ('Calls\\Sterge', '365')");
             }},
        Case{"settings: iface_Grid of the machine store is not usable",
             [](TallyctlRun& place) {
               std::ofstream(place.path("machine.ini"), std::ios::app) << "\n[general]\niface_Grid=int:7\n";
             }},
        Case{"trunks: none is defined",
             [](TallyctlRun& place) {
               execute(place.path("data/tallybook.mdb"), "DELETE FROM Config WHERE Path LIKE '%LiniiDef%'");
             }},
        Case{"monitor folder: it is not there", [](TallyctlRun& place) { fs::remove_all(place.path("data/monitor")); }},
        Case{"monitor folder: calls wait there for more than a day",
             [](TallyctlRun& place) {
               std::ofstream(place.path("data/monitor/monitor.data")) << "x";
               fs::last_write_time(place.path("data/monitor/monitor.data"),
                                   fs::file_time_type::clock::now() - std::chrono::hours(30));
             }},
        Case{"output port: there is no such device",
             [](TallyctlRun& place) { place.succeed("setting set COMOut 'COM99:baud=9600' --where machine"); }},
        Case{"output file: this user may not write it",
             [](TallyctlRun& place) { place.succeed("setting set OutFile /no/such/folder/lines --where machine"); }},
        Case{"clock: calls are stored that are later than now",
             [](TallyctlRun& place) {
               execute(place.path("data/tallybook.mdb"), "UPDATE Calls SET DateTime='2090-01-01 00:00:00'");
             }},
        Case{"data folder: it is not there", [](TallyctlRun& place) { fs::remove_all(place.path("data")); }}}) {
    TallyctlRun place;
    place.makeSample(20);
    c.plant(place);
    const TallyctlRun::Result result = place.run("doctor");
    EXPECT_EQ(result.status, 1) << c.finding;
    EXPECT_NE(wrongLines(result.out).find(std::string("WRONG  ") + c.finding), std::string::npos)
        << c.finding << '\n'
        << result.out << result.err;
  }
}

TEST(DoctorTest, TheReportTellsStrangersNothingOfTheOffice) {
  TallyctlRun place;
  place.makeSample(20);
  place.succeed("setting set OutFile '" + place.path("lines").string() + "' --where machine");
  fs::remove_all(place.path("data/monitor"));
  const TallyctlRun::Result report = place.run("doctor --report");
  EXPECT_EQ(report.status, 1);
  EXPECT_NE(report.out.find("SQLite "), std::string::npos);
  EXPECT_NE(report.out.find("WRONG  monitor folder: it is not there"), std::string::npos) << report.out;
  EXPECT_EQ(report.out.find(place.path("").string()), std::string::npos) << report.out;
  EXPECT_EQ(report.out.find("/"), std::string::npos) << report.out;
}

}  // namespace
