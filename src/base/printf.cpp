#include "base/printf.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace base {

namespace {

// A conversion inside a format: [begin, end) with its letter; end is one past the letter.
struct Conversion {
  std::size_t begin = 0;
  std::size_t end = 0;
  char letter = 0;
};

constexpr std::string_view kFlagsAndWidth = "-+ #0123456789.";
constexpr std::string_view kLetters = "diuxXcsfeEgG%";

constexpr std::array<bool, 256> oneOf(std::string_view characters) {
  std::array<bool, 256> is{};
  for (const char c : characters) is[static_cast<unsigned char>(c)] = true;
  return is;
}
constexpr auto kIsFlagOrWidth = oneOf(kFlagsAndWidth);
constexpr auto kIsLetter = oneOf(kLetters);

// The next conversion at or after `from`; letter 0 when there is none. A percent sign that starts none is plain text.
Conversion nextConversion(std::string_view format, std::size_t from) {
  for (std::size_t at = format.find('%', from); at != std::string_view::npos; at = format.find('%', at + 1)) {
    std::size_t end = at + 1;
    while (end < format.size() && kIsFlagOrWidth[static_cast<unsigned char>(format[end])]) ++end;
    if (end < format.size() && kIsLetter[static_cast<unsigned char>(format[end])]) {
      return {at, end + 1, format[end]};
    }
  }
  return {};
}

std::int64_t integerOf(const FormatArgument& argument) {
  if (const auto* integer = std::get_if<std::int64_t>(&argument)) return *integer;
  if (const auto* number = std::get_if<double>(&argument)) return static_cast<std::int64_t>(*number);
  std::int64_t result = 0;
  const auto text = std::get<std::string_view>(argument);
  std::from_chars(text.data(), text.data() + text.size(), result);
  return result;
}

double numberOf(const FormatArgument& argument) {
  if (const auto* number = std::get_if<double>(&argument)) return *number;
  if (const auto* integer = std::get_if<std::int64_t>(&argument)) return static_cast<double>(*integer);
  return std::strtod(std::string(std::get<std::string_view>(argument)).c_str(), nullptr);
}

std::string textOf(const FormatArgument& argument) {
  if (const auto* text = std::get_if<std::string_view>(&argument)) return std::string(*text);
  if (const auto* integer = std::get_if<std::int64_t>(&argument)) return std::to_string(*integer);
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.15g", std::get<double>(argument));
  return buffer.data();
}

// Prints one number through the C library; `flags` is the conversion without its letter.
template <typename Number>
void appendNumber(std::string& out, const std::string& conversion, Number value) {
  std::array<char, 512> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), conversion.c_str(), value);
  if (length < 0) return;
  if (static_cast<std::size_t>(length) < buffer.size()) {
    out.append(buffer.data(), static_cast<std::size_t>(length));
    return;
  }
  std::string large(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(large.data(), large.size(), conversion.c_str(), value);
  large.pop_back();
  out += large;
}

// Width and precision count bytes, as they did where the texts come from.
void appendText(std::string& out, std::string_view flags, std::string text) {
  const bool left = flags.find('-') != std::string_view::npos;
  const std::size_t dot = flags.find('.');
  if (dot != std::string_view::npos) {
    std::size_t precision = 0;
    std::from_chars(flags.data() + dot + 1, flags.data() + flags.size(), precision);
    text.resize(std::min(text.size(), precision));
  }
  const std::size_t digits = flags.find_first_of("123456789");
  std::size_t width = 0;
  if (digits != std::string_view::npos && (dot == std::string_view::npos || digits < dot)) {
    std::from_chars(flags.data() + digits, flags.data() + flags.size(), width);
  }
  const std::size_t padding = width > text.size() && width < 10000 ? width - text.size() : 0;
  if (!left) out.append(padding, ' ');
  out += text;
  if (left) out.append(padding, ' ');
}

// The fewest digits that "%d", "%.2d" and "%02d" ask for, the forms that lists are full of; 0 for all others.
std::size_t fewestDigits(std::string_view flags) {
  if (flags.empty()) return 1;
  if (flags.size() != 2 || (flags[0] != '.' && flags[0] != '0') || flags[1] < '1' || flags[1] > '9') return 0;
  return static_cast<std::size_t>(flags[1] - '0');
}

void appendInteger(std::string& out, std::string_view flags, char letter, std::int64_t value) {
  const std::size_t fewest = letter == 'd' && (value >= 0 || flags.empty()) ? fewestDigits(flags) : 0;
  if (fewest == 0) return appendNumber(out, "%" + std::string(flags) + "ll" + letter, static_cast<long long>(value));
  std::array<char, 24> digits{};
  const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  const auto count = static_cast<std::size_t>(end - digits.data());
  if (count < fewest) out.append(fewest - count, '0');
  out.append(digits.data(), count);
}

void appendConversion(std::string& out, std::string_view conversion, char letter, const FormatArgument& argument) {
  const std::string_view flags = conversion.substr(1, conversion.size() - 2);
  switch (letter) {
    case 's':
      if (const auto* text = std::get_if<std::string_view>(&argument); text != nullptr && flags.empty()) {
        out += *text;
        return;
      }
      return appendText(out, flags, textOf(argument));
    case 'c':
      return appendText(out, flags, std::string(1, static_cast<char>(integerOf(argument))));
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
      return appendInteger(out, flags, letter, integerOf(argument));
    default:
      appendNumber(out, std::string(conversion), numberOf(argument));
  }
}

// Enough for most results, so that they are made in one piece.
std::size_t likelySize(std::string_view format, const FormatArgument* arguments, std::size_t count) {
  constexpr std::size_t kNumber = 8;
  std::size_t size = format.size();
  for (std::size_t i = 0; i < count; ++i) {
    const auto* const text = std::get_if<std::string_view>(&arguments[i]);
    size += text != nullptr ? text->size() : kNumber;
  }
  return size;
}

}  // namespace

std::string formatArguments(std::string_view format, const FormatArgument* arguments, std::size_t count) {
  std::string out;
  out.reserve(likelySize(format, arguments, count));
  std::size_t position = 0;
  std::size_t used = 0;
  for (Conversion next = nextConversion(format, 0); next.letter != 0; next = nextConversion(format, position)) {
    out += format.substr(position, next.begin - position);
    position = next.end;
    if (next.letter == '%') {
      out += '%';
    } else if (used < count) {
      appendConversion(out, format.substr(next.begin, next.end - next.begin), next.letter, arguments[used++]);
    } else {
      out += format.substr(next.begin, next.end - next.begin);
    }
  }
  out += format.substr(position);
  return out;
}

std::vector<std::string> placeholders(std::string_view format) {
  std::vector<std::string> result;
  for (Conversion next = nextConversion(format, 0); next.letter != 0; next = nextConversion(format, next.end)) {
    if (next.letter != '%') result.emplace_back(format.substr(next.begin, next.end - next.begin));
  }
  return result;
}

}  // namespace base
