#include "jet/parser/expression_parser.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "jet/operators.h"
#include "jet/parser/syntax_error.h"

namespace jet {

namespace {

// Bounds on the tree, so that code that walks or frees it by recursion stays within the stack: parentheses, calls and
// signs within each other, and operators in all (a long chain of them is as deep as it is long).
constexpr int kMaxNesting = 200;
constexpr int kMaxOperators = 2000;

enum Precedence {
  kImp = 1,
  kEqv,
  kXor,
  kOr,
  kAnd,
  kNot,
  kComparison,
  kConcatenate,
  kSum,
  kModulo,
  kIntegerDivide,
  kProduct,
  kPower,
};

struct BinaryOperator {
  std::string_view word;  // empty for symbols
  char symbol;
  Operator op;
  int precedence;
};

constexpr std::array kBinaryOperators = {
    BinaryOperator{"", '=', Operator::Equal, kComparison},
    BinaryOperator{"", kNotEqual, Operator::NotEqual, kComparison},
    BinaryOperator{"", '<', Operator::Less, kComparison},
    BinaryOperator{"", kLessOrEqual, Operator::LessOrEqual, kComparison},
    BinaryOperator{"", '>', Operator::Greater, kComparison},
    BinaryOperator{"", kGreaterOrEqual, Operator::GreaterOrEqual, kComparison},
    BinaryOperator{"", '+', Operator::Add, kSum},
    BinaryOperator{"", '-', Operator::Subtract, kSum},
    BinaryOperator{"", '*', Operator::Multiply, kProduct},
    BinaryOperator{"", '/', Operator::Divide, kProduct},
    BinaryOperator{"", '\\', Operator::IntegerDivide, kIntegerDivide},
    BinaryOperator{"", '^', Operator::Power, kPower},
    BinaryOperator{"", '&', Operator::Concatenate, kConcatenate},
    BinaryOperator{"mod", '\0', Operator::Modulo, kModulo},
    BinaryOperator{"and", '\0', Operator::And, kAnd},
    BinaryOperator{"or", '\0', Operator::Or, kOr},
    BinaryOperator{"xor", '\0', Operator::Xor, kXor},
    BinaryOperator{"eqv", '\0', Operator::Eqv, kEqv},
    BinaryOperator{"imp", '\0', Operator::Imp, kImp},
};

const BinaryOperator* findOperator(const Token& token) {
  const auto found = std::find_if(kBinaryOperators.begin(), kBinaryOperators.end(), [&](const BinaryOperator& each) {
    return each.word.empty() ? Cursor::isSymbol(token, each.symbol) : Cursor::isWord(token, each.word);
  });
  return found == kBinaryOperators.end() ? nullptr : &*found;
}

ExpressionPtr make(Expression::Kind kind) {
  auto expression = std::make_unique<Expression>();
  expression->kind = kind;
  return expression;
}

Type typeOf(TokenKind literal) {
  switch (literal) {
    case TokenKind::Long:
      return Type::Long;
    case TokenKind::Double:
      return Type::Double;
    case TokenKind::DateTime:
      return Type::DateTime;
    case TokenKind::Boolean:
      return Type::Boolean;
    default:
      return Type::Text;
  }
}

}  // namespace

bool isReserved(std::string_view word) {
  constexpr std::array<std::string_view, 31> words = {
      "and",    "or",     "xor",    "eqv",   "imp",   "not",   "mod",    "like", "in",     "is",   "between",
      "null",   "as",     "from",   "where", "group", "order", "having", "by",   "select", "into", "values",
      "insert", "update", "delete", "alter", "join",  "inner", "on",     "set",  "union"};
  return std::any_of(words.begin(), words.end(), [word](auto each) { return base::equalFoldAscii(word, each); });
}

// Counts one level of nesting for as long as it lives.
class ExpressionParser::Nesting {
 public:
  explicit Nesting(ExpressionParser& parser) : parser_(parser) {
    if (++parser_.nesting_ > kMaxNesting) parser_.cursor_.fail("Expression nested too deeply");
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { --parser_.nesting_; }

 private:
  ExpressionParser& parser_;
};

ExpressionPtr ExpressionParser::parse(Aggregates aggregates) {
  aggregates_ = aggregates;
  return binary(kImp);
}

std::string ExpressionParser::name() {
  const Token& token = cursor_.current();
  const bool isName = token.kind == TokenKind::QuotedName || (token.kind == TokenKind::Word && !isReserved(token.text));
  if (!isName) cursor_.fail("Syntax error (name expected)");
  std::string text(token.text);
  cursor_.advance();
  return text;
}

// Precedence climbing; all binary operators group from the left.
ExpressionPtr ExpressionParser::binary(int minPrecedence) {
  ExpressionPtr left = prefix(minPrecedence);
  for (;;) {
    if (minPrecedence <= kComparison) {
      if (ExpressionPtr compared = comparisonWord(left)) {
        left = std::move(compared);
        continue;
      }
    }
    const BinaryOperator* found = findOperator(cursor_.current());
    if (found == nullptr || found->precedence < minPrecedence) return left;
    cursor_.advance();
    left = makeBinary(found->op, std::move(left), binary(found->precedence + 1));
  }
}

ExpressionPtr ExpressionParser::prefix(int minPrecedence) {
  const Nesting nesting(*this);
  if (cursor_.acceptWord("not")) return makeUnary(Operator::Not, binary(std::max<int>(minPrecedence, kNot)));
  if (cursor_.acceptSymbol('-')) return makeUnary(Operator::Negate, prefix(kPower));
  if (cursor_.acceptSymbol('+')) return prefix(kPower);
  return operand();
}

// `is`, `like`, `in` and `between` after `left`, with their `not`; null when none of them is here.
ExpressionPtr ExpressionParser::comparisonWord(ExpressionPtr& left) {
  if (cursor_.acceptWord("is")) return isNull(std::move(left));
  const bool negated = cursor_.isWord("not");
  const Token& word = negated ? cursor_.following() : cursor_.current();
  const bool like = Cursor::isWord(word, "like");
  const bool inList = Cursor::isWord(word, "in");
  const bool range = Cursor::isWord(word, "between");
  if (!like && !inList && !range) return nullptr;
  if (negated) cursor_.advance();
  cursor_.advance();
  if (range) return between(std::move(left), negated);
  if (inList) return in(std::move(left), negated);
  return makeBinary(negated ? Operator::NotLike : Operator::Like, std::move(left), binary(kConcatenate));
}

ExpressionPtr ExpressionParser::isNull(ExpressionPtr left) {
  const bool negated = cursor_.acceptWord("not");
  cursor_.expectWord("null");
  return makeUnary(negated ? Operator::IsNotNull : Operator::IsNull, std::move(left));
}

ExpressionPtr ExpressionParser::between(ExpressionPtr left, bool negated) {
  countOperator();
  auto expression = make(Expression::Kind::Between);
  expression->negated = negated;
  expression->operands.push_back(std::move(left));
  expression->operands.push_back(binary(kConcatenate));
  cursor_.expectWord("and");
  expression->operands.push_back(binary(kConcatenate));
  return expression;
}

ExpressionPtr ExpressionParser::in(ExpressionPtr left, bool negated) {
  countOperator();
  auto expression = make(Expression::Kind::In);
  expression->negated = negated;
  expression->operands.push_back(std::move(left));
  cursor_.expectSymbol('(');
  do {
    expression->operands.push_back(binary(kImp));
  } while (cursor_.acceptSymbol(','));
  cursor_.expectSymbol(')');
  return expression;
}

void ExpressionParser::countOperator() {
  if (++operators_ > kMaxOperators) cursor_.fail("Expression too complex");
}

ExpressionPtr ExpressionParser::makeUnary(Operator op, ExpressionPtr operand) {
  countOperator();
  auto expression = make(Expression::Kind::Unary);
  expression->op = op;
  expression->operands.push_back(std::move(operand));
  return expression;
}

// The statements of this system compare with the literal null where they mean Is [Not] Null.
ExpressionPtr ExpressionParser::makeBinary(Operator op, ExpressionPtr left, ExpressionPtr right) {
  if (op == Operator::Equal || op == Operator::NotEqual) {
    const Operator test = op == Operator::Equal ? Operator::IsNull : Operator::IsNotNull;
    if (right->isNullLiteral) return makeUnary(test, std::move(left));
    if (left->isNullLiteral) return makeUnary(test, std::move(right));
  }
  countOperator();
  auto expression = make(Expression::Kind::Binary);
  expression->op = op;
  expression->operands.push_back(std::move(left));
  expression->operands.push_back(std::move(right));
  return expression;
}

ExpressionPtr ExpressionParser::operand() {
  const Token& token = cursor_.current();
  if (token.isLiteral()) return literal();
  if (cursor_.acceptSymbol('(')) return parenthesised();
  if (cursor_.acceptWord("null")) {
    auto null = make(Expression::Kind::Literal);
    null->isNullLiteral = true;
    return null;
  }
  const bool isBareName = token.kind == TokenKind::Word && !isReserved(token.text);
  if (isBareName && Cursor::isSymbol(cursor_.following(), '(')) return function();
  if (isBareName || token.kind == TokenKind::QuotedName) return column();
  cursor_.failOperator();
}

ExpressionPtr ExpressionParser::parenthesised() {
  ExpressionPtr inner = binary(kImp);
  cursor_.expectSymbol(')');
  return inner;
}

ExpressionPtr ExpressionParser::literal() {
  auto expression = make(Expression::Kind::Literal);
  expression->parameter = cursor_.literalIndex();
  expression->literalType = typeOf(cursor_.current().kind);
  cursor_.advance();
  return expression;
}

ExpressionPtr ExpressionParser::column() {
  auto expression = make(Expression::Kind::Column);
  expression->name = name();
  if (cursor_.acceptSymbol('.')) {
    expression->table = std::move(expression->name);
    expression->name = name();
  }
  return expression;
}

ExpressionPtr ExpressionParser::function() {
  const std::size_t start = cursor_.current().start;
  const std::string written = name();
  cursor_.expectSymbol('(');
  auto call = make(Expression::Kind::Function);
  call->name = base::foldAscii(written);
  if (isAggregate(call->name)) {
    if (aggregates_ == Aggregates::Refused) {
      throwSyntaxError("Syntax error (aggregate function not allowed here)", cursor_.sql(), start);
    }
    aggregateArgument(*call);
  } else {
    arguments(*call);
    checkArguments(*call, written, start);
  }
  cursor_.expectSymbol(')');
  return call;
}

// One argument without aggregates; count(*) alone takes a star.
void ExpressionParser::aggregateArgument(Expression& call) {
  if (call.name == "count" && cursor_.acceptSymbol('*')) {
    call.operands.push_back(make(Expression::Kind::Star));
    return;
  }
  aggregates_ = Aggregates::Refused;
  call.operands.push_back(binary(kImp));
  aggregates_ = Aggregates::Allowed;
}

void ExpressionParser::arguments(Expression& call) {
  if (cursor_.isSymbol(')')) return;
  do {
    call.operands.push_back(binary(kImp));
  } while (cursor_.acceptSymbol(','));
}

void ExpressionParser::checkArguments(const Expression& call, std::string_view written, std::size_t start) const {
  const Function* function = findFunction(call.name);
  if (function == nullptr) {
    throw Error(3085, base::format("Undefined function '%s' in expression.", written), std::string(cursor_.sql()));
  }
  const auto count = static_cast<int>(call.operands.size());
  if (count < function->minArguments || count > function->maxArguments) {
    throwSyntaxError("Wrong number of arguments used with function", cursor_.sql(), start);
  }
}

}  // namespace jet
