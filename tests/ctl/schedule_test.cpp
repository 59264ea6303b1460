#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>
#include <thread>

#include "jet/database.h"
#include "support/tallyctl.h"

namespace {

using namespace support;

namespace fs = std::filesystem;
using nlohmann::json;

// Reports that are mailed, through a real mail server.
class Schedules : public TallyctlRun, public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("/usr/bin/python3 -c 'import aiosmtpd' 2>/dev/null") != 0) GTEST_SKIP() << "no aiosmtpd";
    fs::create_directory(path("mails"));
    const std::string folder = path("mails").string();
    ASSERT_EQ(std::system(("cd '" + folder +
                           "' && openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out cert.pem -days 2 -subj "
                           "/CN=localhost -addext subjectAltName=DNS:localhost,IP:127.0.0.1 2>/dev/null")
                              .c_str()),
              0);
    server_ = ::popen(
        ("/usr/bin/python3 '" TALLYBOOK_SOURCE_DIR "/tests/support/mail_server.py' '" + folder + "'").c_str(), "w");
    for (int i = 0; i < 200 && !fs::exists(path("mails/port")); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    makeSample(400);
    ::setenv("TALLYBOOK_MAIL_PASSWORD", "s3cret!", 1);
    connect("--authorities '" + folder + "/cert.pem'");
  }
  void TearDown() override {
    ::unsetenv("TALLYBOOK_MAIL_PASSWORD");
    if (server_ != nullptr) ::pclose(server_);
  }
  void connect(const std::string& more) {
    succeed("mail set 127.0.0.1 --port " + readFile(path("mails/port")) +
            " --from tallybook@office.example --login tally " + more);
  }
  std::vector<json> mails() {
    std::vector<json> all;
    for (int i = 1; fs::exists(path(("mails/" + std::to_string(i) + ".json").c_str())); ++i) {
      all.push_back(json::parse(readFile(path(("mails/" + std::to_string(i) + ".json").c_str()))));
    }
    return all;
  }
  std::string part(int mail, int number) {
    return readFile(path(("mails/" + std::to_string(mail) + "." + std::to_string(number)).c_str()));
  }

 private:
  FILE* server_ = nullptr;
};

TEST_F(Schedules, AReportComesWithItsFileToEachRecipient) {
  struct stat machine {};
  ASSERT_EQ(::stat(path("machine.ini").c_str(), &machine), 0);
  EXPECT_EQ(machine.st_mode & 0777, 0600U) << "it holds a password";
  EXPECT_FALSE(contains(succeed("mail show"), "s3cret"));
  succeed(
      "schedule set 'Zilnic' --folder 100 --period all --columns 401,400,404 --language RO --to "
      "ana@office.example,bob@office.example");
  succeed("schedule run zilnic");
  const std::vector<json> got = mails();
  ASSERT_EQ(got.size(), 2U);
  EXPECT_EQ(got[0]["to"], json::array({"ana@office.example"}));
  EXPECT_EQ(got[1]["to"], json::array({"bob@office.example"}));
  EXPECT_EQ(got[0]["from"], "tallybook@office.example");
  EXPECT_TRUE(got[0]["encrypted"]);
  EXPECT_EQ(got[0]["subject"], "Apeluri");
  EXPECT_EQ(got[0]["parts"][1]["type"], "application/pdf");
  ASSERT_EQ(std::system(("pdftotext '" + path("mails/1.1").string() + "' '" + path("text").string() + "'").c_str()), 0);
  EXPECT_TRUE(contains(readFile(path("text")), "Raport apeluri"));
  for (const auto& call : stored("select DialNumber from Calls"))
    EXPECT_TRUE(contains(readFile(path("text")), call[0])) << call[0];
}

TEST_F(Schedules, TheRestrictionOfItsUserHolds) {
  succeed("user add mara --password pw --groups Operators --restriction \"Extension='211'\"");
  succeed("filter set OnFilter=1 OnExtension=1 ExtensionStr=204");  // this machine's filter is not the report's
  succeed("schedule set Mara --as csv --period all --columns 402 --as-user mara --to mara@office.example");
  succeed("schedule run Mara");
  const std::string list = part(1, 1);
  const auto calls = stored("select count(*) from Calls where Extension = '211'");
  EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), std::stol(calls[0][0]) + 1);
  EXPECT_FALSE(contains(list, "204"));
  EXPECT_EQ(run("schedule set Other --as-user nobody --to a@b.example").status, 2);
}

TEST_F(Schedules, WhatDoesNotGoIsToldAndKept) {
  succeed("schedule set Split --as html --to ana@office.example,refused@office.example");
  TallyctlRun::Result result = run("schedule run Split");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.out, "550")) << result.out;
  ASSERT_EQ(mails().size(), 1U);
  EXPECT_EQ(mails()[0]["parts"][0]["type"], "text/html");
  const json listed = json::parse(succeed("schedule list --json"));
  EXPECT_TRUE(contains(listed.dump(), "\"refused@office.example\"")) << listed;

  ::setenv("TALLYBOOK_MAIL_PASSWORD", "wrong", 1);
  connect("--authorities '" + path("mails/cert.pem").string() + "'");
  result = run("schedule run Split");
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(contains(result.out + result.err, "wrong"));
  ::setenv("TALLYBOOK_MAIL_PASSWORD", "s3cret!", 1);
  connect("");  // the system trusts none of this certificate's signers
  EXPECT_EQ(run("schedule run Split").status, 1);
  EXPECT_EQ(run("mail set 127.0.0.1 --encryption none --from a@b.example --login tally").status, 2);
  EXPECT_EQ(mails().size(), 1U);
}

TEST_F(Schedules, TwoServicesOnOneDatabaseSendItOnce) {
  succeed("schedule set Morning --as xlsx --period all --to ana@office.example");
  jet::openDatabase(database("tallybook.mdb"), jet::OpenMode::ReadWrite)
      ->execute("update Schedules set NextRun = #1/1/2020 7:00:00#");
  fs::create_directory(path("second"));
  fs::copy(path("machine.ini"), path("second/machine.ini"));
  succeed("setting set LiveSocket '" + path("live").string() + "' --where machine");
  succeed("--store second/machine.ini setting set LiveSocket '" + path("live2").string() + "' --where machine");
  std::thread first = start("serve", "served", "timeout 12");
  std::thread second = start("--store second/machine.ini serve", "served", "timeout 12");
  first.join();
  second.join();
  EXPECT_EQ(mails().size(), 1U) << readFile(path("served"));
  EXPECT_TRUE(contains(readFile(path("served")), "Report Morning was sent.")) << readFile(path("served"));
}

// An alarm is told by the mail server that the reports go through; what it says is what the list says.
TEST_F(Schedules, AlarmsGoThroughTheSameServer) {
  succeed("alarm set Long --kind call --measure duration --limit 1 --mail boss@office.example");
  // Calls of some days ago would be in the list alone.
  const std::time_t now = std::time(nullptr);
  char today[16];
  std::strftime(today, sizeof today, "%Y-%m-%d", std::localtime(&now));
  succeed(std::string("sample-calls 20 --out data/monitor/monitor.data --seed 9 --days 1 --until ") + today);
  succeed("import");
  const std::vector<json> got = mails();
  ASSERT_GT(got.size(), 0U);
  EXPECT_EQ(got[0]["to"], json::array({"boss@office.example"}));
  EXPECT_EQ(got[0]["from"], "tallybook@office.example");
  EXPECT_TRUE(got[0]["encrypted"]);
  const std::string subject = got[0]["subject"];
  EXPECT_TRUE(contains(subject, "Long")) << subject;
  EXPECT_TRUE(contains(succeed("alarm list --json"), subject)) << subject;
}

}  // namespace
