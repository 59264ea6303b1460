#include "base/html_encoder.h"

#include <algorithm>
#include <cstdint>

#include "base/characters.h"
#include "base/codepage.h"
#include "base/text.h"

namespace base {

namespace {

enum class Class : std::uint8_t { Plain, Escaped, Letter };

constexpr auto kClasses = [] {
  std::array<Class, 256> classes{};
  for (const unsigned char c : {'&', '<', '>', '"'}) classes[c] = Class::Escaped;
  std::fill(classes.begin() + 0x80, classes.end(), Class::Letter);
  return classes;
}();

Class classOf(char c) {
  return kClasses[static_cast<unsigned char>(c)];
}

// The letters of the Latin alphabets are in UTF-8 as two bytes.
std::string twoBytes(std::size_t letter) {
  return {static_cast<char>(0xC0 | (letter >> 6)), static_cast<char>(0x80 | (letter & 0x3F))};
}

}  // namespace

HtmlEncoder::HtmlEncoder(int codepage) : codepage_(codepage) {
  for (std::size_t i = 0; i < letters_.size(); ++i) letters_[i] = encodeHtml(twoBytes(kFirstLetter + i), codepage);
}

// Appends the letter at the front, which is none of ASCII's; the number of its bytes.
std::size_t HtmlEncoder::appendLetter(std::string& out, std::string_view text) const {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t letter = text.size() > 1 && (lead & 0xE0) == 0xC0 && !startsCharacter(text[1])
                                 ? (lead & 0x1FU) << 6 | (static_cast<unsigned char>(text[1]) & 0x3FU)
                                 : 0;
  if (letter >= kFirstLetter && letter < kEndOfLetters) {
    out += letters_[letter - kFirstLetter];
    return 2;
  }
  std::size_t length = 1;
  while (length < text.size() && !startsCharacter(text[length])) ++length;
  out += encodeHtml(text.substr(0, length), codepage_);
  return length;
}

void HtmlEncoder::appendMarkup(std::string& out, std::string_view markup) const {
  while (!markup.empty()) {
    const auto letter = std::ranges::find(markup, Class::Letter, classOf);
    const auto plain = static_cast<std::size_t>(letter - markup.begin());
    out += markup.substr(0, plain);
    markup.remove_prefix(plain);
    if (!markup.empty()) markup.remove_prefix(appendLetter(out, markup));
  }
}

void HtmlEncoder::appendText(std::string& out, std::string_view text) const {
  while (!text.empty()) {
    const auto special = std::ranges::find_if(text, [](char c) { return classOf(c) != Class::Plain; });
    const auto plain = static_cast<std::size_t>(special - text.begin());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) return;
    if (classOf(text.front()) == Class::Letter) {
      text.remove_prefix(appendLetter(out, text));
    } else {
      out += escapeHtml(text.substr(0, 1));
      text.remove_prefix(1);
    }
  }
}

}  // namespace base
