#include <cmath>

#include "jet/engine/driver.h"

namespace jet::engine {

Value valueOf(const Cell& cell, Type type) {
  switch (cell.kind) {
    case Cell::Kind::Integer:
      if (type == Type::Boolean) return Value(cell.integer != 0);
      if (type == Type::Double) return Value(static_cast<double>(cell.integer));
      return Value(cell.integer);
    case Cell::Kind::Real:
      if (type == Type::Boolean) return Value(cell.real != 0);
      return std::isfinite(cell.real) ? Value(cell.real) : Value();
    case Cell::Kind::Text:
    case Cell::Kind::Other:
      if (type == Type::DateTime) {
        if (const auto date = base::DateTime::fromStored(cell.text)) return Value(*date);
      }
      return Value(cell.text);
    case Cell::Kind::Null:
      break;
  }
  return {};
}

void readValue(const Cell& cell, Type type, Value& out) {
  if (cell.kind == Cell::Kind::Text && type != Type::DateTime) {
    out.setText(cell.text);
  } else {
    out = valueOf(cell, type);
  }
}

}  // namespace jet::engine
