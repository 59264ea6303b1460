#include "jet/snapshot.h"

#include "base/text.h"
#include "jet/error.h"
#include "jet/operators.h"
#include "jet/parser/parser.h"

namespace jet {

std::size_t Snapshot::column(std::string_view name) const {
  if (table_) {
    for (std::size_t i = 0; i < columns().size(); ++i) {
      if (base::equalFoldAscii(columns()[i], name)) return i;
    }
  }
  throw Error(3265, "Item not found in this collection. (" + std::string(name) + ")");
}

std::optional<std::size_t> Snapshot::findFirst(std::string_view criteria) const {
  const ExpressionPtr condition = parseCondition(criteria);
  Shape shape;
  shapeOf(criteria, shape);
  const bool equality = condition->op == Operator::Equal && condition->operands.size() == 2 &&
                        condition->operands[0]->kind == Expression::Kind::Column &&
                        condition->operands[1]->kind == Expression::Kind::Literal;
  if (!equality) throw Error(3061, "Too few parameters. Expected 1.", std::string(criteria));
  const std::size_t searched = column(condition->operands[0]->name);
  for (std::size_t row = 0; row < rowCount(); ++row) {
    if (compare(at(row, searched), shape.literals[condition->operands[1]->parameter]) == 0) return row;
  }
  return std::nullopt;
}

}  // namespace jet
