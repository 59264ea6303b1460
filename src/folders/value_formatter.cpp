#include "folders/value_formatter.h"

#include <array>
#include <cmath>

#include "base/printf.h"
#include "folders/numbers.h"

namespace folders {

namespace {

constexpr Alignment R = Alignment::Right;
constexpr Alignment C = Alignment::Center;

constexpr std::array kKinds = {
    KindFormat{KindRelationship, Format::ContactType},
    KindFormat{KindAddress, Format::Nothing},
    KindFormat{KindNote, Format::Nothing},
    KindFormat{KindLastAccess, Format::DateTime},
    KindFormat{KindPasswordDate, Format::Date},
    KindFormat{KindLogText, Format::LogText},
    KindFormat{KindLogTime, Format::DateTime},
    KindFormat{KindTime, Format::DateTime},
    KindFormat{KindExtension, Format::Extension},
    KindFormat{KindTrunk, Format::Digits, R},
    KindFormat{KindDuration, Format::Duration, R, true},
    KindFormat{KindCostReference, Format::Money, R, true},
    KindFormat{KindRedirected, Format::Flag, C},
    KindFormat{KindCost, Format::MoneyCurrency, R},
    KindFormat{KindDirection, Format::Direction, C},
    KindFormat{KindRing, Format::Minutes, R, true},
    KindFormat{KindPriceSum, Format::Money, R, true},
    KindFormat{KindPrice, Format::Money, R, true},
    KindFormat{KindCount, Format::Digits, R, true},
    KindFormat{KindCostSum, Format::Money, R, true},
    KindFormat{KindCostAverage, Format::Money, R},
    KindFormat{KindRingAverage, Format::Minutes, R},
    KindFormat{KindPriceAverage, Format::Money, R},
    KindFormat{KindPulses, Format::Digits, R, true},
    KindFormat{KindWeekday, Format::Weekday},
    KindFormat{KindDay, Format::Digits, R},
    KindFormat{KindHour, Format::Hour},
    KindFormat{KindMonth, Format::Month},
};

// Asked for every cell, so by number. Kinds beyond the last one show their text too.
constexpr auto kByKind = [] {
  std::array<KindFormat, kKinds.back().kind + 2> all{};
  for (const KindFormat& format : kKinds) all[static_cast<std::size_t>(format.kind)] = format;
  return all;
}();

constexpr std::array kWeekdays = {"IDS_SUNDAY",   "IDS_MONDAY", "IDS_TUESDAY", "IDS_WEDNESDAY",
                                  "IDS_THURSDAY", "IDS_FRIDAY", "IDS_SATURDAY"};
constexpr std::array kMonths = {"IDS_JANUARY",   "IDS_FEBRUARY", "IDS_MARCH",    "IDS_APRIL",
                                "IDS_MAY",       "IDS_JUNE",     "IDS_JULY",     "IDS_AUGUST",
                                "IDS_SEPTEMBER", "IDS_OCTOBER",  "IDS_NOVEMBER", "IDS_DECEMBER"};
constexpr std::array kContactTypes = {"IDS_NULL",          "IDS_TIP_CLIENT", "IDS_TIP_CLIENT_SPECIAL",
                                      "IDS_TIP_CONCURENT", "IDS_TIP_PIRAT",  "IDS_TIP_COLABORATOR"};

std::int64_t wholeSeconds(const jet::Value& value) {
  constexpr double kLongest = 9e15;
  const double seconds = value.toDouble();
  return std::abs(seconds) < kLongest ? static_cast<std::int64_t>(seconds) : 0;
}

std::string minutesText(std::int64_t seconds) {
  const std::int64_t rest = seconds % 3600;
  return base::format("%.2d:%.2d", rest / 60, rest % 60);
}

std::string digits(const jet::Value& value) {
  return value.type() == jet::Type::Text ? value.toText() : std::to_string(value.toLong());
}

}  // namespace

const KindFormat& formatOfKind(int kind) {
  const auto index = static_cast<std::size_t>(kind);
  return index < kByKind.size() ? kByKind[index] : kByKind.back();
}

std::string durationText(std::int64_t seconds) {
  return base::format("%.2d:%.2d:%.2d", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string dateText(const jet::Value& value, std::string_view format) {
  const auto moment = value.toDateTime();
  return moment ? moment->format(format) : value.toText();
}

std::string ValueFormatter::weekdayName(std::int64_t number) const {
  if (number < 1 || number > 7) return "???";
  return texts_.Translate(kWeekdays[static_cast<std::size_t>(number - 1)]);
}

std::string ValueFormatter::monthName(std::int64_t number) const {
  if (number < 1 || number > 12) return "???";
  return texts_.Translate(kMonths[static_cast<std::size_t>(number - 1)]);
}

std::string ValueFormatter::contactTypeName(std::int64_t number) const {
  if (number < 0 || number > 5) return texts_.Translate("IDS_INVALID");
  return texts_.Translate(kContactTypes[static_cast<std::size_t>(number)]);
}

std::string ValueFormatter::extension(const jet::Value& value) const {
  const std::string number = value.toText();
  if (number == "0") return {};
  const std::string& name = definitions_.descriptionOfExtension(number);
  return name.empty() ? number : base::format("%s (%s)", number, name);
}

std::string ValueFormatter::formatCell(int kind, const jet::Value& value, const jet::Value& second) const {
  if (value.isNull()) return {};
  switch (formatOfKind(kind).format) {
    case Format::Text:
      return value.toText();
    case Format::Nothing:
      return {};
    case Format::ContactType:
      return contactTypeName(value.toLong(-1));
    case Format::DateTime:
      return dateText(value, kDateTimeFormat);
    case Format::Date:
      return dateText(value, kDateFormat);
    case Format::Extension:
      return extension(value);
    case Format::Digits:
      return digits(value);
    case Format::Duration:
      return wholeSeconds(value) == 0 ? std::string() : durationText(wholeSeconds(value));
    case Format::Minutes:
      return wholeSeconds(value) == 0 ? std::string() : minutesText(wholeSeconds(value));
    case Format::Money:
      return money(value.toDouble());
    case Format::MoneyCurrency:
      return base::format("%s %s", money(value.toDouble()), second.toText());
    case Format::Flag:
      return value.toDouble() == 0 ? std::string() : texts_.Translate("IDS_YES");
    case Format::Direction:
      return texts_.Translate(value.toLong() == 1 ? "IDS_INCOMING" : "IDS_OUTGOING");
    case Format::Weekday:
      return weekdayName(value.toLong());
    case Format::Hour:
      return base::format("%02d:00 - %02d:59", value.toLong(), value.toLong());
    case Format::Month:
      return monthName(value.toLong());
    case Format::LogText:
      return log_(value.toText());
  }
  return {};
}

std::string ValueFormatter::formatTotal(int kind, double sum) const {
  switch (formatOfKind(kind).format) {
    case Format::Duration:
    case Format::Minutes:
      return durationText(wholeSeconds(sum));
    case Format::Money:
      return money(sum);
    default:
      return std::to_string(static_cast<std::int64_t>(sum));
  }
}

}  // namespace folders
