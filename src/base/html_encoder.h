#pragma once

#include <array>
#include <string>
#include <string_view>

namespace base {

// Writes UTF-8 into pages of a Windows code page, many short texts one after the other: what the letters of the Latin
// alphabets become is found once, and a text without anything special is copied.
class HtmlEncoder {
 public:
  explicit HtmlEncoder(int codepage);

  // Appends mark-up as bytes of the code page; a letter that the page lacks becomes "&#N;".
  void appendMarkup(std::string& out, std::string_view markup) const;
  // Appends data: & < > " are escaped, too.
  void appendText(std::string& out, std::string_view text) const;

 private:
  std::size_t appendLetter(std::string& out, std::string_view text) const;

  static constexpr std::size_t kFirstLetter = 0x80;
  static constexpr std::size_t kEndOfLetters = 0x250;  // after the blocks of the Latin alphabets
  int codepage_;
  std::array<std::string, kEndOfLetters - kFirstLetter> letters_;
};

}  // namespace base
