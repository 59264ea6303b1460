// The answers of the command line about many calls, against plain SQL over the stored ones.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "support/tallyctl.h"

namespace {

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

}  // namespace
