#pragma once

#include <string>
#include <string_view>

namespace jet {

// How the dialect compares texts: letters of all alphabets without regard to case, in the order of a reader: the
// letter, then its forms with diacritics (A, Ă, Â, B ... S, Ș, T). Texts of ASCII alone compare as under A-Z folding,
// and are equal to no text with another letter. Bytes that are no UTF-8 come after all letters.

int compareLetters(std::string_view left, std::string_view right);  // <0, 0, >0
[[nodiscard]] bool equalLetters(std::string_view left, std::string_view right);

// One character in lower case, as comparisons and LIKE see it. A letter beyond ASCII never becomes one of A-Z.
[[nodiscard]] char32_t foldedLetter(char32_t letter);
// The letter that a folded letter is a form of, as the order sees it: ș is one of s. Itself when it is none's.
[[nodiscard]] char32_t baseLetter(char32_t letter);
// The characters of a text, folded.
[[nodiscard]] std::u32string foldedLetters(std::string_view text);
// UTF-8 that is the same, byte for byte, for texts that are equal and no others; for hashing.
[[nodiscard]] std::string foldedText(std::string_view text);

[[nodiscard]] bool isAscii(std::string_view text);

}  // namespace jet
