#include "jet/letters.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace jet {

namespace {

constexpr char32_t kAscii = 0x80;
constexpr char32_t kBehindUnicode = 0x110000;  // numbers for bytes that are no UTF-8 begin here

unsigned char foldByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + 32) : byte;
}

// Takes the first character of a text that is not empty.
char32_t takeLetter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < kAscii) {
    text.remove_prefix(1);
    return first;
  }
  utf8proc_int32_t letter = 0;
  const utf8proc_ssize_t used = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                                 static_cast<utf8proc_ssize_t>(text.size()), &letter);
  if (used <= 0) {
    text.remove_prefix(1);
    return kBehindUnicode + first;
  }
  text.remove_prefix(static_cast<std::size_t>(used));
  return static_cast<char32_t>(letter);
}

struct Form {
  char32_t letter;
  char32_t base;
};

// Letters that are forms of another for a reader, though Unicode does not take them apart.
constexpr Form kForms[] = {{U'ß', U's'}, {U'æ', U'a'}, {U'ð', U'd'}, {U'ø', U'o'}, {U'đ', U'd'},
                           {U'ħ', U'h'}, {U'ı', U'i'}, {U'ł', U'l'}, {U'œ', U'o'}, {U'ŧ', U't'}};

// The letter without its diacritics; of a folded letter.
char32_t computedBase(char32_t letter) {
  for (const Form& form : kForms) {
    if (form.letter == letter) return form.base;
  }
  utf8proc_int32_t parts[8];
  int boundary = 0;
  const utf8proc_ssize_t count =
      utf8proc_decompose_char(static_cast<utf8proc_int32_t>(letter), parts, 8, UTF8PROC_DECOMPOSE, &boundary);
  return count > 0 && count <= 8 ? static_cast<char32_t>(parts[0]) : letter;
}

constexpr char32_t kTabled = 0x250;  // Latin letters, Romanian ones among them

}  // namespace

char32_t baseLetter(char32_t letter) {
  static const std::array<char32_t, kTabled> table = [] {
    std::array<char32_t, kTabled> bases{};
    for (char32_t c = 0; c < kTabled; ++c) bases[c] = c < kAscii ? c : computedBase(c);
    return bases;
  }();
  if (letter < kTabled) return table[letter];
  return letter < kBehindUnicode ? computedBase(letter) : letter;
}

namespace {

// Where a folded letter is in the order. Of the forms of a letter those with the lower number come first, but Ă
// before Â.
std::uint64_t place(char32_t letter) {
  constexpr char32_t kBreve = U'ă';
  constexpr char32_t kCircumflex = U'â';
  const std::uint64_t form = letter == kBreve ? 2 * std::uint64_t{kCircumflex} - 1 : 2 * std::uint64_t{letter};
  return (std::uint64_t{baseLetter(letter)} << 32U) | form;
}

}  // namespace

char32_t foldedLetter(char32_t letter) {
  if (letter < kAscii) return foldByte(static_cast<char>(letter));
  if (letter >= kBehindUnicode) return letter;
  const auto lower = static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(letter)));
  return lower < kAscii ? letter : lower;
}

int compareLetters(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty()) {
    const unsigned char a = foldByte(left.front());
    const unsigned char b = foldByte(right.front());
    if (a < kAscii && b < kAscii) {
      if (a != b) return a < b ? -1 : 1;
      left.remove_prefix(1);
      right.remove_prefix(1);
      continue;
    }
    const char32_t first = foldedLetter(takeLetter(left));
    const char32_t second = foldedLetter(takeLetter(right));
    if (first != second) return place(first) < place(second) ? -1 : 1;
  }
  return left.empty() ? (right.empty() ? 0 : -1) : 1;
}

bool equalLetters(std::string_view left, std::string_view right) {
  return left == right || compareLetters(left, right) == 0;
}

std::u32string foldedLetters(std::string_view text) {
  std::u32string letters;
  letters.reserve(text.size());
  while (!text.empty()) letters += foldedLetter(takeLetter(text));
  return letters;
}

std::string foldedText(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  while (!text.empty()) {
    const char32_t letter = foldedLetter(takeLetter(text));
    if (letter < kAscii) {
      folded += static_cast<char>(letter);
    } else if (letter >= kBehindUnicode) {
      folded += static_cast<char>(letter - kBehindUnicode);
    } else {
      utf8proc_uint8_t encoded[4];
      const utf8proc_ssize_t length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(letter), encoded);
      folded.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(length));
    }
  }
  return folded;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < kAscii; });
}

}  // namespace jet
