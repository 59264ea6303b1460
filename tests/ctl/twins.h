#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/tallyctl.h"
#include "support/test_place.h"

// Two installations that differ only in what a user must not learn, and everything that the user can ask for: whatever
// he does, both must answer alike.
namespace twins {

using namespace support;

namespace fs = std::filesystem;

inline std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

// One installation, with the name of its folder and the moment of the run taken out of what it says.
class Installation {
 public:
  // The exit status.
  int run(const std::string& arguments, const std::string& environment = "") {
    return program_.run(arguments, environment).status;
  }
  std::string succeed(const std::string& arguments) { return program_.succeed(arguments); }

  // What the user gets: the status, both streams, and every file but the databases themselves and the lock, which holds
  // a process's number.
  std::map<std::string, std::string> answer(const std::string& arguments) {
    std::map<std::string, std::string> all;
    all["status"] = std::to_string(run("--user jur " + arguments, "TALLYBOOK_PASSWORD=j"));
    for (const auto& entry : fs::recursive_directory_iterator(path(""))) {
      const std::string name = entry.path().filename();
      if (!entry.is_regular_file() || name.find(".mdb") != std::string::npos || name == "QuorvaneServerMutex") continue;
      const bool timed = name.ends_with(".xlsx");  // holds the second at which it was made
      std::string text = timed ? std::string() : replaced(readFile(entry.path()), path("").string(), "HERE/");
      all[entry.path().lexically_relative(path(""))] = std::regex_replace(text, today_, "NOW");
    }
    return all;
  }

  [[nodiscard]] fs::path path(const char* name) const { return program_.path(name); }

 private:
  static std::string todaysTime() {
    const std::time_t now = std::time(nullptr);
    char day[80];
    std::strftime(day, sizeof day, "(%d\\.%m\\.%Y|%Y-%m-%d) \\d\\d:\\d\\d:\\d\\d", std::localtime(&now));
    return day;
  }

  TallyctlRun program_;
  std::regex today_{todaysTime()};
};

// The sample exchange with 300 calls, twice; the user "jur", with password "j", is the one who must not learn.
class TwinTest : public ::testing::Test {
 protected:
  explicit TwinTest(std::string jursOptions) : jursOptions_(std::move(jursOptions)) {}

  // A copy of a folder.
  void SetUp() override {
    SKIP_ON_SERVER(TestPlace());
    whole.succeed("init data --sample");
    whole.succeed("sample-calls 300 --out data/monitor/monitor.data --seed 5 --until 2026-03-31");
    whole.succeed("import");
    whole.succeed("user add jur --groups Administrators --password j " + jursOptions_);
    whole.succeed("setting delete AutoLoginUser");
    fs::remove(whole.path("out"));
    fs::copy(whole.path(""), twin.path(""), fs::copy_options::recursive);
    const std::string store = readFile(whole.path("machine.ini"));
    std::ofstream(twin.path("machine.ini")) << replaced(store, whole.path("").string(), twin.path("").string());
    makeDifferent();
  }
  virtual void makeDifferent() = 0;

  void expectAlike(const std::string& line) {
    const auto seen = whole.answer(line);
    auto other = twin.answer(line);
    for (const auto& [file, text] : seen) EXPECT_EQ(text, other[file]) << line << ": " << file;
    EXPECT_EQ(seen.size(), other.size()) << line;
    answers[line] = seen.at("out") + seen.at("err");
  }

  Installation whole;
  Installation twin;
  std::map<std::string, std::string> answers;

 private:
  std::string jursOptions_;
};

// The words of all commands, as the help lists them.
inline std::vector<std::string> commands(Installation& place, const std::string& path = "") {
  std::vector<std::string> found;
  std::istringstream help(place.succeed(path + " --help"));
  bool listed = false;
  for (std::string line; std::getline(help, line);) {
    if (line == "Subcommands:") listed = true;
    if (line.empty()) listed = false;
    if (!listed || !line.starts_with("  ") || line[2] == ' ') continue;
    const auto below =
        commands(place, path + line.substr(path.empty() ? 2 : 1, line.find(' ', 2) - (path.empty() ? 2 : 1)));
    found.insert(found.end(), below.begin(), below.end());
  }
  return found.empty() ? std::vector{path} : found;
}

inline constexpr const char* kLines[] = {
    "status",
    "status --json",
    "backup .",
    "restore nowhere new",
    "doctor",
    "doctor --report",
    "man-page",
    "completion bash",
    "completion zsh",
    "folder list",
    "folder show 100",
    "folder show 100 --sort=-401 --totals --format csv",
    "folder show 100 --sort=404 --limit 5 --json",
    "folder show 100 --columns=401,400",
    "folder show 101 --sort=-421",
    "folder show 102 --sort=-424 --limit 5",
    "folder show 103 --totals",
    "folder show 104 --json",
    "folder show 106",
    "folder show 107",
    "folder show 108",
    "folder show 109",
    "folder show 110 --sort=416",
    "folder show 111",
    "folder show 112",
    "folder show 113",
    "folder show 114",
    "folder show 115",
    "folder show 116",
    "folder show 97 --format csv",
    "folder show 98",
    "folder sql 103 --sort=-422",
    "folder sql 100 --sort=99999",
    "report 100 --out calls.html",
    "report 103 --out areas.csv",
    "report 101 --out extensions.xlsx",
    "report 102 --summary --out top.html",
    "bill 212 --from 2026-01-01 --to 2026-12-31 --out bill.html",
    "bill 201 --from 2026-03-01 --to 2026-03-31 --out bill.html",
    "bill 999 --from 2026-03-01 --to 2026-03-31 --out bill.html",
    "bill \"2' or '1'='1\" --from 2026-03-01 --to 2026-03-31 --out bill.html",
    "filter show",
    "filter set OnFilter=1 OnPeriod=1 IntervalStart=2026-03-01 IntervalEnd=2026-03-31",
    "filter condition",
    "filter describe",
    "filter describe --format html",
    "filter describe --format rtf",
    "folder show 100 --totals",
    "filter this-month",
    "filter previous-month",
    "folder show 101",
    "filter clear",
    "filter set OnFilter=0",
    "price 0264123456 --trunk 1 --at 2026-03-10 --duration 95",
    "price \"0264' or '1'='1\" --trunk 1 --at 2026-03-10 --duration 95",
    "contact list",
    "contact add --name Zed --phones \"0264 123 999\"",
    "contact edit 1 --note seen",
    "contact search --phone 0264",
    "contact search --name \"a* or [\"",
    "contact search --phone 'x\" or \"1\"=\"1'",
    "contact delete 2",
    "contact export contacts.vcf",
    "contact import contacts.vcf",
    "extension list",
    "extension set 201 --department X",
    "extension delete 999",
    "account list",
    "account set 77 --description X --department X",
    "account delete 77",
    "trunk list",
    "trunk set 1 --label one",
    "trunk delete 999",
    "trunk-load",
    "trunk-load --json",
    "missed",
    "missed --json --within 24",
    "missed --by extension",
    "missed --by hour --working-hours",
    "month --month 2026-03 --out month.html",
    "alarm set Budget --kind budget --limit 5",
    "alarm list",
    "alarm try Budget --month 2026-03",
    "alarm acknowledge 1",
    "alarm delete Budget",
    "tariff import nowhere --provider 1 --profile Standard --from 2026-12-01",
    "tariff import nowhere --provider 1 --profile Standard --from 2026-12-01 --dry-run",
    "forget 0264123456",
    "anonymise --older-than 10",
    "mail set localhost --port 9 --encryption none --from tallybook@office.example",
    "mail show",
    "mail test ana@office.example",
    "schedule set Daily --to ana@office.example",
    "schedule list",
    "schedule run Daily",
    "schedule delete Daily",
    "setting list",
    "client list",
    "client set 55 --name Fifty --folder F",
    "client delete 55",
    "provider list",
    "provider set 1 --name Northline",
    "provider delete 999",
    "provider delete 1",
    "currency list",
    "currency set CHF --rate 5",
    "currency default EUR",
    "currency default RON",
    "currency delete CHF",
    "currency delete USD",
    "setting get OrganizationTAXE",
    "setting set OrganizationTAXE 7",
    "setting get 'x\" or CLng(Path) = 1 or \"1\"=\"1' --where database",
    "setting delete 'x\" or \"1\"=\"1' --where database",
    "setting delete OrganizationTAXE",
    "hide 0264123456",
    "show 0264123456",
    "hide \"0'+CLng(dialnumber)+'\"",
    "recalc --from 2026-01-01 --to 2026-12-31 --reprice",
    "recalc --from 2026-01-01 --to 2026-12-31 --names --provider \"x' or '1'='1\"",
    "purge",
    "setting set Sterge 1 --section Calls --type int",
    "purge",
    "setting delete Sterge --section Calls",
    "reset calls --yes",
    "reset zero-length --yes",
    "reset contacts --yes",
    "export-tables tables",
    "import-tables nowhere new --use",
    "convert nowhere new --use",
    "move-database nowhere new --use",
    "user list --format csv",
    "user add eva --groups Operators --password e",
    "user add eva --groups Operators --password e --restriction \"CLng(DialNumber)=1\"",
    "user set jur --restriction \"CDate(DialNumber)=1\"",
    "user set jur --restriction \"\"",
    "user set admin --fullname A",
    "user delete eva",
    "group list",
    "group add Readers --rights view-calls",
    "group set Readers --expire 30",
    "group delete Readers",
    "log show --limit 5",
    "log filter show",
    "log filter set LogFilt_Enabled=1 LogFilt_Err=1",
    "log filter set 'LogFilt_User=x\" or \"1\"=\"1' LogFilt_UserEnabled=1",
    "log filter condition",
    "log filter clear",
    "log clear",
    "passwd",
    "init data",
    "sample-calls 20 --out data/monitor/monitor.data --until 2026-03-31",
    "import",
    "folder show 100",
    "send nothing",
};

}  // namespace twins
