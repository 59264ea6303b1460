#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace re2 {
class RE2;
}

namespace capture {

// A compiled pattern, shared by the copies of a format.
using Pattern = std::shared_ptr<const re2::RE2>;

// Throws std::invalid_argument with the fault when the pattern is none.
[[nodiscard]] Pattern makePattern(const std::string& text);
[[nodiscard]] bool fitsWhole(const re2::RE2& pattern, std::string_view text);
[[nodiscard]] bool fitsSomewhere(const re2::RE2& pattern, std::string_view text);

// The fields of one line, by their place in the format's list of names; blanks are off both ends.
using Fields = std::vector<std::string>;
using FieldIndex = std::size_t;

// What a source's settings add to the rules.
struct RuleSettings {
  std::vector<std::string> trunks;
  Pattern extensions;  // none: no number is known to be ours
};

// A test of one field.
struct FieldTest {
  enum class Kind { OneOf, NoneOf, Fits, Blank, NotBlank, Differs, IsTrunk, IsExtension };

  FieldIndex field = 0;
  Kind kind = Kind::OneOf;
  std::vector<std::string> values;  // OneOf, NoneOf
  Pattern pattern;                  // Fits: the whole field
  FieldIndex other = 0;             // Differs: both fields are filled and not equal
};

// All tests of one of the alternatives hold. No alternatives: never; an alternative without tests: always.
struct Condition {
  std::vector<std::vector<FieldTest>> alternatives;

  [[nodiscard]] bool holds(const Fields& fields, const RuleSettings& settings) const;
};

// One way to get a value: a field (or a fixed text) under a condition, or the part of it that a pattern's first group
// covers.
struct ValueSource {
  std::optional<FieldIndex> field;
  std::string text;               // when there is no field
  std::vector<Pattern> patterns;  // the first that covers the whole field counts; none: the field as it is
  std::optional<Condition> when;
  std::string drop;    // characters that are left out
  std::string hidden;  // characters that stand for a hidden digit and become X
};

// The first source that gives something; empty when none does.
struct Value {
  std::vector<ValueSource> sources;

  [[nodiscard]] std::string of(const Fields& fields, const RuleSettings& settings) const;
};

}  // namespace capture
