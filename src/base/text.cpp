#include "base/text.h"

#include <utf8proc.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace base {

namespace {

char foldLetter(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
}

}  // namespace

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string foldAscii(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), foldLetter);
  return result;
}

bool equalFoldAscii(std::string_view left, std::string_view right) {
  return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                   [](char a, char b) { return foldLetter(a) == foldLetter(b); });
}

std::string fold(std::string_view text) {
  if (isAscii(text)) return foldAscii(text);
  std::string result;
  result.reserve(text.size());
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  auto left = static_cast<utf8proc_ssize_t>(text.size());
  while (left > 0) {
    utf8proc_int32_t codepoint = 0;
    const utf8proc_ssize_t used = utf8proc_iterate(bytes, left, &codepoint);
    if (used <= 0) {
      result += static_cast<char>(*bytes);
      ++bytes;
      --left;
      continue;
    }
    utf8proc_uint8_t encoded[4];
    const utf8proc_ssize_t length = utf8proc_encode_char(utf8proc_tolower(codepoint), encoded);
    result.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(length));
    bytes += used;
    left -= used;
  }
  return result;
}

bool equalFold(std::string_view left, std::string_view right) {
  if (left == right) return true;
  return fold(left) == fold(right);
}

std::vector<std::string> split(std::string_view text, std::string_view separators, bool keepEmpty) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find_first_of(separators, start);
    if (end == std::string_view::npos) end = text.size();
    if (keepEmpty || end > start) pieces.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  return pieces;
}

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
  if (from.empty()) return text;
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::int32_t leadingInteger(std::string_view text) {
  text = trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  std::int32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    return text.front() == '-' ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
  }
  return value;
}

std::string escapeHtml(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

}  // namespace base
