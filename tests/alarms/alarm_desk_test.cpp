#include "alarms/alarm_desk.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "alarms/mail_text.h"
#include "alarms/run_command.h"
#include "filter/call_office.h"

namespace {

using alarms::Rule;

class Desk : public ::testing::Test, protected CallOffice {
 protected:
  Desk() { definitions.countryCode = "40"; }

  void record(alarms::AlarmDesk& desk, const char* extension, double cost) {
    ingest::RecordedCall told;
    told.at = clock.now();
    told.number = "\"; touch broken; \"";
    told.extension = extension;
    told.seconds = 60;
    told.cost = cost;
    call({{"DateTime", told.at},
          {"DialNumber", told.number},
          {"Extension", told.extension},
          {"TotalTime", told.seconds},
          {"Incoming", 0},
          {"Price_Ref", cost}});
    told.recordId = ++calls_;
    if (desk.listens()) desk.recorded(told);
  }
  std::size_t alarms() { return alarms::listAlarms(*main, 100).size(); }

  alarms::DeskServices services_{*main, config, definitions, currencies, texts, log, clock};

 private:
  std::int64_t calls_ = 0;
};

TEST_F(Desk, AnAlarmIsKeptOnceWhateverIsStartedAnew) {
  auto desk = std::make_unique<alarms::AlarmDesk>(services_);
  record(*desk, "201", 3);
  EXPECT_EQ(alarms(), 0U);
  // A rule counts the calls of its period that were there before it.
  alarms::saveRule(*main, {.name = "Budget", .subject = alarms::Subject::Extension, .limit = 10});
  record(*desk, "202", 4);
  record(*desk, "201", 5);
  EXPECT_EQ(alarms(), 1U);
  desk = std::make_unique<alarms::AlarmDesk>(services_);
  record(*desk, "201", 1);
  EXPECT_EQ(alarms(), 1U);
  record(*desk, "201", 2);
  record(*desk, "201", 2);
  const auto list = alarms::listAlarms(*main, 100);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].step, 100);
  EXPECT_DOUBLE_EQ(list[0].amount, 11);
  EXPECT_EQ(list[1].step, 75);
  EXPECT_TRUE(alarms::acknowledge(*main, list[0].id, "ana", clock.now()));
  EXPECT_FALSE(alarms::acknowledge(*main, list[0].id, "ana", clock.now()));
  EXPECT_EQ(alarms::listAlarms(*main, 1)[0].acknowledged, "ana");
}

// An alarm of a month's budget stays as long as the month can last, whatever is set.
TEST_F(Desk, AlarmsOfOldDaysAreDeletedWhenThatIsSet) {
  alarms::saveRule(*main, {.name = "Budget", .subject = alarms::Subject::Extension, .limit = 1});
  const base::DateTime start = clock.time;
  const auto after = [&](std::int64_t days) {
    clock.time = start.plusDays(days);
    alarms::AlarmDesk(services_).step({});
    return alarms();
  };
  alarms::AlarmDesk desk(services_);
  record(desk, "201", 2);
  ASSERT_EQ(alarms(), 1U);
  EXPECT_EQ(after(400), 1U);
  databaseSetting("Alarm_DeleteAfter", 5);
  EXPECT_EQ(after(32), 1U);
  EXPECT_EQ(after(33), 0U);
}

TEST_F(Desk, AMailThatDoesNotGoIsInTheLogWithItsReason) {
  alarms::saveRule(*main, {.name = "Dear", .kind = alarms::Kind::Call, .limit = 1, .mail = "a@b.ro"});
  alarms::AlarmDesk desk(services_);
  record(desk, "201", 2);
  desk.step([](const std::string&, const std::string&, const std::string&) { return std::string("no such host"); });
  const jet::Snapshot told = main->openSnapshot("select [Desc] from Log where [Level] = 9");
  ASSERT_EQ(told.rowCount(), 1U);
  EXPECT_NE(told.at(0, 0).toText().find("a@b.ro could not be sent (no such host)"), std::string::npos);
}

TEST_F(Desk, AMailThatDoesNotGoIsTriedAgainAndEveryAddressGetsItOnce) {
  const auto commands = folder / "commands";
  alarms::saveRule(*main, {.name = "Dear",
                           .kind = alarms::Kind::Call,
                           .limit = 1,
                           .mail = "a@b.ro, c@d.ro",
                           .command = "echo x >> '" + commands.string() + "'"});
  alarms::AlarmDesk desk(services_);
  record(desk, "201", 2);
  std::vector<std::string> tried;
  bool down = true;
  const alarms::SendMail send = [&](const std::string& to, const std::string&, const std::string&) {
    tried.push_back(to);
    return std::string(down && to == "c@d.ro" ? "no such host" : "");
  };
  const auto triedAfter = [&](std::int64_t seconds) {
    tried.clear();
    clock.time = clock.time.plusSeconds(seconds);
    desk.step(send);
    return tried;
  };
  using Addresses = std::vector<std::string>;
  EXPECT_EQ(triedAfter(0), (Addresses{"a@b.ro", "c@d.ro"}));
  EXPECT_EQ(triedAfter(299), Addresses());
  EXPECT_EQ(triedAfter(1), Addresses{"c@d.ro"});
  EXPECT_EQ(triedAfter(300), Addresses());  // pauses grow
  down = false;
  EXPECT_EQ(triedAfter(300), Addresses{"c@d.ro"});
  EXPECT_EQ(triedAfter(7200), Addresses());
  EXPECT_EQ(std::filesystem::file_size(commands), 2U);  // ran once

  // What one copy could not send, another does.
  down = true;
  record(desk, "202", 2);
  EXPECT_EQ(triedAfter(0), (Addresses{"a@b.ro", "c@d.ro"}));
  alarms::AlarmDesk other(services_);
  tried.clear();
  down = false;
  other.step(send);
  EXPECT_EQ(tried.back(), "c@d.ro");
  EXPECT_EQ(std::filesystem::file_size(commands), 4U);
}

TEST_F(Desk, TheCallIsInTheCommandsEnvironmentAndNotInItsText) {
  const auto file = folder / "seen";
  alarms::saveRule(*main,
                   {.name = "Dear",
                    .kind = alarms::Kind::Call,
                    .limit = 1,
                    .mail = "a@b.ro",
                    .command = "printf %s \"$TALLYBOOK_NUMBER $TALLYBOOK_EXTENSION\" > '" + file.string() + "'"});
  alarms::AlarmDesk desk(services_);
  record(desk, "201", 2);
  std::vector<std::string> mails;
  const alarms::SendMail send = [&](const std::string& to, const std::string&, const std::string&) {
    mails.push_back(to);
    return std::string();
  };
  desk.step(send);
  desk.step(send);
  std::string seen;
  std::getline(std::ifstream(file), seen);
  EXPECT_EQ(seen, "\"; touch broken; \" 201");
  EXPECT_EQ(mails, std::vector<std::string>{"a@b.ro"});
  EXPECT_EQ(alarms::runCommand("exit 3", {}), "ended with status 3");
}

TEST_F(Desk, ACommandReadsNothingOfTheServicesInput) {
  int input[2];
  ASSERT_EQ(pipe(input), 0);
  ASSERT_EQ(write(input[1], "x\n", 2), 2);
  const int kept = dup(STDIN_FILENO);
  dup2(input[0], STDIN_FILENO);
  EXPECT_EQ(alarms::runCommand("! read line", {}), "");
  dup2(kept, STDIN_FILENO);
  for (const int end : {input[0], input[1], kept}) close(end);
}

TEST_F(Desk, ASilenceOfThePastIsFoundOnceAndEnds) {
  for (const char* at : {"2025-03-03 09:00:00", "2025-03-03 09:20:00", "2025-03-03 11:00:00"}) {
    call({{"DateTime", *base::DateTime::fromStored(at)}, {"DialNumber", "1"}, {"Extension", "201"}, {"Incoming", 0}});
  }
  const auto day = *base::DateTime::fromParts(2025, 3, 3);
  const auto found = alarms::replay(services_, {.name = "Line", .kind = alarms::Kind::Silence, .minutes = 60}, day,
                                    day.plusSeconds(11 * 3600 + 1800));
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].at->format("%H:%M"), "10:21");
  EXPECT_EQ(found[0].step, 100);
  EXPECT_EQ(found[1].at->format("%H:%M"), "11:00");
  EXPECT_EQ(found[1].step, 0) << "a call: the line works";
}

TEST_F(Desk, RulesThatMakeNoSenseAreRefused) {
  const Rule wrong[] = {{.name = "", .limit = 1},
                        {.name = "a\"b", .limit = 1},
                        {.name = "no limit"},
                        {.name = "of", .of = "201", .limit = 1},
                        {.name = "mail", .limit = 1, .mail = "a@b\nBcc: c@d"},
                        {.name = "mail", .limit = 1, .mail = "-oQ/tmp@x"},
                        {.name = "nowhere", .kind = alarms::Kind::Destination},
                        {.name = "prefix", .kind = alarms::Kind::Destination, .prefixes = "x"},
                        {.name = "short", .kind = alarms::Kind::Short, .limit = 3},
                        {.name = "silence", .kind = alarms::Kind::Silence}};
  for (const Rule& rule : wrong) EXPECT_THROW(alarms::saveRule(*main, rule), alarms::RuleError) << rule.name;
  EXPECT_TRUE(alarms::loadRules(*main).empty());
}

TEST(AlarmMail, ItsSubjectIsOneHeaderInAnyLanguage) {
  const std::string mail = alarms::mailText("", "a@b.ro", "Buget: țară\nBcc: x@y", "text\n");
  EXPECT_EQ(mail.find("\nBcc"), std::string::npos);
  EXPECT_EQ(mail.substr(0, mail.find("MIME")), "To: a@b.ro\nSubject: =?UTF-8?B?QnVnZXQ6IMibYXLEgyBCY2M6IHhAeQ==?=\n");
}

}  // namespace
