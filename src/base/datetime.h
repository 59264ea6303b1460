#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace base {

// A date and time of day to the second, in local time, from year 100 to 9999. A bare time of day is on 1899-12-30.
// Stored as seconds since 1899-12-30 00:00:00 (the database dialect's day 0), so comparing and adding are integer work.
class DateTime {
 public:
  struct Parts {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
  };

  DateTime() = default;  // 1899-12-30 00:00:00
  explicit constexpr DateTime(std::int64_t secondsSinceDayZero) : seconds_(secondsSinceDayZero) {}

  // Nothing when a part is out of its range (30 February, hour 24, second 60, year outside 100..9999).
  static std::optional<DateTime> fromParts(const Parts& parts);
  static std::optional<DateTime> fromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
  // "YYYY-MM-DD HH:MM:SS", the form of the database files; the time may be missing. Nothing when it is not a date.
  static std::optional<DateTime> fromStored(std::string_view text);
  // "m/d/yyyy", "m/d/yyyy h:n[:s]" or "h:n[:s]", with an optional am/pm: the form inside number signs and in settings.
  // Two-digit years 00-29 are 20xx, 30-99 19xx; an impossible month with a possible day is read as day/month.
  static std::optional<DateTime> fromUsText(std::string_view text);
  // Days since 1899-12-30; the fraction is the time of day, its sign ignored. Rounded to the second; nothing when the
  // result lies outside the years 100..9999 or the number is not finite.
  static std::optional<DateTime> fromSerial(double days);

  [[nodiscard]] Parts parts() const;
  [[nodiscard]] std::string stored() const;  // "YYYY-MM-DD HH:MM:SS"
  [[nodiscard]] double serial() const;       // days since 1899-12-30 as in fromSerial
  [[nodiscard]] std::int64_t secondsSinceDayZero() const { return seconds_; }
  [[nodiscard]] std::int64_t dayNumber() const;  // whole days since 1899-12-30, floored
  [[nodiscard]] int secondOfDay() const;         // 0..86399
  [[nodiscard]] int weekday() const;             // 0 Sunday .. 6 Saturday
  [[nodiscard]] DateTime midnight() const;       // the same day at 00:00:00
  [[nodiscard]] DateTime plusSeconds(std::int64_t seconds) const { return DateTime(seconds_ + seconds); }
  [[nodiscard]] DateTime plusDays(std::int64_t days) const { return DateTime(seconds_ + days * 86400); }

  // The documented date formats: %d %m %Y %H %M %S and %% are understood, everything else is copied.
  [[nodiscard]] std::string format(std::string_view format) const;

  auto operator<=>(const DateTime&) const = default;

 private:
  std::int64_t seconds_ = 0;
};

// Days of a month, 28..31; month 1..12.
int daysInMonth(int year, int month);

}  // namespace base
