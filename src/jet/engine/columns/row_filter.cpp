#include "jet/engine/columns/row_filter.h"

#include <algorithm>

#include "jet/engine/columns/date_part_reader.h"

namespace jet::columns {

namespace {

using bind::BoundExpression;
using memory::Truth;

// Numbers of a greater range are compared, not looked up.
constexpr std::int64_t kMostLookedUp = 4096;

void collectFields(const BoundExpression& expression, std::vector<std::size_t>& fields) {
  if (expression.kind == BoundExpression::Kind::Column &&
      std::find(fields.begin(), fields.end(), expression.index) == fields.end()) {
    fields.push_back(expression.index);
  }
  for (const BoundExpression& operand : expression.operands) collectFields(operand, fields);
}

// Of a column, or of a part of its dates, with a constant.
bool isComparison(const BoundExpression& expression) {
  using Kind = BoundExpression::Kind;
  return expression.kind == Kind::Compare && expression.operands[1].kind == Kind::Literal &&
         (expression.operands[0].kind == Kind::Column || columnPartOf(expression.operands[0]));
}

Truth truthOf(bool holds) {
  return holds ? Truth::True : Truth::False;
}

// out[i] = how number i compares with the constant.
template <typename Number, typename IsNull>
void compareAll(const Number* numbers, std::size_t count, Operator op, double constant, IsNull isNull, Truth* out) {
  const auto compare = [&](auto holds) {
    for (std::size_t i = 0; i < count; ++i) {
      const Truth truth = truthOf(holds(static_cast<double>(numbers[i])));
      out[i] = isNull(numbers[i]) ? Truth::Unknown : truth;
    }
  };
  switch (op) {
    case Operator::Equal:
      return compare([constant](double number) { return number == constant; });
    case Operator::NotEqual:
      return compare([constant](double number) { return number != constant; });
    case Operator::Less:
      return compare([constant](double number) { return number < constant; });
    case Operator::LessOrEqual:
      return compare([constant](double number) { return number <= constant; });
    case Operator::Greater:
      return compare([constant](double number) { return number > constant; });
    default:
      return compare([constant](double number) { return number >= constant; });
  }
}

}  // namespace

std::optional<RowFilter> RowFilter::make(const BoundExpression& condition, const TableDef& definition) {
  RowFilter filter;
  filter.width_ = definition.fields.size();
  if (!filter.take(condition, definition, filter.root_)) return std::nullopt;
  return filter;
}

bool RowFilter::take(const BoundExpression& expression, const TableDef& definition, Node& node) {
  using Kind = BoundExpression::Kind;
  const bool isAnd = expression.kind == Kind::Logic && expression.op == Operator::And;
  const bool isOr = expression.kind == Kind::Logic && expression.op == Operator::Or;
  if (isAnd || isOr || expression.kind == Kind::Not) {
    node.kind = isAnd ? Node::Kind::And : isOr ? Node::Kind::Or : Node::Kind::Not;
    node.operands.resize(expression.operands.size());
    for (std::size_t i = 0; i < node.operands.size(); ++i) {
      if (!take(expression.operands[i], definition, node.operands[i])) return false;
    }
    return true;
  }
  std::vector<std::size_t> fields;
  collectFields(expression, fields);
  if (fields.size() > 1) return false;
  node.expression = &expression;
  if (fields.empty()) return true;
  node.field = fields.front();
  const FieldDef& field = definition.fields[fields.front()];
  const bool compares = isComparison(expression);
  if (compares && expression.operands[0].kind == Kind::Call) node.part = columnPartOf(expression.operands[0])->part;
  if ((field.type == Type::Double || field.type == Type::DateTime) && !compares) return false;
  if (std::find(fields_.begin(), fields_.end(), fields.front()) == fields_.end()) fields_.push_back(fields.front());
  return true;
}

bool RowFilter::begin(memory::Evaluator& evaluator, std::span<const Column* const> columns, const base::Look& look) {
  cells_.assign(width_, Value());
  integers_.resize(kBlockRows);
  return prepare(root_, evaluator, columns, look);
}

bool RowFilter::prepare(Node& node, memory::Evaluator& evaluator, std::span<const Column* const> columns,
                        const base::Look& look) {
  for (Node& operand : node.operands) {
    if (!prepare(operand, evaluator, columns, look)) return false;
  }
  if (node.kind != Node::Kind::Test) return true;
  node.known.clear();
  evaluator.setRow(cells_.data());
  if (!node.field) {
    node.known.push_back(evaluator.test(*node.expression));
    return true;
  }
  node.column = columns[*node.field];
  const Type type = node.column->type();
  const std::int64_t range = std::int64_t{node.column->greatest()} - node.column->least();
  const bool fewNumbers = (type == Type::Long || type == Type::Boolean) && range < kMostLookedUp;
  if (type != Type::Text && !fewNumbers) return prepareComparison(node, evaluator);
  lookUpAll(node, evaluator, look);
  return true;
}

// Works the test out for every value that the column holds.
void RowFilter::lookUpAll(Node& node, memory::Evaluator& evaluator, const base::Look& look) {
  base::LookCounter steps(look);
  Value& cell = cells_[*node.field];
  const auto test = [&](Value value) {
    steps.step();
    cell = std::move(value);
    return evaluator.test(*node.expression);
  };
  const Column& column = *node.column;
  node.ofNull = test(Value());
  if (column.type() == Type::Text) {
    node.first = 0;
    node.known.reserve(column.texts()->size() + 1);
    node.known.push_back(node.ofNull);
    for (std::uint32_t code = 1; code <= column.texts()->size(); ++code) {
      node.known.push_back(test(Value(column.texts()->text(code))));
    }
  } else {
    node.first = column.least();
    for (std::int64_t number = column.least(); number <= column.greatest(); ++number) {
      node.known.push_back(test(column.value(static_cast<std::int32_t>(number))));
    }
  }
  cell = Value();
}

bool RowFilter::prepareComparison(Node& node, memory::Evaluator& evaluator) {
  if (!isComparison(*node.expression)) return false;
  node.op = node.expression->op;
  const Value& constant = evaluator.value(node.expression->operands[1]);
  const bool date = node.column->type() == Type::DateTime && !node.part;
  if (date && constant.type() == Type::DateTime) {
    node.constant = static_cast<double>(constant.dateTime().secondsSinceDayZero() - Column::kFirstDate);
    return true;
  }
  if (date || (constant.type() != Type::Long && constant.type() != Type::Double)) return false;
  node.constant = constant.toDouble();
  return true;
}

bool RowFilter::always() {
  if (!fields_.empty()) return false;
  std::vector<std::uint32_t> rows;
  select(0, 1, rows);
  return !rows.empty();
}

void RowFilter::select(std::size_t from, std::size_t count, std::vector<std::uint32_t>& rows) {
  Truth* const truths = buffer(0);
  test(root_, from, count, truths, 1);
  rows.resize(count);
  std::size_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    rows[found] = static_cast<std::uint32_t>(i);
    found += truths[i] == Truth::True ? 1 : 0;
  }
  rows.resize(found);
}

Truth* RowFilter::buffer(std::size_t depth) {
  if (buffers_.size() <= depth) buffers_.resize(depth + 1);
  buffers_[depth].resize(kBlockRows);
  return buffers_[depth].data();
}

void RowFilter::test(const Node& node, std::size_t from, std::size_t count, Truth* out, std::size_t depth) {
  if (node.kind == Node::Kind::Test) return testColumn(node, from, count, out);
  test(node.operands[0], from, count, out, depth);
  if (node.kind == Node::Kind::Not) {
    std::transform(out, out + count, out, [](Truth truth) { return static_cast<Truth>(2 - static_cast<int>(truth)); });
    return;
  }
  const Truth deciding = node.kind == Node::Kind::And ? Truth::False : Truth::True;
  if (std::all_of(out, out + count, [deciding](Truth truth) { return truth == deciding; })) return;
  buffer(depth);
  Truth* const other = buffers_[depth].data();
  test(node.operands[1], from, count, other, depth + 1);
  if (node.kind == Node::Kind::And) {
    std::transform(out, out + count, other, out, [](Truth left, Truth right) { return std::min(left, right); });
  } else {
    std::transform(out, out + count, other, out, [](Truth left, Truth right) { return std::max(left, right); });
  }
}

// Puts the parts in the place of the dates.
void RowFilter::readParts(DatePart part, std::size_t count) {
  DatePartReader reader(part);
  for (std::size_t i = 0; i < count; ++i) {
    if (integers_[i] != PackedIntegers::kNone) integers_[i] = reader.read(integers_[i]);
  }
}

void RowFilter::testColumn(const Node& node, std::size_t from, std::size_t count, Truth* out) {
  if (!node.field) {
    std::fill(out, out + count, node.known.front());
    return;
  }
  if (node.column->type() == Type::Double) {
    return compareAll(
        node.column->reals(from), count, node.op, node.constant, [](double number) { return number != number; }, out);
  }
  node.column->integers(from, count, integers_.data());
  if (node.part) readParts(*node.part, count);
  if (node.known.empty() && node.column->least() <= node.column->greatest()) {
    return compareAll(
        integers_.data(), count, node.op, node.constant,
        [](std::int32_t number) { return number == PackedIntegers::kNone; }, out);
  }
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t integer = integers_[i];
    out[i] =
        integer == PackedIntegers::kNone ? node.ofNull : node.known[static_cast<std::size_t>(integer - node.first)];
  }
}

}  // namespace jet::columns
