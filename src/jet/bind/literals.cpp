// What literals become where they are used.

#include "jet/bind/statement_binder.h"
#include "jet/compared_literal.h"
#include "jet/error.h"
#include "jet/store_value.h"

namespace jet::bind {

namespace {

Value numberOf(const Value& value, bool asDouble) {
  if (value.isNull() || (value.type() == Type::Long && !asDouble)) return value;
  const auto number = value.asNumber();
  if (!number) throw Error(3421, "Data type conversion error: '" + value.toText() + "' is no number.");
  return Value(*number);
}

bool staysAsItIs(const LiteralUse& use, const Value& value) {
  return use.convert == Convert::AsIs || (use.convert == Convert::Compare && value.type() == use.target) ||
         (use.convert == Convert::ToNumber && value.type() == Type::Long) ||
         (use.convert == Convert::ToText && value.type() == Type::Text);
}

}  // namespace

Value converted(const LiteralUse& use, const Value& value) {
  switch (use.convert) {
    case Convert::AsIs:
      return value;
    case Convert::ToText:
      return Value(value.toText());
    case Convert::ToNumber:
      return numberOf(value, false);
    case Convert::ToDouble:
      return numberOf(value, true);
    case Convert::Compare:
      return comparedAs(value, use.target, use.ordering);
    case Convert::Store:
      return storedValue(value, use.field);
  }
  return value;
}

void convertAll(std::span<const LiteralUse> uses, std::span<const Value> statement, std::span<const Value> criteria,
                std::vector<Value>& out) {
  if (out.size() < uses.size()) out.resize(uses.size());
  for (std::size_t i = 0; i < uses.size(); ++i) {
    const LiteralUse& use = uses[i];
    if (use.source == LiteralUse::kOwnValue) {
      out[i] = use.own;
      continue;
    }
    const Value& given = (use.source == 0 ? statement : criteria)[use.parameter];
    if (staysAsItIs(use, given)) {
      out[i] = given;
    } else {
      out[i] = converted(use, given);
    }
  }
}

}  // namespace jet::bind
