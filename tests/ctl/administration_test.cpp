// Serving, maintenance, users and rights through the command line, as an administrator's scripts meet them.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>

#include "support/tallyctl.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

class Administration : public ::testing::Test, protected TallyctlRun {
 protected:
  Administration() {
    run("init data --sample");
    run("setting set LiveSocket live.sock --where machine");
  }

  // What it wrote, messages first.
  std::string run(const std::string& arguments, int expected = 0, const std::string& environment = "") {
    const Result result = TallyctlRun::run(arguments, environment);
    EXPECT_EQ(result.status, expected) << arguments << '\n' << result.out << result.err;
    return result.err + result.out;
  }
  std::string as(const std::string& user, const std::string& password, const std::string& arguments, int expected) {
    return run("--user " + user + " " + arguments, expected, "TALLYBOOK_PASSWORD=" + password);
  }
};

TEST_F(Administration, ServeTakesWhatSendPlaysUntilItIsStopped) {
  run("sample-calls 30 --out calls");
  run("sample-calls 20 --seed 2 --out data/monitor/monitor.data");
  run("send calls", 1);  // no one listens
  std::thread service = start("serve --import-every 1", "served");
  for (int i = 0; i < 500 && !fs::exists(path("live.sock")); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_TRUE(contains(run("send calls"), "sent 30, recorded 30, refused 0"));
  EXPECT_TRUE(contains(run("import", 1), "Another copy"));
  const std::string holder = readFile(path("QuorvaneServerMutex"));
  EXPECT_TRUE(contains(run("status --format csv"), "Running copy,process " + holder));
  const pid_t process = std::atoi(holder.c_str());
  EXPECT_GT(process, 0);
  if (process > 0) kill(process, SIGTERM);
  service.join();
  EXPECT_EQ(readFile(path("status")), "0\n");
  EXPECT_TRUE(contains(readFile(path("served")), "Closing.")) << readFile(path("served"));
  EXPECT_TRUE(contains(run("status --format csv"), "Rows of Calls,50\n"));
}

// `journalctl -p err` shows why a service did not start. The shell gives the command its own stream's name as systemd
// does.
TEST_F(Administration, WhatFailsIsAnErrorInTheJournal) {
  constexpr const char* kAsService = "sh -c 'JOURNAL_STREAM=$(stat -Lc %d:%i /proc/self/fd/2) exec \"$@\"' sh";
  EXPECT_TRUE(contains(run("user delete nemo", 1, kAsService), "<3>tallyctl: There is no user nemo."));
  EXPECT_FALSE(contains(run("user delete nemo", 1), "<3>"));
}

// Seconds of processor time that a process has used.
double processorTime(pid_t process) {
  std::istringstream stat(readFile("/proc/" + std::to_string(process) + "/stat"));
  std::string word;
  long ticks = 0;
  constexpr int kUserTime = 14;
  constexpr int kSystemTime = 15;
  for (int field = 1; stat >> word && field <= kSystemTime; ++field) {
    if (field >= kUserTime) ticks += std::atol(word.c_str());
  }
  static_assert(kSystemTime == kUserTime + 1);
  return static_cast<double>(ticks) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

TEST_F(Administration, ServeWaitsQuietlyEndsCleanlyAndStartsAgain) {
  constexpr std::chrono::seconds kWatched{4};  // longer than from one look at the databases to the next
  for (const int signal : {SIGTERM, SIGINT}) {
    fs::remove(path("served"));
    std::thread service = start("serve", "served");
    for (int i = 0; i < 1000 && !contains(readFile(path("served")), "Serving"); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const pid_t process = std::atoi(readFile(path("QuorvaneServerMutex")).c_str());
    EXPECT_GT(process, 0) << readFile(path("served"));
    const double before = processorTime(process);
    std::this_thread::sleep_for(kWatched);
    EXPECT_LT(processorTime(process) - before, static_cast<double>(kWatched.count()) / 4);
    if (process > 0) kill(process, signal);
    service.join();
    EXPECT_EQ(readFile(path("status")), "0\n");
    const std::string all = readFile(path("served"));
    const std::string said = all.substr(std::min(all.find("Serving "), all.size()));
    EXPECT_TRUE(said.ends_with("\nClosing.\n")) << all;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 2) << all;
    EXPECT_FALSE(fs::exists(path("live.sock")));
  }
}

TEST_F(Administration, GroupsGiveTheirMembersRights) {
  run("group add Readers --rights view-calls");
  run("user add ana --groups readers", 0, "TALLYBOOK_NEW_PASSWORD=a");
  run("user add dan --groups Operators --password d");
  run("user set dan --groups 'Readers,Operators'");
  run("user set dan --groups Operators");
  EXPECT_TRUE(contains(run("user list --format csv"), "\n3,dan,,Operators,"));
  struct Case {
    const char* command;
    int ana;  // exit status
    int dan;
  };
  for (const Case& c :
       {Case{"folder show 100", 0, 0}, Case{"import", 1, 0}, Case{"hide 0264123456", 1, 0},
        Case{"recalc --from 2026-11-01 --to 2026-11-02 --reprice", 1, 0}, Case{"purge", 1, 0},
        Case{"reset zero-length --yes", 1, 0}, Case{"reset calls --yes", 1, 1}, Case{"user list", 1, 1},
        Case{"group set Readers --rights all", 1, 1}, Case{"log clear", 1, 1}, Case{"log filter show", 1, 1}}) {
    as("ana", "a", c.command, c.ana);
    as("dan", "d", c.command, c.dan);
  }
  run("group set Readers --rights '6;1;9;1'");
  as("ana", "a", "user list", 0);
  run("group set Readers --rights '6;1;9'", 2);
  run("user set ana --flags disabled");
  as("ana", "a", "folder show 100", 1);
  run("user delete dan");
  as("dan", "d", "folder show 100", 1);
  run("user delete admin", 1);  // the user who is logged in stays
  for (const char* lockout : {"user set admin --flags disabled", "user set admin --groups ''",
                              "user set admin --groups Operators", "group set Administrators --rights view-calls"}) {
    EXPECT_TRUE(contains(run(lockout, 1), "nobody could change users and settings")) << lockout;
  }
  EXPECT_TRUE(contains(run("group add READERS --rights all", 1), "already"));
  run("group delete Readers");
  EXPECT_TRUE(contains(run("log show"), "ana"));
  run("log clear");
  EXPECT_FALSE(contains(run("log show"), "ana"));
  EXPECT_TRUE(contains(run("user list --format csv"), "\n2,ana,,,disabled,"));
}

// What the start of a program does by itself is no way round a right either.
TEST_F(Administration, WhoMayNotChangeCallsChangesNoneByStarting) {
  run("sample-calls 20 --out data/monitor/monitor.data");
  run("import");
  run("setting set Sterge 1 --section Calls --where database --type int");
  run("sample-calls 20 --seed 2 --out data/monitor/monitor.data");
  run("group add Readers --rights view-calls");
  run("user add ana --groups Readers --password a");
  for (const char* command : {"serve", "import"}) {
    const std::string refusal = as("ana", "a", command, 1);
    EXPECT_TRUE(contains(refusal, "ana may not do this: the right change-calls is missing.")) << refusal;
  }
  EXPECT_TRUE(contains(run("status --format csv"), "Rows of Calls,20\n"));
  EXPECT_TRUE(fs::exists(path("data/monitor/monitor.data")));
}

// Why no one got in decides what helps.
TEST_F(Administration, AFailedStartSaysWhatToDoNext) {
  run("group add Readers --rights view-calls");
  run("user add ana --groups Readers --password a");
  EXPECT_TRUE(contains(as("ana", "wrong", "folder list", 1), "Nobody was logged in. Give --user NAME"));
  run("user set ana --flags disabled");
  EXPECT_TRUE(contains(as("ana", "a", "folder list", 1), "ana is not let in. Let an administrator"));
  SKIP_ON_SERVER(*this);
  const std::string folder = path("data").string();
  std::string store = readFile(path("machine.ini"));
  const std::string closed = "PathDatabase=str:" + folder + "/\n";
  ASSERT_TRUE(contains(store, closed)) << store;
  writeFile(path("machine.ini"), store.erase(store.find(closed) + closed.size() - 2, 1));
  EXPECT_TRUE(contains(
      run("folder list", 1),
      "must end with a slash. Mend it with: tallyctl setting set PathDatabase '" + folder + "/' --where machine"));
  run("setting set PathDatabase /nowhere/");
  EXPECT_TRUE(contains(run("folder list", 1), "Point setting PathDatabase to their folder"));
}

TEST_F(Administration, ARestrictionIsTriedBeforeItIsSavedAndHolds) {
  run("sample-calls 200 --out data/monitor/monitor.data");
  run("import");
  run("user add ana --groups Operators --password a --restriction \"Trunk = 5\"");
  EXPECT_TRUE(contains(run("user set ana --restriction \"Nonsense = 5\"", 1), "Expected 1"));
  EXPECT_TRUE(contains(run("user set ana --restriction \"1=1 order by Trunk\"", 1), "was not saved"));
  const std::string all = run("folder show 100 --format csv --limit 1000");
  const std::string some = as("ana", "a", "folder show 100 --format csv --limit 1000", 0);
  EXPECT_LT(some.size(), all.size());
  EXPECT_GT(std::count(some.begin(), some.end(), '\n'), 1);
}

TEST_F(Administration, PasswordsChangeFromTheEnvironmentToo) {
  run("user add ana --groups Operators --password old");
  EXPECT_TRUE(contains(run("--user ana passwd", 1, "TALLYBOOK_PASSWORD=old"), "TALLYBOOK_NEW_PASSWORD"));
  run("--user ana passwd", 0, "TALLYBOOK_PASSWORD=old TALLYBOOK_NEW_PASSWORD=new");
  as("ana", "old", "folder show 100", 1);
  as("ana", "new", "folder show 100", 0);
  // A password that must be changed first is changed by the same command.
  run("user set ana --flags must-change");
  const std::string changed = run("--user ana passwd", 0, "TALLYBOOK_PASSWORD=new TALLYBOOK_NEW_PASSWORD=newer");
  EXPECT_TRUE(contains(changed, "The password of ana is changed.")) << changed;
  EXPECT_FALSE(contains(as("ana", "newer", "folder show 100", 0), "must be changed"));
  // The administrator logs in automatically and goes on to.
  run("passwd", 0, "TALLYBOOK_NEW_PASSWORD=secret");
  run("user list");
}

TEST_F(Administration, TheLogFilterKeepsItsDocumentedForm) {
  run("log filter set LogFilt_Enabled=1 logfilt_security=1 LogFilt_Err=1 LogFilt_UserEnabled=1 LogFilt_User=adm");
  EXPECT_EQ(run("log filter condition"),
            "The password must be changed.\n( Level = 2  OR  Level = 9 ) AND  UserName = \"adm\" \n");
  run("log filter set LogFilt_IntervalStart=2026-03-01");
  EXPECT_EQ(run("setting get LogFilt_IntervalStart --where machine"), "03/01/2026\n");
  run("log filter set LogFilt_Enabled=yes", 2);
  run("log filter set LogFilt_IntervalStart=31/31/2026", 2);
  run("log filter set LogFilt_IntervalStart=3/1/2026x", 2);
  run("log filter set LogFilt_Login=1 LogFilt_Moon=1", 2);  // none of them
  EXPECT_FALSE(contains(run("log filter condition"), "Level = 1"));
  run("log filter clear");
  EXPECT_TRUE(contains(run("log filter condition"), "\n1=1\n"));
}

TEST_F(Administration, ResetsAskAndHiddenNumbersComeBack) {
  run("sample-calls 50 --out data/monitor/monitor.data");
  run("import");
  EXPECT_TRUE(contains(run("reset calls", 1), "--yes"));
  EXPECT_TRUE(contains(run("recalc --from 2026-01-01 --to 2026-12-31 --department --names"), "of 50 calls"));
  run("recalc --from 2026-01-01 --to 2026-12-31", 2);
  run("recalc --from 2026-12-31 --to 2026-01-01 --reprice", 2);
  EXPECT_TRUE(contains(run("purge"), "All calls are kept"));
  run("setting set Sterge 1 --section Calls --where database --type int");
  EXPECT_TRUE(contains(run("purge"), "deleted 50"));
  run("reset contacts --yes");
  EXPECT_TRUE(contains(run("status --format csv"), "Rows of Contacts,0\n"));
}

}  // namespace
