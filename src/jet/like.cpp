#include <optional>
#include <string>

#include "jet/letters.h"
#include "jet/operators.h"

namespace jet {

namespace {

// A text of ASCII alone, folded as it is read.
struct AsciiText {
  std::string_view text;
  [[nodiscard]] std::size_t size() const { return text.size(); }
  char32_t operator[](std::size_t i) const { return foldedLetter(static_cast<unsigned char>(text[i])); }
};

// Matches one pattern against one text; both are folded and indexed by character.
template <typename Characters>
class Matcher {
 public:
  Matcher(const Characters& text, const Characters& pattern) : text_(text), pattern_(pattern) {
    std::size_t end = pattern_.size();
    while (end > 0 && pattern_[end - 1] != U']') --end;
    lastClosing_ = end;
  }

  // Greedy from star to star: only the last star met is ever taken back, so the work is bounded by the product of the
  // two lengths.
  bool matches() {
    std::size_t at = 0;
    std::size_t position = 0;
    std::size_t starPattern = npos;
    std::size_t starText = 0;
    while (at < text_.size()) {
      if (position < pattern_.size() && pattern_[position] == U'*') {
        starPattern = ++position;
        starText = at;
        if (position == pattern_.size()) return true;
        continue;
      }
      position = skipEmptyClasses(position);
      if (position < pattern_.size() && pattern_[position] == U'*') continue;
      const std::size_t next = position < pattern_.size() ? matchOne(text_[at], position) : npos;
      if (next != npos) {
        position = next;
        ++at;
      } else if (starPattern != npos) {
        position = starPattern;
        at = ++starText;
      } else {
        return false;
      }
    }
    return onlyStarsFrom(position);
  }

 private:
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  bool onlyStarsFrom(std::size_t position) {
    for (position = skipEmptyClasses(position); position < pattern_.size(); position = skipEmptyClasses(position)) {
      if (pattern_[position] != U'*') return false;
      ++position;
    }
    return true;
  }

  // "[]" stands for no character at all.
  std::size_t skipEmptyClasses(std::size_t position) const {
    while (position + 1 < pattern_.size() && pattern_[position] == U'[' && pattern_[position + 1] == U']') {
      position += 2;
    }
    return position;
  }

  // Where the pattern goes on when its element at `position` takes the character; npos when it does not.
  std::size_t matchOne(char32_t character, std::size_t position) const {
    const char32_t element = pattern_[position];
    if (element == U'?') return position + 1;
    if (element == U'#') return character >= U'0' && character <= U'9' ? position + 1 : npos;
    if (element == U'[' && position < lastClosing_) return matchClass(character, position + 1);
    return element == character ? position + 1 : npos;
  }

  // A class from after its "[" on; a "!" alone in its brackets is that character.
  std::size_t matchClass(char32_t character, std::size_t position) const {
    const bool negated = pattern_[position] == U'!' && pattern_[position + 1] != U']';
    if (negated) ++position;
    bool found = false;
    while (pattern_[position] != U']') {
      const char32_t low = pattern_[position];
      const bool isRange = pattern_[position + 1] == U'-' && pattern_[position + 2] != U']';
      const char32_t high = isRange ? pattern_[position + 2] : low;
      found = found || (low <= character && character <= high);
      position += isRange ? 3 : 1;
    }
    return found != negated ? position + 1 : npos;
  }

  const Characters& text_;
  const Characters& pattern_;
  std::size_t lastClosing_ = 0;  // after the last "]": a "[" from there on is an ordinary character
};

// The pattern "*part*" is the commonest of all: what is typed over a list.
std::optional<std::string_view> anyPartOf(std::string_view pattern) {
  if (pattern.size() < 3 || pattern.front() != '*' || pattern.back() != '*') return std::nullopt;
  const std::string_view part = pattern.substr(1, pattern.size() - 2);
  return part.find_first_of("*?#[]") == std::string_view::npos ? std::optional(part) : std::nullopt;
}

char folded(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

// Both of ASCII, the part not empty.
bool holdsPart(std::string_view text, std::string_view part) {
  if (text.size() < part.size()) return false;
  const char first = folded(part.front());
  for (std::size_t at = 0; at <= text.size() - part.size(); ++at) {
    if (folded(text[at]) != first) continue;
    std::size_t same = 1;
    while (same < part.size() && folded(text[at + same]) == folded(part[same])) ++same;
    if (same == part.size()) return true;
  }
  return false;
}

}  // namespace

bool like(std::string_view text, std::string_view pattern) {
  if (isAscii(text) && isAscii(pattern)) {
    if (const auto part = anyPartOf(pattern)) return holdsPart(text, *part);
    const AsciiText asciiText{text};
    const AsciiText asciiPattern{pattern};
    return Matcher<AsciiText>(asciiText, asciiPattern).matches();
  }
  const std::u32string foldedText = foldedLetters(text);
  const std::u32string foldedPattern = foldedLetters(pattern);
  return Matcher<std::u32string>(foldedText, foldedPattern).matches();
}

bool hasWildcard(std::string_view pattern) {
  return pattern.find_first_of("*?#[") != std::string_view::npos;
}

}  // namespace jet
