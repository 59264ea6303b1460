#include "schedule/schedule.h"

#include <gtest/gtest.h>

#include "folders/folder_office.h"
#include "mail/address.h"
#include "schedule/mail_settings.h"
#include "schedule/runner.h"

namespace schedule {
namespace {

base::DateTime at(const char* stored) {
  return *base::DateTime::fromStored(stored);
}

TEST(ScheduleTimes, ADayHasOneDueTime) {
  struct Case {
    const char* days;
    const char* time;
    const char* after;
    const char* due;
  };
  for (const Case& c : {
           Case{"daily", "07:00", "2026-11-25 06:59:59", "2026-11-25 07:00:00"},
           Case{"daily", "07:00", "2026-11-25 07:00:00", "2026-11-26 07:00:00"},
           Case{"workdays", "07:00", "2026-11-27 08:00:00", "2026-11-30 07:00:00"},
           Case{"sun, tue", "23:59", "2026-11-25 00:00:00", "2026-11-29 23:59:00"},
           Case{"1", "00:00", "2026-11-25 00:00:00", "2026-12-01 00:00:00"},
           Case{"31", "08:00", "2027-02-01 00:00:00", "2027-02-28 08:00:00"},
           Case{"last", "08:00", "2028-02-28 09:00:00", "2028-02-29 08:00:00"},
           // Clocks go forward at 03:00 on that night, and back at 04:00 on the other: the same wall clock shows 03:30
           // twice there, and the second one asks for the next day.
           Case{"daily", "02:30", "2026-03-29 01:59:59", "2026-03-29 02:30:00"},
           Case{"daily", "03:30", "2026-10-25 03:30:00", "2026-10-26 03:30:00"},
       }) {
    const auto days = parseDays(c.days);
    ASSERT_TRUE(days) << c.days;
    EXPECT_EQ(nextDue(*days, *parseTime(c.time), at(c.after)).stored(), c.due) << c.days << " after " << c.after;
  }
  for (const char* wrong : {"", "0", "32", "monday", "mon;tue", "-1", "daily,mon"})
    EXPECT_FALSE(parseDays(wrong)) << wrong;
  for (const char* wrong : {"", "7", "24:00", "7:5", "07:60", "07:00:00"}) EXPECT_FALSE(parseTime(wrong)) << wrong;
}

TEST(ScheduleTimes, PeriodsEndBeforeTheReport) {
  const auto text = [](const char* period) {
    const auto found = periodOf(period, at("2026-03-02 07:00:00"));  // a Monday
    return found ? found->from.stored() + " " + found->to.stored() : std::string();
  };
  EXPECT_EQ(text("yesterday"), "2026-03-01 00:00:00 2026-03-01 23:59:59");
  EXPECT_EQ(text("last-week"), "2026-02-23 00:00:00 2026-03-01 23:59:59");
  EXPECT_EQ(text("last-month"), "2026-02-01 00:00:00 2026-02-28 23:59:59");
  EXPECT_EQ(text("month-so-far"), "2026-03-01 00:00:00 2026-03-02 07:00:00");
  EXPECT_EQ(text("all"), "");
}

TEST(Mail, AddressesCannotCarryHeaders) {
  EXPECT_EQ(mail::parseAddresses("a@b.example, c.d+e@f-g.example;a@b.example"),
            (std::vector<std::string>{"a@b.example", "c.d+e@f-g.example"}));
  for (const char* wrong : {"a@b.example\nBcc: x@y.example", "a@b.example\r\n", "plain", "@b", "a@", "a@b@c",
                            "a..b@c.example", "<a@b.example>", "\"a b\"@c.example", "ă@b.example"}) {
    EXPECT_THROW((void)mail::parseAddresses(wrong), std::invalid_argument) << wrong;
  }
  EXPECT_EQ(mail::headerText("Calls\r\nBcc: x"), "Calls  Bcc: x");
  EXPECT_EQ(mail::headerText("Apeluri în mai"), "=?UTF-8?B?QXBlbHVyaSDDrm4gbWFp?=");
}

class RunnerTest : public testing::Test {
 protected:
  RunnerTest() {
    office.main->execute("insert into Groups (RecordID, Name, ObjectAccess) values (1, 'Readers', '9;1')");
    office.main->execute("insert into Users (RecordID, Name, Groups, Flags) values (1, 'ana', ';1;', 0)");
    // Nothing listens there: every mail fails at once.
    MailSettings settings;
    settings.server.host = "127.0.0.1";
    settings.server.port = 1;
    settings.server.encryption = mail::Encryption::None;
    settings.from = "t@x.example";
    writeMailSettings(office.config, settings);
    daily.name = "Daily";
    daily.recipients = "a@x.example, b@x.example";
    daily.user = "ana";
    daily.nextRun = at("2025-03-31 07:00:00");
    table.save(daily);
  }
  void stepThrough(Runner& runner) {
    do {
      runner.step();
    } while (runner.sending());
  }
  Schedule stored() { return *table.find("daily"); }

  FolderOffice office;
  security::CurrentUser session;
  security::UserDirectory users{{*office.main, office.tags, office.texts, office.person, office.clock}, session};
  ScheduleTable table{*office.main};
  ReportMaker::Parts parts{*office.main, office.texts, office.definitions, office.currencies,
                           office.log,   users,        office.clock};
  Schedule daily;
  std::vector<std::string> said;
};

TEST_F(RunnerTest, MissedTimesAreMadeUpOnceByOneOfTwoCopies) {
  office.clock.time = at("2025-04-04 14:00:00");  // five mornings were missed
  const auto say = [this](base::Priority, const std::string& line) { said.push_back(line); };
  Runner one(parts, office.config, say);
  Runner other(parts, office.config, say);
  one.step();
  EXPECT_TRUE(one.sending());
  other.step();
  EXPECT_FALSE(other.sending());
  stepThrough(one);
  const Schedule after = stored();
  EXPECT_EQ(after.nextRun.stored(), "2025-04-05 07:00:00");
  EXPECT_EQ(after.runFor->stored(), "2025-04-04 07:00:00");
  EXPECT_EQ(after.waiting, "a@x.example, b@x.example");
  EXPECT_EQ(said.size(), 1u);
  EXPECT_NE(after.lastError.find("127.0.0.1:1 did not take the mail to b@x.example"), std::string::npos)
      << after.lastError;
}

// In spring there is no 02:30 on that night, in autumn there are two: one report each.
TEST_F(RunnerTest, TheNightOnWhichClocksChangeHasOneReport) {
  struct {
    const char* due;
    std::vector<const char*> looks;  // what the clock on the wall shows, one after the other
    const char* sentAt;
  } const nights[] = {
      {"2025-03-30 02:30:00",
       {"2025-03-30 01:59:00", "2025-03-30 03:00:00", "2025-03-30 03:01:00"},
       "2025-03-30 03:00:00"},
      {"2025-10-26 02:30:00",
       {"2025-10-26 02:29:00", "2025-10-26 02:30:00", "2025-10-26 02:59:00", "2025-10-26 02:00:00",
        "2025-10-26 02:30:00", "2025-10-26 03:00:00"},
       "2025-10-26 02:30:00"},
  };
  for (const auto& night : nights) {
    Schedule own = stored();
    own.minuteOfDay = 150;
    own.nextRun = at(night.due);
    own.runFor.reset();
    own.waiting.clear();
    table.save(own);
    Runner runner(parts, office.config, [](base::Priority, const std::string&) {});
    std::vector<std::string> claimed;
    for (const char* look : night.looks) {
      office.clock.time = at(look);
      const base::DateTime next = stored().nextRun;
      stepThrough(runner);
      if (stored().nextRun != next) claimed.emplace_back(look);
    }
    EXPECT_EQ(claimed, std::vector<std::string>{night.sentAt}) << night.due;
    EXPECT_EQ(stored().runFor->stored(), night.due);
  }
}

TEST_F(RunnerTest, AMailThatCannotGoIsTriedForADayAndToldTwice) {
  const auto say = [this](base::Priority, const std::string& line) { said.push_back(line); };
  Runner runner(parts, office.config, say);
  int tries = 0;
  const base::DateTime first = office.clock.time;
  for (; office.clock.time < first.plusSeconds(16 * 3600); office.clock.time = office.clock.time.plusSeconds(60)) {
    const std::int32_t before = stored().attempts;
    stepThrough(runner);
    tries += stored().attempts != before ? 1 : 0;
  }
  EXPECT_GT(tries, 10);
  EXPECT_LT(tries, 26);
  EXPECT_EQ(said.size(), 1u) << "the same fault is not told at every try";
  EXPECT_EQ(stored().nextRun.stored(), "2025-04-01 07:00:00");
}

TEST_F(RunnerTest, FaultsOfTheScheduleAreToldNotThrown) {
  const auto say = [this](base::Priority, const std::string& line) { said.push_back(line); };
  Runner runner(parts, office.config, say);
  office.main->execute("update Users set Flags = 2");
  stepThrough(runner);
  ASSERT_EQ(said.size(), 1u);
  EXPECT_NE(said[0].find("The user ana is disabled."), std::string::npos) << said[0];
  EXPECT_EQ(stored().attempts, 1);
}

TEST_F(RunnerTest, WhatCannotBeMadeIsRefusedBeforehand) {
  ReportMaker maker(parts);
  struct Case {
    void (*spoil)(Schedule&);
    const char* message;
  };
  for (const Case& c : {
           Case{[](Schedule& s) { s.folder = 99; }, "Folder 99 shows no calls"},
           Case{[](Schedule& s) { s.columns = "400,9"; }, "no column \"9\""},
           Case{[](Schedule& s) { s.user = "bob"; }, "no user bob"},
           Case{[](Schedule& s) { s.language = "XX"; }, "no language XX"},
           Case{[](Schedule& s) { s.filter = "Nothing=1"; }, "Nothing"},
           Case{[](Schedule& s) { s.recipients = "a@b\nc"; }, "line end"},
           Case{[](Schedule& s) { s.note = std::string(1 << 20, 'x'); }, "longer than 4000"},
           Case{[](Schedule& s) { s.days = "never"; }, "names no days"},
           Case{[](Schedule& s) { s.name = "a\nb"; }, "name"},
       }) {
    Schedule spoilt = daily;
    c.spoil(spoilt);
    try {
      requireSound(spoilt);
      maker.requirePossible(spoilt);
      ADD_FAILURE() << c.message;
    } catch (const std::invalid_argument& refusal) {
      EXPECT_NE(std::string(refusal.what()).find(c.message), std::string::npos) << refusal.what();
    }
  }
}

}  // namespace
}  // namespace schedule
