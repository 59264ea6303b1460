#include "capture/format/rules.h"

#include <re2/re2.h>

#include <algorithm>
#include <stdexcept>

#include "base/text.h"

namespace capture {

namespace {

re2::StringPiece piece(std::string_view text) {
  return {text.data(), text.size()};
}

bool contains(const std::vector<std::string>& values, const std::string& text) {
  return std::find(values.begin(), values.end(), text) != values.end();
}

bool testHolds(const FieldTest& test, const Fields& fields, const RuleSettings& settings) {
  const std::string& text = fields[test.field];
  switch (test.kind) {
    case FieldTest::Kind::OneOf:
      return contains(test.values, text);
    case FieldTest::Kind::NoneOf:
      return !contains(test.values, text);
    case FieldTest::Kind::Fits:
      return fitsWhole(*test.pattern, text);
    case FieldTest::Kind::Blank:
      return text.empty();
    case FieldTest::Kind::NotBlank:
      return !text.empty();
    case FieldTest::Kind::Differs:
      return !text.empty() && !fields[test.other].empty() && text != fields[test.other];
    case FieldTest::Kind::IsTrunk:
      return !text.empty() && contains(settings.trunks, text);
    case FieldTest::Kind::IsExtension:
      break;
  }
  return !text.empty() && settings.extensions && fitsWhole(*settings.extensions, text);
}

// What the patterns make of a text; nothing when none fits.
std::optional<std::string> matched(const std::vector<Pattern>& patterns, const std::string& text) {
  if (patterns.empty()) return text;
  for (const Pattern& pattern : patterns) {
    re2::StringPiece groups[2];
    const int wanted = pattern->NumberOfCapturingGroups() > 0 ? 2 : 1;
    if (pattern->Match(text, 0, text.size(), re2::RE2::ANCHOR_BOTH, groups, wanted)) {
      return groups[wanted - 1].as_string();
    }
  }
  return std::nullopt;
}

std::string rewritten(std::string text, const ValueSource& source) {
  if (!source.drop.empty()) {
    std::erase_if(text, [&](char c) { return source.drop.find(c) != std::string::npos; });
  }
  if (!source.hidden.empty()) {
    for (char& c : text) {
      if (source.hidden.find(c) != std::string::npos) c = 'X';
    }
  }
  return text;
}

}  // namespace

Pattern makePattern(const std::string& text) {
  re2::RE2::Options options;
  options.set_log_errors(false);
  auto pattern = std::make_shared<const re2::RE2>(text, options);
  if (!pattern->ok()) throw std::invalid_argument("the pattern '" + text + "' is wrong: " + pattern->error());
  return pattern;
}

bool fitsWhole(const re2::RE2& pattern, std::string_view text) {
  return pattern.Match(piece(text), 0, text.size(), re2::RE2::ANCHOR_BOTH, nullptr, 0);
}

bool fitsSomewhere(const re2::RE2& pattern, std::string_view text) {
  return pattern.Match(piece(text), 0, text.size(), re2::RE2::UNANCHORED, nullptr, 0);
}

bool Condition::holds(const Fields& fields, const RuleSettings& settings) const {
  return std::any_of(alternatives.begin(), alternatives.end(), [&](const std::vector<FieldTest>& tests) {
    return std::all_of(tests.begin(), tests.end(),
                       [&](const FieldTest& test) { return testHolds(test, fields, settings); });
  });
}

std::string Value::of(const Fields& fields, const RuleSettings& settings) const {
  for (const ValueSource& source : sources) {
    if (source.when && !source.when->holds(fields, settings)) continue;
    const auto text = matched(source.patterns, source.field ? fields[*source.field] : source.text);
    if (!text || text->empty()) continue;
    return rewritten(*text, source);
  }
  return {};
}

}  // namespace capture
