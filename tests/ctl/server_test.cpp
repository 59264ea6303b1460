// Databases on a server: the roles that work on them, and old installations that are carried over to one.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

#include "support/tallyctl.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

class OnServer : public ::testing::Test, protected TallyctlRun {
 protected:
  void SetUp() override {
    if (!onServer()) GTEST_SKIP() << "about a server";
    administrator_ = std::make_unique<OtherProgram>(place().address());
  }
  void TearDown() override {
    for (const std::string& role : roles_) {
      admin("DROP OWNED BY \"" + role + "\"; DROP ROLE \"" + role + "\"");
    }
  }

  // A role of that name that no other test has.
  std::string role(const char* name, const std::string& more) {
    roles_.push_back("t" + std::to_string(getpid()) + name);
    administrator_->run("CREATE ROLE \"" + roles_.back() + "\" " + more);
    return roles_.back();
  }
  // Tests beside this one change the rights to the schema that all share: the server then refuses one of the two.
  void admin(const std::string& sql) {
    constexpr int kTries = 200;
    for (int i = 1;; ++i) {
      try {
        administrator_->run(sql);
        return;
      } catch (const std::runtime_error&) {
        if (i == kTries) throw;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
    }
  }

  // The first value of a statement on the calls.
  std::string ask(const std::string& sql) {
    return administrator_->run("SET search_path = \"" + place().schema("tallybook.mdb") + "\"; " + sql);
  }

  // The address as another user of the server.
  static std::string as(const std::string& role, std::string address) {
    const std::size_t user = address.find("//") + 2;
    return address.replace(user, address.find('@') - user, role);
  }
  // A machine store of that user's.
  std::string storeOf(const std::string& role) {
    fs::copy_file(path("machine.ini"), path(role + ".ini"));
    succeed("--store " + role + ".ini setting set PathDatabase '" + as(role, setting()) + "' --where machine");
    return "--store " + role + ".ini ";
  }

 private:
  std::unique_ptr<OtherProgram> administrator_;
  std::vector<std::string> roles_;
};

TEST_F(OnServer, ADesksRoleDoesTheWorkAndNoMore) {
  const std::string desks = role("desks", "NOLOGIN");
  const std::string ana = role("ana", "LOGIN IN ROLE \"" + desks + "\"");
  EXPECT_TRUE(contains(succeed("init data --sample --role " + desks), desks));
  const std::string store = storeOf(ana);
  succeed(store + "sample-calls 20 --out data/monitor/monitor.data --seed 5");
  EXPECT_EQ(succeed(store + "import"), "imported 20\n");
  succeed(store + "extension set 299 --description Desk");
  succeed(store + "contact add --name Zed --phones 0264123999");
  succeed(store + "setting set OrganizationTAXE 19");
  succeed(store + "recalc --from 2020-01-01 --to 2030-12-31 --reprice");
  succeed(store + "reset zero-length --yes");
  EXPECT_TRUE(contains(succeed(store + "doctor"), "database server"));

  OtherProgram program(as(ana, place().address()));
  const std::string schema = "\"" + place().schema("tallybook.mdb") + "\"";
  for (const std::string& forbidden : std::initializer_list<std::string>{
           "DROP TABLE " + schema + ".\"Calls\"", "ALTER TABLE " + schema + ".\"Calls\" ADD COLUMN x int",
           "CREATE TABLE " + schema + ".x (i int)", "TRUNCATE " + schema + ".\"Log\"",
           "DROP SCHEMA " + schema + " CASCADE", "CREATE FUNCTION jet.x() RETURNS int LANGUAGE sql AS 'SELECT 1'"}) {
    EXPECT_THROW(program.run(forbidden), std::runtime_error) << forbidden;
  }
}

TEST_F(OnServer, ARoleThatMayOnlyReadShowsAndChangesNothing) {
  makeSample(30);
  const std::string reader = role("reader", "LOGIN");
  for (const std::string& schema : {place().schema("tallybook.mdb"), place().schema("tariffs.mdb"),
                                    place().schema("phonebook.mdb"), std::string("jet")}) {
    admin("GRANT USAGE ON SCHEMA \"" + schema + "\" TO \"" + reader + "\"");
    admin("GRANT SELECT ON ALL TABLES IN SCHEMA \"" + schema + "\" TO \"" + reader + "\"");
  }
  const std::string store = storeOf(reader);
  const Result shown = run(store + "folder show 100 --format csv");
  EXPECT_EQ(shown.status, 0) << shown.err;
  EXPECT_EQ(std::count(shown.out.begin(), shown.out.end(), '\n'), 31);
  EXPECT_TRUE(contains(succeed(store + "status"), "Read-only because"));
  for (const char* change : {"import", "extension set 299 --description Desk", "setting set OrganizationTAXE 19"}) {
    const Result result = run(store + change);
    EXPECT_EQ(result.status, 1) << change;
    EXPECT_TRUE(contains(result.err, "read")) << change << result.err;
  }
}

TEST_F(OnServer, ARoleWithoutRightsIsToldSo) {
  makeSample(1);
  const Result result = run(storeOf(role("nobody", "LOGIN")) + "status");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "permission denied")) << result.err;
}

TEST_F(OnServer, AnOldInstallationIsCarriedOver) {
  const fs::path files = fs::path(TALLYBOOK_SOURCE_DIR) / "tests/data/jet-files";
  fs::create_directories(path("old"));
  fs::copy_file(files / "text-extension/tallybook.mdb", path("old/tallybook.mdb"));
  for (const char* name : {"tariffs.mdb", "phonebook.mdb"}) fs::copy_file(files / name, path("old") / name);
  const std::string report = succeed("convert old '" + setting() + "' --use");
  EXPECT_TRUE(contains(report, "Everything was carried over")) << report;
  const Result status = run("--user admin status --format csv", "TALLYBOOK_PASSWORD=");
  EXPECT_TRUE(contains(status.out, "Rows of Calls,309\n")) << status.out << status.err;
  const Result again = run("convert old '" + setting() + "'");
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(contains(again.err, "already")) << again.err;
}

// A jump in a long list begins at one of them. Those of twelve orders are kept for all desks.
TEST_F(OnServer, CommandsThatChangeManyCallsLeaveThePlacesOfLongListsKnown) {
  makeSample(1);
  ask("INSERT INTO \"Calls\" (\"DateTime\", \"Extension\", \"DialNumber\", \"TotalTime\", \"Price_Ref\") "
      "SELECT now(), (200 + i % 30)::text, i::text, i, i FROM generate_series(1, 20000) AS i");
  const std::string count = "SELECT count(*) FROM \"jet ladders\"";
  EXPECT_EQ(ask(count), "0");
  succeed("sample-calls 20 --out data/monitor/monitor.data --seed 5");
  EXPECT_EQ(succeed("import"), "imported 20\n");
  EXPECT_EQ(ask(count), "12");
  // They are those of the list that a desk opens.
  const std::string made = ask("SELECT max(made) FROM \"jet ladders\"");
  succeed("folder show 100 --sort=-401 --limit 3");
  EXPECT_EQ(ask("SELECT max(made) FROM \"jet ladders\""), made);
  EXPECT_EQ(ask(count), "12");
}

TEST_F(OnServer, TheDoctorNamesIndexesThatAreNotThere) {
  makeSample(1);
  EXPECT_TRUE(contains(succeed("doctor"), "good  indexes"));
  ask("DROP INDEX \"ix_Calls_Name_order\"");
  const std::string missing = succeed("doctor");
  EXPECT_TRUE(contains(missing, "note  indexes: some are missing") && contains(missing, "Calls.Name")) << missing;
  // As the program that makes one holds it.
  const std::string lock = "(hashtextextended('" + place().schema("tallybook.mdb") + " indexes', 0))";
  ask("SELECT pg_advisory_lock" + lock);
  const std::string made = succeed("doctor");
  EXPECT_TRUE(contains(made, "note  indexes: some are still being made")) << made;
  ask("SELECT pg_advisory_unlock" + lock);
  succeed("status");
  EXPECT_TRUE(contains(succeed("doctor"), "good  indexes"));
}

}  // namespace
