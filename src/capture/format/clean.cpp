#include "capture/format/clean.h"

#include <utf8proc.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "base/codepage.h"
#include "base/text.h"

namespace capture {

namespace {

constexpr std::string_view kDigits = "0123456789";
// Beside digits: what a number may hold and what people write between its digits.
constexpr std::string_view kNumberMarks = "*#+X?";
constexpr std::string_view kSeparators = " \t-/().,:;='\"_~";

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Next character of valid UTF-8, taken off the front; -1 for a byte that is none.
utf8proc_int32_t takeCodepoint(std::string_view& text, std::string_view& bytes) {
  utf8proc_int32_t codepoint = -1;
  const auto used = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                     static_cast<utf8proc_ssize_t>(text.size()), &codepoint);
  const std::size_t length = used > 0 ? static_cast<std::size_t>(used) : 1;
  bytes = text.substr(0, length);
  text.remove_prefix(length);
  return used > 0 ? codepoint : -1;
}

// One character in a code page: itself, its base letter, or "?".
std::string inCodepage(std::string_view letter, int codepage) {
  std::string bytes = base::encode(letter, codepage);
  if (bytes != "?") return bytes;
  const std::string text(letter);
  utf8proc_uint8_t* mapped = utf8proc_NFD(reinterpret_cast<const utf8proc_uint8_t*>(text.c_str()));
  if (mapped == nullptr) return "?";
  std::string_view rest(reinterpret_cast<const char*>(mapped));
  std::string_view base;
  if (takeCodepoint(rest, base) >= 0 && base != letter) bytes = base::encode(base, codepage);
  std::free(mapped);
  return bytes;
}

// Letters and their marks as one character each where that exists.
std::string composed(std::string text) {
  std::erase(text, '\0');  // would end the text for the library
  utf8proc_uint8_t* mapped = utf8proc_NFC(reinterpret_cast<const utf8proc_uint8_t*>(text.c_str()));
  if (mapped == nullptr) return text;
  std::string out(reinterpret_cast<const char*>(mapped));
  std::free(mapped);
  return out;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isControl(utf8proc_int32_t codepoint) {
  return (codepoint >= 0 && codepoint < 0x20) || (codepoint >= 0x7F && codepoint < 0xA0);
}

// What is in the last pair of angle brackets; the text itself when there is none.
std::string_view inBrackets(std::string_view text) {
  const std::size_t close = text.rfind('>');
  if (close == std::string_view::npos) return text;
  const std::size_t open = text.rfind('<', close);
  return open == std::string_view::npos ? text : text.substr(open + 1, close - open - 1);
}

std::string_view withoutAddress(std::string_view text) {
  for (std::string_view scheme : {"sip:", "sips:", "tel:"}) {
    if (base::equalFoldAscii(text.substr(0, scheme.size()), scheme)) {
      text.remove_prefix(scheme.size());
      text = text.substr(0, text.find(';'));
      break;
    }
  }
  return text.substr(0, text.find('@'));
}

bool hasLetters(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return !isDigit(c) && kNumberMarks.find(c) == std::string_view::npos &&
           kSeparators.find(c) == std::string_view::npos;
  });
}

// The longest run of digits, hidden ones included, with a "+" in front of it; three digits at least.
std::string_view longestRun(std::string_view text) {
  std::string_view longest;
  std::size_t digits = 2;
  for (std::size_t i = 0; i < text.size();) {
    if (!isDigit(text[i])) {
      ++i;
      continue;
    }
    const std::size_t end = std::min(text.find_first_not_of("0123456789?", i), text.size());
    if (end - i > digits) {
      digits = end - i;
      const std::size_t begin = i > 0 && text[i - 1] == '+' ? i - 1 : i;
      longest = text.substr(begin, end - begin);
    }
    i = end;
  }
  return longest;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  if (isAscii(bytes)) return true;
  std::string_view character;
  while (!bytes.empty()) {
    if (takeCodepoint(bytes, character) < 0) return false;
  }
  return true;
}

std::optional<int> codepageByName(std::string_view name) {
  std::string folded = base::foldAscii(name);
  for (std::string_view prefix : {"windows-", "cp", "ibm"}) {
    if (base::equalFoldAscii(std::string_view(folded).substr(0, prefix.size()), prefix)) {
      folded.erase(0, prefix.size());
      break;
    }
  }
  if (base::equalFoldAscii(folded, "utf-8") || base::equalFoldAscii(folded, "utf8")) return 65001;
  int number = 0;
  const auto [end, fault] = std::from_chars(folded.data(), folded.data() + folded.size(), number);
  if (fault != std::errc() || end != folded.data() + folded.size() || !base::codepageSupported(number)) {
    return std::nullopt;
  }
  return number;
}

std::string fitText(std::string_view text, int codepage, std::size_t room) {
  std::string whole;
  if (!isAscii(text)) {
    whole = composed(std::string(text));
    text = whole;
  }
  std::string out;
  std::size_t count = 0;
  std::string_view letter;
  while (!text.empty() && count < room) {
    const utf8proc_int32_t codepoint = takeCodepoint(text, letter);
    if (isControl(codepoint)) continue;
    if (codepoint >= 0 && codepoint < 0x80) {
      out += letter;
      ++count;
    } else {
      const std::string bytes = codepoint < 0 ? "?" : inCodepage(letter, codepage);
      // UTF-8 as the record's code page counts bytes.
      count += bytes.size();
      if (count <= room) out += base::decode(bytes, codepage);
    }
  }
  return out;
}

std::string cleanNumber(std::string_view text) {
  text = withoutAddress(base::trim(inBrackets(base::trim(text))));
  if (hasLetters(text)) text = longestRun(text);
  std::string out;
  for (char c : base::trim(text)) {
    if (c == '+' && out.empty()) {
      out = "00";
    } else if (c == '?') {
      out += 'X';
    } else if (isDigit(c) || c == '*' || c == '#' || c == 'X') {
      out += c;
    }
  }
  return out;
}

std::string stripAccess(std::string number, const std::vector<std::string>& codes) {
  for (const std::string& code : codes) {
    if (!code.empty() && number.starts_with(code)) {
      number.erase(0, code.size());
      break;
    }
  }
  return number;
}

std::string cleanTrunk(std::string_view text) {
  text = base::trim(text);
  if (text.find_first_not_of(kDigits) == std::string_view::npos) {
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  }
  return std::string(text);
}

std::optional<std::int32_t> readPulses(std::string_view text) {
  text = base::trim(text);
  if (text.empty()) return 0;
  if (text.find_first_not_of("0123456789.,") != std::string_view::npos) return std::nullopt;
  if (text.find_first_of(".,") != std::string_view::npos) return 0;
  std::int32_t count = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (fault != std::errc()) return std::nullopt;
  return count;
}

}  // namespace capture
