#include "capture/format/definition.h"

#include <algorithm>

namespace capture {

namespace {

bool hasOrder(const std::vector<TimeForm>& forms) {
  return std::any_of(forms.begin(), forms.end(), [](const TimeForm& form) { return form.hasOrder(); });
}

bool asks(const Condition& condition, FieldTest::Kind kind) {
  for (const auto& tests : condition.alternatives) {
    for (const FieldTest& test : tests) {
      if (test.kind == kind) return true;
    }
  }
  return false;
}

bool directionAsks(const Format& format, FieldTest::Kind kind) {
  if (std::any_of(format.directions.begin(), format.directions.end(),
                  [&](const DirectionRule& rule) { return asks(rule.when, kind); })) {
    return true;
  }
  for (const auto& [field, value] : format.derived) {
    for (const ValueSource& source : value.sources) {
      if (source.when && asks(*source.when, kind)) return true;
    }
  }
  return false;
}

}  // namespace

bool Format::hasDateOrder() const {
  for (const auto* field : {&times.date, &times.begin, &times.answer, &times.end}) {
    if (*field && hasOrder((*field)->forms)) return true;
  }
  return std::any_of(lines.headings.begin(), lines.headings.end(),
                     [](const HeadingRule& heading) { return hasOrder(heading.forms); });
}

bool Format::asksTrunks() const {
  return directionAsks(*this, FieldTest::Kind::IsTrunk);
}

bool Format::asksExtensions() const {
  return directionAsks(*this, FieldTest::Kind::IsExtension);
}

}  // namespace capture
