#include "jet/store_value.h"

#include <cmath>

#include "base/characters.h"
#include "base/text.h"
#include "jet/error.h"

namespace jet {

namespace {

[[noreturn]] void failConversion(const Value& value, const FieldDef& field) {
  throw Error(3421,
              "Data type conversion error: '" + value.toText() + "' does not fit the column '" + field.name + "'.");
}

Value asText(Value value, const FieldDef& field) {
  if (value.type() != Type::Text) value = Value(value.toText());
  if (const std::size_t end = value.text().find('\0'); end != std::string::npos)
    value.setText(value.text().substr(0, end));
  const auto limit = static_cast<std::size_t>(field.size);
  if (limit > 0 && value.text().size() > limit && base::characterCount(value.text()) > limit) {
    throw Error(3163, "The text is too long for the column '" + field.name + "', which holds " +
                          std::to_string(field.size) + " characters.");
  }
  return value;
}

Value asNumber(const Value& value, const FieldDef& field) {
  if (value.type() == Type::Long && field.type == Type::Long) return value;
  const auto number = value.asNumber();
  if (!number) failConversion(value, field);
  if (!std::isfinite(*number)) return {};
  if (field.type == Type::Double) return Value(*number);
  if (std::abs(*number) > 9.0e15) failConversion(value, field);
  return Value(static_cast<std::int64_t>(std::nearbyint(*number)));
}

Value asBoolean(const Value& value, const FieldDef& field) {
  if (const auto number = value.asNumber()) return Value(*number != 0);
  if (value.type() == Type::Text) {
    const std::string word = base::foldAscii(base::trim(value.text()));
    if (word == "true" || word == "yes" || word == "on") return Value(true);
    if (word == "false" || word == "no" || word == "off") return Value(false);
  }
  failConversion(value, field);
}

}  // namespace

Value storedValue(Value value, const FieldDef& field) {
  if (value.isNull()) return field.type == Type::Boolean ? Value(false) : value;
  switch (field.type) {
    case Type::Long:
    case Type::Double:
      return asNumber(value, field);
    case Type::Boolean:
      if (value.type() == Type::Boolean) return value;
      return asBoolean(value, field);
    case Type::DateTime: {
      if (value.type() == Type::DateTime) return value;
      const auto date = value.toDateTime();
      if (!date) failConversion(value, field);
      return Value(*date);
    }
    default:
      return asText(std::move(value), field);
  }
}

}  // namespace jet
