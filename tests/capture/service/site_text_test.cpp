#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "capture/site/site.h"
#include "capture/site/site_json.h"
#include "capture/site/site_text.h"
#include "support/program_run.h"

namespace {

using namespace support;

constexpr const char* kSite = R"(# the office in Brașov
[deliver]
folder = "/srv/monitor"   # PathMonitor

[[source]]   # the basement
id = "main"
format = "hicom"
# the grey cable
serial = { device = "/dev/ttyUSB0", line = "9600 8N1" }   # not the black one
trunks = ["șină",
          "b"]

[source.quiet]
minutes = 120   # two hours
mail = "it@example.org"

# the other building
[[source]]
id = "annex"
format = "nec"
udp = { port = 5000 }
)";

toml::table tableOf(const char* json) {
  return capture::tableOf(nlohmann::json::parse(json));
}

TEST(SiteText, AChangedSourceKeepsEveryCommentAndWhatIsNotChanged) {
  struct Case {
    const char* source;
    std::vector<std::pair<std::string, std::string>> replaced;  // in the text, in this order
  };
  const std::string serial = R"("serial": {"device": "/dev/ttyUSB0", "line": "9600 8N1"})";
  const std::string trunks = R"("trunks": ["șină", "b"])";
  const std::string quiet = R"("quiet": {"minutes": 120, "mail": "it@example.org"})";
  const auto source = [](const std::string& parts) { return R"({"id": "main", "format": "hicom", )" + parts + "}"; };
  const std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::string>>>> cases = {
      {source(serial + "," + trunks + "," + quiet), {}},
      {source(R"("serial": {"device": "/dev/ttyS1", "line": "1200 7E1"},)" + trunks + "," + quiet),
       {{R"({ device = "/dev/ttyUSB0", line = "9600 8N1" })", R"({ device = "/dev/ttyS1", line = "1200 7E1" })"}}},
      {source(serial + R"(, "trunks": ["a"],)" + quiet), {{"[\"șină\",\n          \"b\"]", R"(["a"])"}}},
      {source(serial + "," + quiet), {{"trunks = [\"șină\",\n          \"b\"]\n", ""}}},
      {source(serial + "," + trunks + R"(, "quiet": {"minutes": 60, "mail": "it@example.org"})"),
       {{"minutes = 120", "minutes = 60"}}},
      {source(serial + "," + trunks),
       {{"[source.quiet]\nminutes = 120   # two hours\nmail = \"it@example.org\"\n", ""}}},
      {source(serial + "," + trunks + "," + quiet + R"(, "zone": "Europe/Bucharest")"),
       {{"          \"b\"]\n", "          \"b\"]\nzone = \"Europe/Bucharest\"\n"}}},
  };
  for (const auto& [json, replaced] : cases) {
    std::string expected = kSite;
    for (const auto& [from, to] : replaced) expected.replace(expected.find(from), from.size(), to);
    capture::SiteText text(kSite, "site.toml");
    text.setSource(tableOf(json.c_str()));
    EXPECT_EQ(expected, text.text()) << json;
  }
}

TEST(SiteText, SourcesComeAndGoAndTheOthersStay) {
  capture::SiteText text(kSite, "site.toml");
  EXPECT_FALSE(text.removeSource("nobody"));
  EXPECT_TRUE(text.removeSource("main"));
  EXPECT_EQ(std::string::npos, text.text().find("hicom"));
  EXPECT_NE(std::string::npos, text.text().find("# the other building\n[[source]]\nid = \"annex\""));
  text.setSource(tableOf(R"({"id": "new", "format": "hicom", "file": {"path": "/srv/a \"b\"\\c"}})"));
  EXPECT_TRUE(
      text.text().ends_with("udp = { port = 5000 }\n\n[[source]]\nid = \"new\"\nformat = \"hicom\"\nfile = { path = "
                            "\"/srv/a \\\"b\\\"\\\\c\" }\n"))
      << text.text();
}

// Keys with dots and a source whose tables are apart: rewritten as a whole, or refused; never half done.
TEST(SiteText, WhatIsWrittenInAnUnusualWayIsRewrittenOrRefused) {
  capture::SiteText dotted("[[source]]\nid = \"a\"\nformat = \"nec\"\nudp.port = 5\nudp.address = \"0.0.0.0\"\n", "f");
  dotted.setSource(tableOf(R"({"id": "a", "format": "nec", "udp": {"port": 6}})"));
  EXPECT_EQ(6, dotted.tables()["source"][0]["udp"]["port"].value_or(0));
  const std::string apart =
      "[[source]]\nid = \"a\"\nformat = \"nec\"\nudp = { port = 5 }\n[alarms]\nmail = \"x\"\n[source.quiet]\nminutes = "
      "5\n";
  capture::SiteText text(apart, "f");
  try {
    EXPECT_TRUE(text.removeSource("a"));
    ADD_FAILURE() << text.text();
  } catch (const capture::SiteError& fault) {
    EXPECT_NE(std::string::npos, std::string(fault.what()).find("by hand"));
  }
  EXPECT_EQ(apart, text.text());
}

TEST(SiteText, AFileIsReplacedWholeAndOnlyWhenItIsInOrder) {
  const TemporaryFolder folder;
  const auto file = folder / "etc/tallymon.toml";
  capture::writeSite(file, kSite);
  EXPECT_EQ(kSite, readFile(file));
  struct stat status {};
  ASSERT_EQ(0, ::stat(file.c_str(), &status));
  EXPECT_EQ(0U, status.st_mode & 0007U) << "passwords in it are for the service alone";
  ::chmod(file.c_str(), 0604);
  EXPECT_THROW(capture::writeSite(file, "[deliver]\nfolder = \"/srv\"\n"), capture::SiteError);
  EXPECT_EQ(kSite, readFile(file));
  const std::string changed = std::string(kSite) + "# changed\n";
  capture::writeSite(file, changed);
  EXPECT_EQ(changed, readFile(file));
  ASSERT_EQ(0, ::stat(file.c_str(), &status));
  EXPECT_EQ(0604U, status.st_mode & 0777U);
  EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(file.parent_path()), {}));
}

TEST(SiteText, AFullDiskLeavesTheFileBefore) {
  const TemporaryFolder folder;
  const std::string before = std::string(1000, '#') + "\n" + kSite;
  writeFile(folder / "tallymon.toml", before);
  {
    const DiskLimit disk(1024);
    try {
      capture::writeSite(folder / "tallymon.toml", "# changed\n" + before);
      ADD_FAILURE() << "was written";
    } catch (const std::exception& fault) {
      EXPECT_TRUE(contains(fault.what(), "tallymon.toml")) << fault.what();
    }
  }
  EXPECT_EQ(before, readFile(folder / "tallymon.toml"));
  const auto entries = std::filesystem::directory_iterator(folder / "");
  EXPECT_EQ(1, std::distance(begin(entries), end(entries)));
}

}  // namespace
