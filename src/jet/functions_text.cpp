#include <utf8proc.h>

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "jet/functions_detail.h"

namespace jet::detail {

namespace {

// Longest text that Space, String and Replace make: they are the only ones whose result outgrows their arguments.
constexpr std::size_t kMaxMadeText = 1024 * 1024;

bool continuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Byte position after `count` characters from `from` on, at most the text's end. A byte that is no UTF-8 counts as a
// character or as a part of the one before it.
std::size_t skipCharacters(std::string_view text, std::size_t from, std::int64_t count) {
  while (count > 0 && from < text.size()) {
    ++from;
    while (from < text.size() && continuesCharacter(text[from])) ++from;
    --count;
  }
  return from;
}

std::int64_t characterCount(std::string_view text) {
  std::int64_t count = 0;
  for (std::size_t at = 0; at < text.size(); at = skipCharacters(text, at, 1)) ++count;
  return count;
}

std::int64_t countArgument(const Value& value) {
  const std::int64_t count = wholeArgument(value);
  if (count < 0) throwInvalidCall();
  return count;
}

std::string encode(std::int64_t codepoint) {
  if (codepoint < 0 || codepoint > 0x10FFFF || (codepoint >= 0xD800 && codepoint <= 0xDFFF)) throwInvalidCall();
  utf8proc_uint8_t bytes[4];
  const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(codepoint), bytes);
  return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

std::string repeat(std::string_view text, std::int64_t count) {
  if (static_cast<std::size_t>(count) > kMaxMadeText) throwOverflow();
  std::string result;
  result.reserve(text.size() * static_cast<std::size_t>(count));
  for (; count > 0; --count) result += text;
  return result;
}

Value left(const Arguments& arguments) {
  const std::string text = arguments[0].toText();
  return text.substr(0, skipCharacters(text, 0, countArgument(arguments[1])));
}

Value right(const Arguments& arguments) {
  const std::string text = arguments[0].toText();
  return text.substr(skipCharacters(text, 0, characterCount(text) - countArgument(arguments[1])));
}

// Mid(text, start[, length]), start from 1.
Value mid(const Arguments& arguments) {
  const std::string text = arguments[0].toText();
  const std::int64_t start = wholeArgument(arguments[1]);
  if (start < 1) throwInvalidCall();
  const std::size_t from = skipCharacters(text, 0, start - 1);
  if (arguments.size() < 3) return text.substr(from);
  return text.substr(from, skipCharacters(text, from, countArgument(arguments[2])) - from);
}

Value length(const Arguments& arguments) {
  return characterCount(arguments[0].toText());
}

// Compare argument: 0 letter for letter, 1 and 2 (the database's own way) without regard to case.
bool foldsCase(const Arguments& arguments, std::size_t index, std::int64_t fallback) {
  const std::int64_t mode = optionalWhole(arguments, index, fallback);
  if (mode < 0 || mode > 2) throwInvalidCall();
  return mode != 0;
}

// InStr([start,] text, sought [, compare]): position in characters from 1, 0 when not found.
Value inStr(const Arguments& arguments) {
  const std::size_t first = arguments.size() >= 3 ? 1 : 0;
  const std::int64_t start = first == 0 ? 1 : wholeArgument(arguments[0]);
  if (start < 1) throwInvalidCall();
  const bool fold = foldsCase(arguments, 3, 2);
  const auto prepared = [fold](const Value& value) { return fold ? base::fold(value.toText()) : value.toText(); };
  const std::string text = prepared(arguments[first]);
  const std::string sought = prepared(arguments[first + 1]);
  if (start > characterCount(text)) return 0;
  const std::size_t found = text.find(sought, skipCharacters(text, 0, start - 1));
  if (found == std::string::npos) return 0;
  return characterCount(std::string_view(text).substr(0, found)) + 1;
}

template <utf8proc_int32_t (*Change)(utf8proc_int32_t)>
Value changeCase(const Arguments& arguments) {
  const std::string text = arguments[0].toText();
  std::string result;
  result.reserve(text.size());
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  auto rest = static_cast<utf8proc_ssize_t>(text.size());
  while (rest > 0) {
    utf8proc_int32_t codepoint = 0;
    const utf8proc_ssize_t used = utf8proc_iterate(bytes, rest, &codepoint);
    if (used > 0) {
      result += encode(Change(codepoint));
    } else {
      result += static_cast<char>(*bytes);
    }
    bytes += std::max<utf8proc_ssize_t>(used, 1);
    rest -= std::max<utf8proc_ssize_t>(used, 1);
  }
  return result;
}

// Only blanks, as the dialect has it; tabs and line ends stay.
std::string trimmed(const Value& value, bool atStart, bool atEnd) {
  const std::string text = value.toText();
  const std::size_t first = atStart ? text.find_first_not_of(' ') : 0;
  if (first == std::string::npos) return {};
  const std::size_t last = atEnd ? text.find_last_not_of(' ') : text.size() - 1;
  return last == std::string::npos ? std::string() : text.substr(first, last + 1 - first);
}

Value trim(const Arguments& arguments) {
  return trimmed(arguments[0], true, true);
}

Value trimLeft(const Arguments& arguments) {
  return trimmed(arguments[0], true, false);
}

Value trimRight(const Arguments& arguments) {
  return trimmed(arguments[0], false, true);
}

// The number at the start of a text, blanks within it passed over: Val("1 615 198th") is 1615198.
Value val(const Arguments& arguments) {
  std::string text = arguments[0].toText();
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
  std::string_view digits = text;
  if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
  const std::size_t first = digits.starts_with('-') ? 1 : 0;
  const bool isNumber =
      first < digits.size() && (digits[first] == '.' || (digits[first] >= '0' && digits[first] <= '9'));
  double number = 0;
  if (!isNumber) return 0.0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec == std::errc::result_out_of_range) throwOverflow();
  return number == 0 ? 0.0 : number;
}

// A blank takes the place of a negative number's sign.
Value str(const Arguments& arguments) {
  const Value& value = arguments[0];
  const std::string text = value.type() == Type::Long ? value.toText() : Value(numberArgument(value)).toText();
  return text.starts_with('-') ? text : " " + text;
}

Value toText(const Arguments& arguments) {
  return arguments[0].toText();
}

Value space(const Arguments& arguments) {
  return repeat(" ", countArgument(arguments[0]));
}

// String(count, character): the first character of a text, or the character of a number.
Value repeated(const Arguments& arguments) {
  const std::int64_t count = countArgument(arguments[0]);
  if (arguments[1].type() != Type::Text) return repeat(encode(wholeArgument(arguments[1])), count);
  const std::string& text = arguments[1].text();
  if (text.empty()) throwInvalidCall();
  return repeat(text.substr(0, skipCharacters(text, 0, 1)), count);
}

Value strComp(const Arguments& arguments) {
  const bool fold = foldsCase(arguments, 2, 2);
  const std::string a = fold ? base::fold(arguments[0].toText()) : arguments[0].toText();
  const std::string b = fold ? base::fold(arguments[1].toText()) : arguments[1].toText();
  return a < b ? -1 : b < a ? 1 : 0;
}

struct Replacement {
  std::string_view text;      // as written
  std::string_view searched;  // the same, folded when case does not count
  std::string_view sought;
  std::string_view by;
};

// Walks both forms of the text character by character: folding may change a character's length in bytes.
std::string replaceFrom(const Replacement& what, std::int64_t count) {
  std::string result;
  std::size_t at = 0;
  std::size_t searchedAt = 0;
  const std::int64_t soughtCharacters = characterCount(what.sought);
  while (at < what.text.size()) {
    const bool found = count != 0 && what.searched.substr(searchedAt).starts_with(what.sought);
    const std::int64_t taken = found ? soughtCharacters : 1;
    const std::size_t end = skipCharacters(what.text, at, taken);
    result += found ? what.by : what.text.substr(at, end - at);
    if (result.size() > kMaxMadeText) throwOverflow();
    searchedAt = skipCharacters(what.searched, searchedAt, taken);
    at = end;
    if (found) --count;
  }
  return result;
}

// Replace(text, sought, by [, start [, count [, compare]]]); the result begins at `start`. Letter for letter unless
// `compare` says otherwise.
Value replace(const Arguments& arguments) {
  const std::int64_t start = optionalWhole(arguments, 3, 1);
  const std::int64_t count = optionalWhole(arguments, 4, -1);  // -1: all
  if (start < 1 || count < -1) throwInvalidCall();
  const bool fold = foldsCase(arguments, 5, 0);
  std::string text = arguments[0].toText();
  text.erase(0, skipCharacters(text, 0, start - 1));
  std::string sought = arguments[1].toText();
  if (sought.empty()) return text;
  if (fold) sought = base::fold(sought);
  const std::string searched = fold ? base::fold(text) : text;
  return replaceFrom({text, searched, sought, arguments[2].toText()}, count);
}

Value asc(const Arguments& arguments) {
  const std::string text = arguments[0].toText();
  if (text.empty()) throwInvalidCall();
  utf8proc_int32_t codepoint = 0;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  if (utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &codepoint) > 0) return int{codepoint};
  return int{*bytes};
}

Value chr(const Arguments& arguments) {
  return encode(wholeArgument(arguments[0]));
}

}  // namespace

const std::vector<Function>& textFunctions() {
  static const std::vector<Function> list = {
      {"left", 2, 2, strict<left>, true},
      {"right", 2, 2, strict<right>, true},
      {"mid", 2, 3, strict<mid>, true},
      {"len", 1, 1, strict<length>, true},
      {"instr", 2, 4, strict<inStr>, true},
      {"ucase", 1, 1, strict<changeCase<utf8proc_toupper>>, true},
      {"lcase", 1, 1, strict<changeCase<utf8proc_tolower>>, true},
      {"trim", 1, 1, strict<trim>, true},
      {"ltrim", 1, 1, strict<trimLeft>, true},
      {"rtrim", 1, 1, strict<trimRight>, true},
      {"val", 1, 1, strict<val>, true},
      {"str", 1, 1, strict<str>, true},
      {"cstr", 1, 1, strict<toText>, true},
      {"space", 1, 1, strict<space>, true},
      {"string", 2, 2, strict<repeated>, true},
      {"strcomp", 2, 3, strict<strComp>, true},
      {"replace", 3, 6, strict<replace>, true},
      {"asc", 1, 1, strict<asc>, true},
      {"chr", 1, 1, strict<chr>, true},
  };
  return list;
}

}  // namespace jet::detail
