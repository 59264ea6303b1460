// Any bytes as a statement or a condition: either a tree or a jet::Error, and never a disagreement between the shape
// and the tree about the literals.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "jet/error.h"
#include "jet/operators.h"
#include "jet/parser/parser.h"

namespace {

// Highest literal that the tree uses, plus one.
std::size_t literalsUsed(const jet::Expression& expression) {
  std::size_t used = 0;
  if (expression.kind == jet::Expression::Kind::Literal && !expression.isNullLiteral) used = expression.parameter + 1;
  for (const auto& operand : expression.operands) used = std::max(used, literalsUsed(*operand));
  return used;
}

template <typename Check>
void expectTreeOrError(Check check) {
  try {
    check();
  } catch (const jet::Error&) {
  }
}

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  jet::Shape shape;
  expectTreeOrError([&] { jet::shapeOf(text, shape); });
  expectTreeOrError([&] {
    const auto statement = jet::parseStatement(text);
    require(statement->literalCount == shape.literals.size());
    if (statement->where) require(literalsUsed(*statement->where) <= statement->literalCount);
  });
  expectTreeOrError([&] { require(literalsUsed(*jet::parseCondition(text)) <= shape.literals.size()); });
  const std::size_t middle = text.find('\n');
  if (middle != std::string_view::npos) jet::like(text.substr(0, middle), text.substr(middle + 1));
  return 0;
}
