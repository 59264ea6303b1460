// The command line as its users meet it: the program is run on a data folder of its own.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/tallyctl.h"

namespace {

using support::readFile;
namespace fs = std::filesystem;

class Tallyctl : public ::testing::Test, protected support::TallyctlRun {
 protected:
  const fs::path folder = path("").parent_path();
};

TEST_F(Tallyctl, WrongUsageIsStatus2AndSaysWhatToTry) {
  for (const char* line : {"", "nonsense", "import --nonsense", "price 0264", "setting get PathMonitor --where moon",
                           "sample-calls many --out x", "sample-calls 5"}) {
    const Result result = run(line);
    EXPECT_EQ(result.status, 2) << line;
    EXPECT_NE(result.err.find("Try: tallyctl"), std::string::npos) << line;
    EXPECT_EQ(result.out, "") << line;
  }
}

TEST_F(Tallyctl, HelpHasExamplesEverywhere) {
  for (const char* command : {"", "init", "import", "price", "setting set", "extension set", "trunk list",
                              "currency default", "log show", "folder show", "sample-calls", "reset"}) {
    const Result result = run(std::string(command) + " --help");
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_NE(result.out.find("Examples:\n  tallyctl "), std::string::npos) << command << result.out;
  }
  EXPECT_NE(run("reset --help").out.find("Examples:\n  tallyctl reset calls --yes\n"), std::string::npos);
}

TEST_F(Tallyctl, WithoutADataFolderItSaysHowToMakeOne) {
  const Result result = run("status");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("tallyctl init"), std::string::npos) << result.err;
}

TEST_F(Tallyctl, InitRefusesToOverwrite) {
  SKIP_ON_SERVER(*this);
  succeed("init data --empty");
  const std::string before = readFile(folder / "data/tallybook.mdb");
  const Result again = run("init data --sample");
  EXPECT_EQ(again.status, 1);
  EXPECT_NE(again.err.find("tallybook.mdb"), std::string::npos);
  EXPECT_EQ(readFile(folder / "data/tallybook.mdb"), before);
  // Another folder would take the machine store away from the first one.
  const Result other = run("init other --empty");
  EXPECT_EQ(other.status, 1);
  EXPECT_NE(other.err.find("--store"), std::string::npos) << other.err;
  EXPECT_FALSE(fs::exists(folder / "other/tallybook.mdb"));
  succeed("--store other.ini init other --empty");
}

TEST_F(Tallyctl, AChosenPasswordIsAskedForByEveryCommand) {
  succeed("init data --empty", "TALLYBOOK_PASSWORD=secret");
  EXPECT_EQ(readFile(folder / "machine.ini").find("secret"), std::string::npos);
  EXPECT_EQ(run("status").status, 1);
  EXPECT_EQ(run("--user admin status", "TALLYBOOK_PASSWORD=wrong").status, 1);
  succeed("--user admin status", "TALLYBOOK_PASSWORD=secret");
}

TEST_F(Tallyctl, SettingsAreKeptInTheirStores) {
  succeed("init data --empty");
  EXPECT_EQ(succeed("setting get PathMonitor --section general --where machine"),
            (folder / "data/monitor/").string() + "\n");
  succeed("setting set OrganizationTAXE 19 --section general --where database");
  EXPECT_EQ(succeed("setting get OrganizationTAXE --section general --where database"), "19\n");
  succeed("setting set Sterge 365 --section Calls --where database --type int");
  EXPECT_EQ(succeed("setting get sterge --section calls"), "365\n");
  succeed("setting set --where machine --type int Odd -- -5");
  EXPECT_EQ(succeed("setting get Odd --where machine"), "-5\n");
  succeed("setting delete OrganizationTAXE --section general --where database");
  EXPECT_EQ(run("setting get OrganizationTAXE --section general --where database").status, 1);
  EXPECT_EQ(run("setting set Sterge many --section Calls --where database --type int").status, 2);
}

// The catalogue knows what a setting holds; a text in the place of a number would be shown, and not read.
TEST_F(Tallyctl, SettingsAreStoredAsTheirReadersExpectThem) {
  succeed("init data --empty");
  succeed("setting set Sterge 365 --section Calls");
  EXPECT_EQ(succeed("purge"), "deleted 0\n");
  succeed("setting set iface_Grid 1");
  EXPECT_NE(readFile(folder / "machine.ini").find("iface_Grid=int:1"), std::string::npos);
  for (const char* refused : {"Sterge 365d --section Calls", "Sterge -2 --section Calls", "OrganizationTVA 101",
                              "OrganizationTVA 9999999999", "OrganizationTAXE 7,5", "OrganizationTAXE abc",
                              "'Window Placement' x", "Sterge 5 --section Calls --type string",
                              "'a\"b' c --where database", "a b --section 'x\"y' --where machine", "Odd 5"}) {
    const Result result = run(std::string("setting set ") + refused);
    EXPECT_EQ(result.status, 2) << refused << result.err;
  }
  EXPECT_EQ(succeed("setting get Sterge --section Calls"), "365\n");

  succeed("setting set --section Calls Sterge -- -1");
  EXPECT_NE(run("setting get Sterge --section Calls").err.find("-1 is the default of Sterge"), std::string::npos);
  succeed("setting delete Sterge --section Calls");
  EXPECT_NE(run("setting get Sterge --section Calls").err.find("The default -1 holds."), std::string::npos);
  EXPECT_NE(run("setting set Odd 5 --where machine").err.find("no known setting"), std::string::npos);
  EXPECT_NE(run("setting set Sterge 5 --section Calls --where machine").err.find("reads it from the database store"),
            std::string::npos);
  EXPECT_EQ(succeed("setting get Odd --where machine"), "5\n");

  // Stored by hand or by an earlier version.
  const std::string header = "[general]\n";
  std::string store = readFile(folder / "machine.ini");
  store.insert(store.find(header) + header.size(), "iface_Hover=str:1\n");
  std::ofstream(folder / "machine.ini") << store;
  const Result wrong = run("setting get iface_Hover");
  EXPECT_EQ(wrong.status, 1);
  EXPECT_NE(wrong.err.find("tallyctl setting set iface_Hover '1' --section 'general'"), std::string::npos) << wrong.err;
  EXPECT_NE(succeed("setting list").find("1 (of the wrong type)"), std::string::npos);

  // One setting goes, whatever its name holds.
  EXPECT_EQ(run("setting delete 'x\" or \"1\"=\"1' --where database").status, 2);
  EXPECT_EQ(succeed("setting get DbVersion"), "1\n");
}

// Names of files are appended to folders, so the writer of one closes it, and readers of `Path` do not rely on that.
TEST_F(Tallyctl, AFolderSettingWorksWithoutItsSeparator) {
  SKIP_ON_SERVER(*this);
  succeed("init data --empty");
  const std::string reports = (folder / "data").string();
  succeed("setting set Path '" + reports + "'");
  EXPECT_EQ(succeed("setting get Path"), reports + "/\n");
  const std::string store = readFile(folder / "machine.ini");
  std::string open = store;
  for (const char* key : {"\nPath=str:", "\nPathMonitor=str:"}) {
    open.erase(open.find('\n', open.find(key) + 1) - 1, 1);
  }
  ASSERT_EQ(open.size(), store.size() - 2);
  std::ofstream(folder / "machine.ini") << open;
  succeed("folder list");
  succeed("report 100");
  EXPECT_TRUE(fs::exists(folder / "data/list.html"));
  EXPECT_EQ(succeed("import"), "imported 0\n");
}

TEST_F(Tallyctl, ABillsPageThatIsThereAlreadyStays) {
  SKIP_ON_SERVER(*this);
  fs::create_directory(folder / "data");
  std::ofstream(folder / "data/template.html") << "ours";
  succeed("init data --sample");
  EXPECT_EQ(readFile(folder / "data/template.html"), "ours");
}

// What is no file is said, and never waited for.
TEST_F(Tallyctl, AnythingButAFileIsRefusedAtOnce) {
  SKIP_ON_SERVER(*this);
  succeed("init data --sample");
  const auto refused = [&](const std::string& arguments, const char* message) {
    const Result result = run(arguments, "timeout 20");
    EXPECT_EQ(result.status, 1) << arguments;
    EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
  };
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  for (const char* store : {"fifo", "data", "/dev/zero"}) {
    for (const char* command : {"status", "setting get Lang", "setting set Lang RO", "init other"}) {
      refused(std::string("--store ") + store + " " + command, "is not a file");
    }
  }
  if (geteuid() != 0) {
    std::ofstream(folder / "secret.ini") << "[general]\n";
    chmod((folder / "secret.ini").c_str(), 0);
    refused("--store secret.ini status", "is not a file that you may read");
  }
  ASSERT_EQ(mkfifo((folder / "data/Tallybook.lng").c_str(), 0600), 0);
  refused("--store machine.ini folder list", "Error loading language file: ");
  fs::remove(folder / "data/Tallybook.lng");
  ASSERT_EQ(mkfifo((folder / "data/monitor/monitor.data").c_str(), 0600), 0);
  refused("--store machine.ini import", "monitor.data is not a file");
  fs::remove(folder / "data/template.html");
  ASSERT_EQ(mkfifo((folder / "data/template.html").c_str(), 0600), 0);
  refused("--store machine.ini bill 201 --from 2026-01-01 --to 2026-01-31 --out bill.html", "");
}

TEST_F(Tallyctl, DefinitionsAreListedSetAndDeleted) {
  succeed("init data --sample");
  struct Case {
    const char* set;
    const char* list;
    const char* line;  // of the list as CSV
    const char* remove;
  };
  for (const Case& c :
       {Case{"extension set 299 --description 'Ana Țurcan' --department 'Vânzări'", "extension list",
             "299,Ana Țurcan,Vânzări", "extension delete 299"},
        Case{"account set \"77??\" --description 'A, B'", "account list", "77??,\"A, B\",", "account delete \"77??\""},
        Case{"client set \"88??\" --name Moara --folder Industrie", "client list", "88??,Moara,Industrie",
             "client delete \"88??\""},
        Case{"trunk set 9 --label 'linia 9' --provider 1 --profile Standard", "trunk list",
             "9,linia 9,1,Dunărea Telecom,Standard,0,0", "trunk delete 9"},
        Case{"provider set 4 --name Northline --local-prefixes 21,31 --free-seconds 5", "provider list",
             "4,Northline,\"21,31\",5", "provider delete 4"},
        Case{"currency set HUF --rate 0.0125", "currency list", "HUF,0.0125,no,", "currency delete huf"},
        Case{"currency set HUF --rate 80 --reverse", "currency list", "HUF,80.0000,yes,", "currency delete HUF"}}) {
    succeed(c.set);
    const std::string list = std::string(c.list) + " --format csv";
    EXPECT_NE(succeed(list).find(std::string("\n") + c.line), std::string::npos) << c.line;
    succeed(c.remove);
    EXPECT_EQ(succeed(list).find(std::string("\n") + c.line), std::string::npos) << c.remove;
    EXPECT_EQ(run(c.remove).status, 1) << c.remove;
  }
  EXPECT_EQ(run("provider delete 1").status, 1);    // trunks use it
  EXPECT_EQ(run("currency delete RON").status, 1);  // the default
  EXPECT_EQ(run("extension set 299 --department Sales").status, 2);
  EXPECT_NE(succeed("trunk list --json").find("\"ignore_zero_pulses\": 1"), std::string::npos);
  EXPECT_EQ(succeed("currency list"),
            "Name    Rate  Reverse  Changed     Default\n"
            "----  ------  -------  ----------  -------\n"
            "RON   1.0000  no       01.01.2026  yes\n"
            "EUR   4.9700  no       01.01.2026  no\n"
            "USD   4.5800  no       01.01.2026  no\n");
}

TEST_F(Tallyctl, DefinitionsThatWouldBeLostOrMispriceAreRefusedOrWarnedOf) {
  succeed("init data --sample");
  struct Case {
    const char* line;
    int status;
    const char* said;
  };
  for (const Case& c :
       {Case{"extension set '' --description Ana", 2, "The code may not be empty."},
        Case{"account set '' --description Ana", 2, "The code may not be empty."},
        Case{"trunk set '' --provider 1", 2, "The trunk may not be empty."},
        Case{"trunk set 07 --provider 1 --profile Standard", 0, "No call will be found on trunk 07"},
        Case{"trunk set 8 --provider 1 --profile Lost", 0, "Provider 1 has no profile \"Lost\""},
        Case{"provider set 9 --name New --free-seconds x", 2, "--free-seconds"},
        Case{"provider delete 9", 1, "There is no provider 9."}, Case{"currency set EUR --rate inf", 2, "--rate"},
        Case{"currency set RON --rate 5", 1, "default currency"}, Case{"hide \"0'1\"", 1, "apostrophe"},
        Case{"show \"0'1\"", 1, "apostrophe"},
        Case{"price \"0'1\" --trunk 1 --at 2026-11-24 --duration 9", 1, "apostrophe"}}) {
    const Result result = run(c.line);
    EXPECT_EQ(result.status, c.status) << c.line;
    EXPECT_NE(result.err.find(c.said), std::string::npos) << c.line << result.err;
  }
  EXPECT_EQ(run("trunk set 8 --provider 1 --profile standard").err.find("no profile"), std::string::npos);
}

TEST_F(Tallyctl, ImportRecordsTheMonitorsCalls) {
  succeed("init data --sample");
  succeed("sample-calls 300 --out data/monitor/monitor.data --seed 3");
  EXPECT_EQ(succeed("import"), "imported 300\n");
  EXPECT_EQ(succeed("import"), "imported 0\n");
  EXPECT_FALSE(fs::exists(folder / "data/monitor/monitor.data.bk"));
  const std::string status = succeed("status --format csv");
  EXPECT_NE(status.find("Rows of Calls,300\n"), std::string::npos) << status;
  EXPECT_NE(status.find("Rows of Log,"), std::string::npos);
  // One caption row and as many calls as asked for.
  const std::string calls = succeed("folder show 100 --format csv --limit 7");
  EXPECT_EQ(std::count(calls.begin(), calls.end(), '\n'), 8);
  EXPECT_EQ(run("folder show 100 --sort=-9999").status, 2);
  EXPECT_EQ(run("folder show 4711").status, 1);
}

TEST_F(Tallyctl, SampleFilesOfOneSeedAreEqual) {
  succeed("sample-calls 200 --out a --seed 9");
  succeed("sample-calls 200 --out b --seed 9");
  EXPECT_EQ(readFile(folder / "a"), readFile(folder / "b"));
  succeed("sample-calls 200 --out b --seed 9 --append");
  EXPECT_EQ(readFile(folder / "b").size(), 2 * readFile(folder / "a").size());
}

TEST_F(Tallyctl, PriceExplainsAndStoresNothing) {
  succeed("init data --sample");
  const std::string command = "price 0264123456 --at '2026-11-24 10:00' --duration 95 --trunk ";
  EXPECT_NE(succeed(command + "1").find("0.32"), std::string::npos);
  // A trunk that no one defined is not given a provider by asking.
  succeed(command + "77");
  EXPECT_EQ(succeed("trunk list --format csv").find("\n77,"), std::string::npos);
  EXPECT_NE(succeed("status --format csv").find("Rows of Calls,0\n"), std::string::npos);
}

}  // namespace
