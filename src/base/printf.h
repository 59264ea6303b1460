#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace base {

// One argument of a documented format. Texts are lent for the length of the call.
using FormatArgument = std::variant<std::int64_t, double, std::string_view>;

// The one printf-style function of the system: the documented formats are its first argument, letter for letter.
//
// Understands %d %i %u %x %c %s %f %e %g with flags, width and precision, and "%%". A conversion whose argument has
// another type takes the argument's natural text (a number under %s) or its leading number (a text under %d); a missing
// argument leaves the conversion standing, so that a wrong translation is seen and nothing is read out of bounds.
std::string formatArguments(std::string_view format, const FormatArgument* arguments, std::size_t count);

namespace detail {
inline FormatArgument toArgument(double value) {
  return value;
}
inline FormatArgument toArgument(std::string_view value) {
  return value;
}
inline FormatArgument toArgument(const std::string& value) {
  return std::string_view(value);
}
inline FormatArgument toArgument(const char* value) {
  return std::string_view(value);
}
template <typename Integer>
requires std::is_integral_v<Integer> FormatArgument toArgument(Integer value) {
  return static_cast<std::int64_t>(value);
}
}  // namespace detail

// format("%s\\%s", section, key)
template <typename... Arguments>
std::string format(std::string_view text, const Arguments&... arguments) {
  if constexpr (sizeof...(Arguments) == 0) {
    return formatArguments(text, nullptr, 0);
  } else {
    const FormatArgument list[] = {detail::toArgument(arguments)...};
    return formatArguments(text, list, sizeof...(Arguments));
  }
}

// The conversions of a format in order ("%d", "%-30s"), "%%" left out. Lets a test compare a text in two languages.
std::vector<std::string> placeholders(std::string_view format);

}  // namespace base
