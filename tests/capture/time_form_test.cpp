#include "capture/format/time_form.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "capture/format/source_settings.h"
#include "capture/format/zone.h"

using capture::DurationForm;
using capture::TimeForm;

TEST(TimeForm, ReadsHoursOfBothClocks) {
  const TimeForm form("%H:%M%p");
  EXPECT_EQ(form.read("12:05AM", false)->hour, 0);
  EXPECT_EQ(form.read("12:05p", false)->hour, 12);
  EXPECT_EQ(form.read("11:05PM", false)->hour, 23);
  EXPECT_FALSE(form.read("13:05PM", false));
  EXPECT_FALSE(form.read("00:05AM", false));
  const TimeForm plain("%H:%M");
  EXPECT_EQ(plain.read("12:05", true)->hour, 0);
  EXPECT_FALSE(plain.read("13:05", true));
  EXPECT_EQ(plain.read("23:59", false)->hour, 23);
  for (const char* wrong : {"24:00", "25:10", "9:14", "09:60", "09:14 ", "09-14", ""}) {
    EXPECT_FALSE(plain.read(wrong, false)) << wrong;
  }
}

TEST(TimeForm, PutsDayAndMonthInTheOrderOfTheSite) {
  const TimeForm form("%m/%d/%y");
  EXPECT_EQ(form.read("03/04/26", false)->month, 3);
  EXPECT_EQ(form.ordered("dmy").read("03/04/26", false)->month, 4);
  EXPECT_EQ(form.ordered("mdy").read("03/04/26", false)->month, 3);
  const TimeForm yearFirst("%Y/%m/%d");
  EXPECT_FALSE(yearFirst.hasOrder());
  EXPECT_EQ(yearFirst.ordered("dmy").read("2026/03/04", false)->month, 3);
  EXPECT_THROW(TimeForm("%Q"), std::invalid_argument);
  EXPECT_THROW(TimeForm("%"), std::invalid_argument);
}

TEST(TimeForm, ReadsDurationsOrNothing) {
  const struct {
    DurationForm form;
    const char* text;
    std::int64_t seconds;  // -1: none
  } cases[] = {
      {DurationForm::HoursMinutesSeconds, "00:02:31", 151},
      {DurationForm::HoursMinutesSeconds, "00:75:00", -1},
      {DurationForm::HoursMinutesSeconds, "99:99:99", -1},
      {DurationForm::HoursMinutesSeconds, "00:02:3", -1},
      {DurationForm::HoursMinutesTicked, "00:11'05", 665},
      {DurationForm::MinutesTicked, "0'41", 41},
      {DurationForm::MinutesSeconds, "00:09", 9},
      {DurationForm::MinutesSeconds, "00:61", -1},
      {DurationForm::Tenths, "0025", 150},
      {DurationForm::Tenths, "9597", 35982},
      {DurationForm::Tenths, "9999", 0},
      {DurationForm::Tenths, "0605", -1},
      {DurationForm::Seconds, "151", 151},
      {DurationForm::Seconds, "-1", -1},
      {DurationForm::Seconds, "9999999999", -1},
      {DurationForm::MarkedSeconds, "S=000151", 151},
      {DurationForm::MarkedSeconds, "000151", -1},
      {DurationForm::MarkedSeconds, "S=", -1},
      {DurationForm::Milliseconds, "48700", 48},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(capture::readDuration(c.form, c.text).value_or(-1), c.seconds) << c.text;
  }
}

TEST(Zone, TellsTheTwoHalvesOfTheOctoberNightApart) {
  const capture::Zone zone("Europe/Bucharest");
  const auto instant = [](std::int64_t seconds) { return std::chrono::sys_seconds(std::chrono::seconds(seconds)); };
  EXPECT_EQ(zone.toLocal(instant(1792888200)).stored(), "2026-10-25 03:30:00");
  EXPECT_EQ(zone.toLocal(instant(1792891800)).stored(), "2026-10-25 03:30:00");
  EXPECT_EQ(zone.toLocal(instant(1792895400)).stored(), "2026-10-25 04:30:00");
  EXPECT_THROW(capture::Zone("Europe/Nowhere"), capture::SettingError);
}
