#include "jet/value.h"

#include <array>
#include <charconv>
#include <cmath>

#include "base/printf.h"
#include "base/text.h"

namespace jet {

namespace {

// 2^63: the first double beyond a 64-bit integer.
constexpr double kLongLimit = 9223372036854775808.0;

std::optional<double> parseNumber(std::string_view text) {
  text = base::trim(text);
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::int64_t> roundToLong(double number) {
  const double rounded = std::nearbyint(number);  // the default rounding mode: half to even
  if (!(rounded >= -kLongLimit && rounded < kLongLimit)) return std::nullopt;
  return static_cast<std::int64_t>(rounded);
}

std::optional<std::int64_t> parseLong(std::string_view text) {
  const std::string_view trimmed = base::trim(text);
  std::int64_t value = 0;
  const char* const end = trimmed.data() + trimmed.size();
  const auto result = std::from_chars(trimmed.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end) return value;
  const auto number = parseNumber(text);
  return number ? roundToLong(*number) : std::nullopt;
}

std::string numberText(double number) {
  if (number == 0) return "0";  // no minus before it
  std::array<char, 40> buffer{};
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::general, 15);
  std::string text(buffer.data(), result.ptr);
  const std::size_t exponent = text.find('e');
  if (exponent != std::string::npos) text[exponent] = 'E';
  return text;
}

std::string dateText(base::DateTime date) {
  const auto p = date.parts();
  const std::string day = base::format("%d/%d/%d", p.month, p.day, p.year);
  if (date.secondOfDay() == 0 && date.dayNumber() != 0) return day;
  const std::string time = base::format("%d:%02d:%02d", p.hour, p.minute, p.second);
  return date.dayNumber() == 0 ? time : day + " " + time;
}

std::optional<bool> parseBool(std::string_view text) {
  const std::string_view word = base::trim(text);
  for (const std::string_view yes : {"true", "yes", "on"}) {
    if (base::equalFoldAscii(word, yes)) return true;
  }
  for (const std::string_view no : {"false", "no", "off"}) {
    if (base::equalFoldAscii(word, no)) return false;
  }
  const auto number = parseNumber(text);
  return number ? std::optional<bool>(*number != 0) : std::nullopt;
}

}  // namespace

bool Value::toBool(bool fallback) const {
  switch (type()) {
    case Type::Null:
      return fallback;
    case Type::Boolean:
      return boolean();
    case Type::Long:
      return integer() != 0;
    case Type::Double:
      return number() != 0;
    case Type::Text:
      return parseBool(text()).value_or(fallback);
    case Type::DateTime:
      return dateTime().secondsSinceDayZero() != 0;
  }
  return fallback;
}

std::int64_t Value::toLong(std::int64_t fallback) const {
  switch (type()) {
    case Type::Null:
      return fallback;
    case Type::Boolean:
      return boolean() ? -1 : 0;
    case Type::Long:
      return integer();
    case Type::Double:
      return roundToLong(number()).value_or(fallback);
    case Type::Text:
      return parseLong(text()).value_or(fallback);
    case Type::DateTime:
      return roundToLong(dateTime().serial()).value_or(fallback);
  }
  return fallback;
}

double Value::toDouble(double fallback) const {
  return asNumber().value_or(fallback);
}

std::optional<double> Value::asNumber() const {
  switch (type()) {
    case Type::Null:
      return std::nullopt;
    case Type::Boolean:
      return boolean() ? -1.0 : 0.0;
    case Type::Long:
      return static_cast<double>(integer());
    case Type::Double:
      return number();
    case Type::Text:
      return parseNumber(text());
    case Type::DateTime:
      return dateTime().serial();
  }
  return std::nullopt;
}

std::string Value::toText() const {
  switch (type()) {
    case Type::Null:
      return {};
    case Type::Boolean:
      return boolean() ? "-1" : "0";
    case Type::Long:
      return std::to_string(integer());
    case Type::Double:
      return numberText(number());
    case Type::Text:
      return text();
    case Type::DateTime:
      return dateText(dateTime());
  }
  return {};
}

std::optional<base::DateTime> Value::toDateTime() const {
  switch (type()) {
    case Type::DateTime:
      return dateTime();
    case Type::Text: {
      const std::string_view trimmed = base::trim(text());
      const auto stored = base::DateTime::fromStored(trimmed);
      return stored ? stored : base::DateTime::fromUsText(trimmed);
    }
    case Type::Long:
    case Type::Double:
      return base::DateTime::fromSerial(toDouble());
    default:
      return std::nullopt;
  }
}

void Value::setText(std::string_view text) {
  if (auto* held = std::get_if<std::string>(&data_)) {
    held->assign(text);
  } else {
    data_.emplace<std::string>(text);
  }
}

}  // namespace jet
