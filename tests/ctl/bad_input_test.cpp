// What people hand in by mistake or with intent: a clear message each, and nothing half done.

#include <fstream>
#include <nlohmann/json.hpp>

#include "support/tallyctl.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

class BadInput : public ::testing::Test, protected TallyctlRun {
 protected:
  void refuse(const std::string& arguments, const std::string& reason) {
    const Result result = run(arguments);
    EXPECT_NE(result.status, 0) << arguments;
    EXPECT_TRUE(contains(result.err, reason)) << arguments << '\n' << result.err;
  }
};

TEST_F(BadInput, ARuleThatNamesWhatThereIsNot) {
  succeed("init data --sample");
  refuse("alarm set Wrong --kind budget --subject colour --limit 5", "colour");
  refuse("alarm set Wrong --kind budget --measure colour --limit 5", "colour");
  std::ofstream(path("rules.csv")) << "Name,Kind,Limit,Colour\nFine,budget,5,red\n";
  refuse("alarm set --file rules.csv", "Colour");
  refuse("alarm set Wrong --kind budget --limit 5 --mail 'a@b.ro\nBcc: c@d.ro'", "no mail address");
  EXPECT_EQ(nlohmann::json::parse(succeed("alarm list --json"))["rules"].size(), 0U);
}

TEST_F(BadInput, AddressesThatCarryALineOfTheirOwn) {
  succeed("init data --sample");
  refuse("schedule set Daily --to 'a@b.ro\nBcc: c@d.ro'", "line end");
  refuse("schedule set Daily --to a@b.ro --filter 'NoSuchKey=1'", "NoSuchKey");
  refuse("schedule set Daily --to a@b.ro --columns 99999", "99999");
  refuse("schedule set Daily --to a@b.ro --at 25:00", "25:00");
  refuse("mail set localhost --from 'a@b.ro\nBcc: c@d.ro'", "no mail address");
  EXPECT_EQ(nlohmann::json::parse(succeed("schedule list --json")).dump().find("Daily"), std::string::npos);
}

TEST_F(BadInput, ATemplateOfAMegabyte) {
  SKIP_ON_SERVER(*this);
  makeSample(200);
  const std::string bill = "bill 201 --from 2020-01-01 --to 2035-12-31 --out bill.html";
  const auto use = [&](const std::string& text) { std::ofstream(path("data/template.html")) << text; };
  const std::string padding(1 << 20, '%');
  use("<html>" + padding + "%EXT%</html>");
  succeed(bill);
  EXPECT_EQ(fs::file_size(path("bill.html")), padding.size() + std::string("<html>201</html>").size());
  std::string greedy;
  while (greedy.size() < 1 << 20) greedy += "%REPORT%";
  use(greedy);
  fs::remove(path("bill.html"));
  refuse(bill, "%REPORT%");
  EXPECT_FALSE(fs::exists(path("bill.html")));
}

TEST_F(BadInput, AChoiceOfWhatAUserSeesThatIsTooLong) {
  succeed("init data --sample");
  std::string extensions;
  for (int i = 100; i < 130; ++i) extensions += (extensions.empty() ? "" : ",") + std::to_string(i);
  refuse("user add ana --groups Administrators --password x --allow-extensions " + extensions, "127");
  refuse("user add ana --groups Administrators --password x --allow-extensions 1 --restriction Hidden",
         "leave out --restriction");
  EXPECT_EQ(stored("select count(*) from Users where Name = 'ana'")[0][0], "0");
  succeed("user add ana --groups Administrators --password x --allow-departments 'Vânzări' --allow-extensions 201,202");
  EXPECT_EQ(stored("select SQLSubquery from Users where Name = 'ana'")[0][0],
            "Department='Vânzări' Or Extension In('201','202')");
  succeed("user set ana --allow-departments none --allow-trunks 1");
  EXPECT_EQ(stored("select SQLSubquery from Users where Name = 'ana'")[0][0], "Extension In('201','202') Or Trunk='1'");
  succeed("user set ana --restriction 'TotalTime > 60'");
  refuse("user set ana --allow-trunks 2", "TotalTime > 60");
}

}  // namespace
