// Case and order of letters. The tables come from the same library as those of the other drivers, so that all agree
// whatever the server's version and locale are.

#include <utf8proc.h>

#include <array>
#include <set>

#include "jet/letters.h"
#include "jet/postgres/functions_detail.h"

namespace jet::postgres::detail {

namespace {

constexpr char32_t kFirstBeyondAscii = 0x80;
constexpr char32_t kFirstBeyondUnicode = 0x110000;
// Letters below are Latin: they have short tables of their own.
constexpr char32_t kBeyondLatin = 0x250;
constexpr char32_t kFirstSyllable = 0xAC00;  // of Hangul
constexpr char32_t kLastSyllable = 0xD7A3;

void append(std::string& text, char32_t letter) {
  std::array<utf8proc_uint8_t, 4> bytes{};
  const auto size = utf8proc_encode_char(static_cast<utf8proc_int32_t>(letter), bytes.data());
  text.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(size));
}

// Two texts of equal length in characters, as translate() takes them.
struct LetterTable {
  std::string from;
  std::string to;
};

template <typename Map>
LetterTable tableOf(char32_t first, char32_t behind, Map map) {
  LetterTable table;
  for (char32_t letter = first; letter < behind; ++letter) {
    if (letter >= 0xD800 && letter < 0xE000) continue;
    const char32_t other = map(letter);
    if (other == letter) continue;
    append(table.from, letter);
    append(table.to, other);
  }
  return table;
}

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

std::string translated(const std::string& text, const LetterTable& table) {
  return "translate(" + text + ", " + quoted(table.from) + ", " + quoted(table.to) + ")";
}

// The letters of a text changed one by one, those of ASCII by PostgreSQL's function of that name.
template <typename Map>
std::string changingFunction(const std::string& signature, const std::string& ascii, Map map) {
  const LetterTable latin = tableOf(kFirstBeyondAscii, kBeyondLatin, map);
  const LetterTable others = tableOf(kBeyondLatin, kFirstBeyondUnicode, map);
  return strictFunction(signature, "text",
                        "DECLARE changed text := " + ascii +
                            "(x COLLATE \"C\"); BEGIN "
                            "IF changed ~ '[^\\u0001-\\u024f]' THEN changed := " +
                            translated("changed", others) + "; END IF; RETURN " + translated("changed", latin) + ";");
}

// Letters with the letter whose forms they are. A letter that is itself such a base is listed when forms with lower
// numbers come before it.
LetterTable formsOf(char32_t first, char32_t behind) {
  std::set<char32_t> letters;
  for (char32_t letter = kFirstBeyondAscii; letter < kFirstBeyondUnicode; ++letter) {
    const bool surrogate = letter >= 0xD800 && letter < 0xE000;
    const bool syllable = letter >= kFirstSyllable && letter <= kLastSyllable;
    if (surrogate || syllable || foldedLetter(letter) != letter) continue;
    const char32_t base = baseLetter(letter);
    if (base == letter) continue;
    letters.insert(letter);
    if (base >= kFirstBeyondAscii) letters.insert(base);
  }
  LetterTable table;
  for (const char32_t letter : letters) {
    if (letter < first || letter >= behind) continue;
    append(table.from, letter);
    append(table.to, baseLetter(letter));
  }
  return table;
}

// A key text whose order by bytes is that of compareLetters(): of a letter with a base, the base, a mark that comes
// after every letter, and the letter. Ă comes just before Â. Characters for bytes that are no UTF-8 are moved down to
// make room for the mark.
std::string lettersFunction() {
  const LetterTable latin = formsOf(kFirstBeyondAscii, kBeyondLatin);
  const LetterTable others = formsOf(kBeyondLatin, kFirstBeyondUnicode);
  return strictFunction("other_letters(x text)", "text",
                        R"(
DECLARE
  made text := '';
  letter text;
  place int;
  base text;
BEGIN
  FOREACH letter IN ARRAY string_to_array(jet.other_folded(x), NULL) LOOP
    base := NULL;
    IF octet_length(letter) > 1 THEN
      IF ascii(letter) < 592 THEN
        place := strpos()" + quoted(latin.from) +
                            R"( COLLATE "C", letter);
        IF place > 0 THEN base := substr()" +
                            quoted(latin.to) + R"(, place, 1); END IF;
      ELSIF ascii(letter) BETWEEN 44032 AND 55203 THEN
        base := chr(4352 + (ascii(letter) - 44032) / 588);
      ELSIF ascii(letter) >= 1113856 THEN
        letter := chr(ascii(letter) - 256);
      ELSE
        place := strpos()" + quoted(others.from) +
                            R"( COLLATE "C", letter);
        IF place > 0 THEN base := substr()" +
                            quoted(others.to) + R"(, place, 1); END IF;
      END IF;
    END IF;
    IF base IS NULL THEN
      made := made || letter;
    ELSIF letter = U&'\0103' THEN
      made := made || base || chr(1114111) || U&'\00E1\+10F001';
    ELSE
      made := made || base || chr(1114111) || letter;
    END IF;
  END LOOP;
  RETURN made;)");
}

constexpr const char* kIsAscii = "CASE WHEN octet_length(x) = char_length(x) THEN ";

}  // namespace

std::vector<std::string> letterFunctions() {
  const auto lower = [](char32_t letter) {
    return static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(letter)));
  };
  const auto upper = [](char32_t letter) {
    return static_cast<char32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(letter)));
  };
  std::vector<std::string> all = {
      changingFunction("other_folded(x text)", "lower", [](char32_t letter) { return foldedLetter(letter); }),
      changingFunction("lower(x text)", "lower", lower),
      changingFunction("upper(x text)", "upper", upper),
      lettersFunction(),
  };
  const auto inlined = [&](const char* name, const char* ascii, const char* other) {
    for (std::string& each :
         inlinedFunction(name, "x text", "text", std::string(kIsAscii) + ascii + " ELSE jet." + other + "(x) END")) {
      all.push_back(std::move(each));
    }
  };
  inlined("folded", "lower(x COLLATE \"C\")", "other_folded");
  inlined("letters", "lower(x COLLATE \"C\")", "other_letters");
  return all;
}

}  // namespace jet::postgres::detail
