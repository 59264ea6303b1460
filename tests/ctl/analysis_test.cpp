// The answers of the command line about many calls, against plain SQL over the stored ones.

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "support/tallyctl.h"

namespace {

using namespace support;

class Answers : public ::testing::Test, protected TallyctlRun {
 protected:
  nlohmann::json json(const std::string& command) { return nlohmann::json::parse(succeed(command + " --json")); }
};

TEST_F(Answers, MissedCallsInJsonAndAsATable) {
  makeSample(1500);
  const auto page = json("missed");
  const auto expected = stored(
      "select RecordID, [DateTime], DialNumber, coalesce(Name, ''), Extension, Ring from Calls "
      "where Incoming <> 0 and TotalTime = 0 order by [DateTime], RecordID");
  ASSERT_EQ(page["rows"].size(), expected.size());
  EXPECT_EQ(page["missed"], expected.size());
  std::size_t open = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const auto& row = page["rows"][i];
    EXPECT_EQ(row["id"], std::stol(expected[i][0]));
    EXPECT_EQ(row["at"], expected[i][1]);
    EXPECT_EQ(row["number"], expected[i][2]);
    EXPECT_EQ(row["name"], expected[i][3]);
    EXPECT_EQ(row["extension"], expected[i][4]);
    EXPECT_EQ(row["ring"], std::stol(expected[i][5]));
    EXPECT_EQ(row["open"], row["back_at"].is_null() && row["again_at"].is_null());
    EXPECT_EQ(row["back_at"].is_null(), row["back_by"].is_null());
    open += row["open"] ? 1 : 0;
  }
  EXPECT_EQ(page["open"], open);
  EXPECT_NE(succeed("missed --open").find(" missed, "), std::string::npos);
  EXPECT_EQ(json("missed --within 0")["called_back"], 0);
  EXPECT_EQ(run("missed --by week").status, 2);

  const auto hours = json("missed --by hour")["rows"];
  const auto counted = stored(
      "select cast(substr([DateTime], 12, 2) as integer), count(*), sum(TotalTime = 0) from Calls where Incoming <> 0 "
      "group by 1 order by 1");
  ASSERT_EQ(hours.size(), counted.size());
  for (std::size_t i = 0; i < counted.size(); ++i) {
    EXPECT_EQ(hours[i]["group"], std::stol(counted[i][0]));
    EXPECT_EQ(hours[i]["incoming"], std::stol(counted[i][1]));
    EXPECT_EQ(hours[i]["missed"], std::stol(counted[i][2]));
  }
}

TEST_F(Answers, TrunkLoadInJsonAndInASentence) {
  makeSample(1500);
  const auto page = json("trunk-load --trunks 1,2");
  std::int64_t lineSeconds = 0;
  for (std::size_t k = 0; k < page["seconds_at"].size(); ++k) {
    lineSeconds += static_cast<std::int64_t>(k) * page["seconds_at"][k].get<std::int64_t>();
  }
  EXPECT_EQ(std::to_string(lineSeconds), stored("select sum(TotalTime) from Calls where Trunk in ('1', '2')")[0][0]);
  EXPECT_EQ(page["seconds_at"].size(), page["peak"].get<std::size_t>() + 1);
  double most = 0;
  for (const auto& day : page["busiest"]) most = std::max(most, day["erlang"].get<double>());
  EXPECT_EQ(page["erlang_max"], most);
  EXPECT_LE(page["lines_1_percent"], page["lines_0.1_percent"]);
  EXPECT_GT(json("trunk-load --per hour")["busiest"].size(), json("trunk-load")["busiest"].size());
  EXPECT_NE(succeed("trunk-load").find("Erlang: "), std::string::npos);
  EXPECT_EQ(json("trunk-load --trunks 99")["peak_at"], nullptr);
}

TEST_F(Answers, AlarmsAreRaisedListedTriedAndAcknowledged) {
  succeed("init data --sample");
  succeed("alarm set Budget --kind budget --subject extension --measure duration --per month --limit 3600");
  succeed("alarm set 'Abroad' --kind destination --prefix abroad --outside-hours no");
  EXPECT_EQ(run("alarm set Wrong --kind nothing --limit 1").status, 2);
  EXPECT_EQ(run("alarm set Wrong --kind budget").status, 2);
  succeed("sample-calls 2000 --out data/monitor/monitor.data --seed 5 --until 2026-10-31 --days 31");
  succeed("import");
  const auto page = json("alarm list --last 100000");
  EXPECT_EQ(page["rules"].size(), 2U);
  const auto over = stored(
      "select Extension from Calls where Incoming = 0 and [DateTime] >= '2026-10-01' group by 1 having sum(TotalTime) "
      ">= 3600");
  std::size_t full = 0;
  for (const auto& alarm : page["alarms"]) full += alarm["rule"] == "Budget" && alarm["step"] == 100 ? 1 : 0;
  EXPECT_EQ(full, over.size());
  EXPECT_GT(full, 0U);
  // What a rule would have told is what it told.
  for (const char* rule : {"Budget", "Abroad"}) {
    std::size_t told = 0;
    for (const auto& alarm : page["alarms"]) told += alarm["rule"] == rule ? 1 : 0;
    EXPECT_EQ(json(std::string("alarm try ") + rule + " --month 2026-10")["alarms"].size(), told) << rule;
  }
  EXPECT_EQ(json("alarm try Budget --month 2026-09")["alarms"].size(), 0U);
  const std::string id = std::to_string(page["alarms"][0]["id"].get<int>());
  succeed("alarm acknowledge " + id);
  EXPECT_EQ(run("alarm acknowledge " + id).status, 1);
  EXPECT_EQ(json("alarm list --last 1")["alarms"][0]["acknowledged_by"], "admin");
  // To a file and back.
  std::ofstream(path("rules.csv")) << succeed("alarm list --format csv");
  succeed("alarm delete Budget");
  EXPECT_EQ(run("alarm delete Budget").status, 1);
  succeed("alarm set --file rules.csv");
  EXPECT_EQ(json("alarm list")["rules"], page["rules"]);
  std::ofstream(path("wrong.csv")) << "Name,Colour\nx,red\n";
  EXPECT_EQ(run("alarm set --file wrong.csv").status, 1);
}

TEST_F(Answers, APersonIsPrintedAndForgotten) {
  succeed("init data --sample");
  succeed("alarm set Dear --kind call --limit 0.01");
  succeed("sample-calls 400 --out data/monitor/monitor.data --seed 5");
  succeed("import");
  const std::string number =
      stored("select DialNumber from Calls where DialNumber like '07%' and Price_Ref > 0.01 limit 1")[0][0];
  const std::string international = "+40" + number.substr(1);
  succeed("contact add --name Ana --phones " + number);
  succeed("hide " + number);
  const auto page = json("forget " + international);
  EXPECT_EQ(page["erased"], false);
  std::set<std::string> places;
  for (const auto& row : page["rows"]) places.insert(row["place"]);
  EXPECT_EQ(places, (std::set<std::string>{"alarms", "calls", "contacts", "hidden numbers", "log"}));
  const std::string sum = stored("select sum(Price_Ref), count(*) from Calls")[0][0];
  EXPECT_EQ(run("forget " + international + " --erase").status, 1);
  succeed("forget " + international + " --erase --yes");
  EXPECT_TRUE(json("forget " + number)["rows"].empty());
  EXPECT_EQ(stored("select sum(Price_Ref) from Calls")[0][0], sum);
  EXPECT_EQ(stored("select 1 from Contacts where Tel_String like '%" + number + "%'").size(), 0U);
}

TEST_F(Answers, OldCallsAreMadeAnonymousAndGivenBack) {
  makeSample(300);
  const auto before = stored("select RecordID, DialNumber, Name, Price_Ref, Area from Calls");
  succeed("anonymise --older-than 1");
  EXPECT_NE(stored("select RecordID, DialNumber, Name, Price_Ref, Area from Calls"), before);
  EXPECT_EQ(stored("select count(*) from Calls where Name <> ''")[0][0], "0");
  succeed("anonymise --undo");
  EXPECT_EQ(stored("select RecordID, DialNumber, Name, Price_Ref, Area from Calls"), before);
  succeed("anonymise --older-than 1");
  succeed("anonymise --confirm");
  EXPECT_NE(succeed("anonymise --older-than 1").find("0 calls were"), std::string::npos);
  EXPECT_NE(succeed("anonymise --undo").find("0 calls are"), std::string::npos);
  EXPECT_EQ(run("anonymise").status, 2);
}

TEST_F(Answers, APriceListIsTriedAndTakenOver) {
  makeSample(50);
  std::ofstream(path("prices.csv")) << "Code;Name;Price\n0722;Mobile;0,99\n49;Germany;0.01\n";
  const std::string command = "tariff import prices.csv --provider 1 --profile Standard --from 2030-01-01";
  const auto plan = json(command + " --dry-run");
  EXPECT_EQ(plan["dry_run"], true);
  EXPECT_EQ(plan["rows"], 2);
  EXPECT_GT(plan["cheaper"], 0);
  const std::string at = " --trunk 1 --at \"2030-02-01 10:00\" --duration 60";
  EXPECT_EQ(succeed("price 0722123456" + at).find("0.9900"), std::string::npos);
  succeed(command);
  EXPECT_NE(succeed("price 0722123456" + at).find("0.9900"), std::string::npos);
  EXPECT_EQ(run(command).status, 1);
  EXPECT_EQ(run("tariff import none.csv --provider 1 --profile Standard --from 2031-01-01").status, 1);
}

// The trial of a price list, against what the calls cost when it is taken over for them.
TEST_F(Answers, CallsCostWhatTheTrialOfAPriceListSaid) {
  succeed("init data --sample");
  succeed("sample-calls 400 --out data/monitor/monitor.data --seed 5 --days 62");  // the last whole month among them
  succeed("import");
  std::ofstream(path("prices.csv")) << "Code;Name;Price\n0722;Mobile;0,99\n49;Germany;0.01\n";
  const std::string command = "tariff import prices.csv --provider 1 --profile Standard --from ";
  const auto month = json(command + "2030-01-01 --dry-run")["last_month"];
  const std::string from = month["from"];
  const auto cost = [&] {
    return std::stod(
        stored("select sum(Price_Ref) from Calls where Incoming = 0 and Provider = 'Dunărea Telecom' and "
               "Profile = 'Standard' and substr([DateTime], 1, 7) = '" +
               from.substr(0, 7) + "'")[0][0]);
  };
  EXPECT_GT(month["calls"], 0);
  EXPECT_NEAR(month["before"].get<double>(), cost(), 0.001);
  succeed(command + from);
  succeed("recalc --from " + from + " --to " + stored("select date('" + from + "', '+1 month', '-1 day')")[0][0] +
          " --reprice");
  EXPECT_NEAR(month["after"].get<double>(), cost(), 0.001);
  EXPECT_NE(month["after"], month["before"]);
}

}  // namespace
