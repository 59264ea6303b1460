#include "jet/compared_literal.h"

namespace jet {

Value comparedAs(const Value& value, Type type, bool ordering) {
  if (value.isNull() || type == Type::Null || value.type() == type) return value;
  switch (type) {
    case Type::Text:
      return Value(value.toText());
    case Type::Long:
    case Type::Double:
      if (value.type() == Type::Long || value.type() == Type::Double) return value;
      if (const auto number = value.asNumber()) return Value(*number);
      break;
    case Type::Boolean:
      if (value.type() != Type::Text || value.asNumber() || value.toBool() || !value.toBool(true)) {
        return Value(value.toBool());
      }
      break;
    case Type::DateTime:
      if (const auto date = value.toDateTime()) return Value(*date);
      break;
    default:
      break;
  }
  return ordering ? Value() : value;
}

}  // namespace jet
