#include "jet/parser/parser.h"

#include <array>
#include <charconv>

#include "base/text.h"
#include "jet/parser/cursor.h"
#include "jet/parser/expression_parser.h"

namespace jet {

namespace {

using Aggregates = ExpressionParser::Aggregates;

class StatementParser {
 public:
  explicit StatementParser(std::string_view sql) : cursor_(sql), expressions_(cursor_) {}

  std::unique_ptr<const Statement> parse();

 private:
  void select();
  void selectItem();
  ExpressionPtr star();
  void groupBy();
  void orderBy();
  void insert();
  void update();
  void remove();
  void alter();
  void columnType();
  void where();

  std::unique_ptr<Source> joinedSource(int nesting);
  std::unique_ptr<Source> plainOrNestedSource(int nesting);
  std::unique_ptr<Source> plainTable();
  std::optional<Source::Join> joinKind();
  bool atAlias();
  std::size_t integer();

  Cursor cursor_;
  ExpressionParser expressions_;
  std::unique_ptr<Statement> statement_ = std::make_unique<Statement>();
};

std::unique_ptr<const Statement> StatementParser::parse() {
  if (cursor_.acceptWord("select")) {
    select();
  } else if (cursor_.acceptWord("insert")) {
    insert();
  } else if (cursor_.acceptWord("update")) {
    update();
  } else if (cursor_.acceptWord("delete")) {
    remove();
  } else if (cursor_.acceptWord("alter")) {
    alter();
  } else {
    cursor_.fail("Syntax error (SELECT, INSERT, UPDATE, DELETE or ALTER expected)");
  }
  cursor_.acceptSymbol(';');
  if (!cursor_.atEnd()) cursor_.failOperator();
  statement_->literalCount = cursor_.literalCount();
  return std::move(statement_);
}

std::size_t StatementParser::integer() {
  const std::string_view digits = cursor_.current().text;
  std::size_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  cursor_.advance();
  return value;
}

void StatementParser::select() {
  statement_->distinct = cursor_.acceptWord("distinct");
  if (cursor_.isWord("top") && cursor_.following().kind == TokenKind::KeyedInteger) {
    cursor_.advance();
    statement_->top = integer();
  }
  do {
    selectItem();
  } while (cursor_.acceptSymbol(','));
  cursor_.expectWord("from");
  statement_->from = joinedSource(0);
  where();
  groupBy();
  orderBy();
}

// "*" or "T.*"; null, and nothing taken, when neither is here.
ExpressionPtr StatementParser::star() {
  auto expression = std::make_unique<Expression>();
  expression->kind = Expression::Kind::Star;
  if (cursor_.acceptSymbol('*')) return expression;
  if (!Cursor::isSymbol(cursor_.following(1), '.') || !Cursor::isSymbol(cursor_.following(2), '*')) return nullptr;
  expression->table = expressions_.name();
  cursor_.expectSymbol('.');
  cursor_.expectSymbol('*');
  return expression;
}

void StatementParser::selectItem() {
  SelectItem item;
  const std::size_t start = cursor_.current().start;
  item.expression = star();
  const bool isStar = item.expression != nullptr;
  if (!isStar) item.expression = expressions_.parse(Aggregates::Allowed);
  // The parentheses of "distinct(c)" are no part of the name.
  item.text = item.expression->kind == Expression::Kind::Column
                  ? item.expression->name
                  : std::string(cursor_.sql().substr(start, cursor_.previousEnd() - start));
  if (!isStar && cursor_.acceptWord("as")) item.alias = expressions_.name();
  statement_->items.push_back(std::move(item));
}

void StatementParser::where() {
  if (cursor_.acceptWord("where")) statement_->where = expressions_.parse();
}

void StatementParser::groupBy() {
  if (cursor_.acceptWord("group")) {
    cursor_.expectWord("by");
    do {
      statement_->groupBy.push_back(expressions_.parse());
    } while (cursor_.acceptSymbol(','));
  }
  if (cursor_.acceptWord("having")) statement_->having = expressions_.parse(Aggregates::Allowed);
}

void StatementParser::orderBy() {
  if (!cursor_.acceptWord("order")) return;
  cursor_.expectWord("by");
  do {
    OrderItem item;
    if (cursor_.current().kind == TokenKind::KeyedInteger) {
      item.position = integer();
      if (item.position == 0 || item.position > statement_->items.size()) {
        cursor_.fail("Syntax error (no such position in the select list)");
      }
    } else {
      item.expression = expressions_.parse(Aggregates::Allowed);
    }
    item.descending = cursor_.acceptWord("desc");
    if (!item.descending) cursor_.acceptWord("asc");
    statement_->orderBy.push_back(std::move(item));
  } while (cursor_.acceptSymbol(','));
}

bool StatementParser::atAlias() {
  if (cursor_.acceptWord("as")) return true;
  const Token& token = cursor_.current();
  if (token.kind == TokenKind::QuotedName) return true;
  return token.kind == TokenKind::Word && !isReserved(token.text) && !cursor_.isWord("left") &&
         !cursor_.isWord("right");
}

std::unique_ptr<Source> StatementParser::plainTable() {
  auto source = std::make_unique<Source>();
  source->table = expressions_.name();
  return source;
}

std::unique_ptr<Source> StatementParser::plainOrNestedSource(int nesting) {
  constexpr int kMaxJoinNesting = 50;
  if (nesting > kMaxJoinNesting) cursor_.fail("Joins nested too deeply");
  if (cursor_.acceptSymbol('(')) {
    auto source = joinedSource(nesting + 1);
    cursor_.expectSymbol(')');
    return source;
  }
  auto source = plainTable();
  if (atAlias()) source->alias = expressions_.name();
  return source;
}

// The word of a join and JOIN itself; nothing when no join is here.
std::optional<Source::Join> StatementParser::joinKind() {
  Source::Join join = Source::Join::Inner;
  if (cursor_.acceptWord("left")) {
    join = Source::Join::Left;
  } else if (cursor_.acceptWord("right")) {
    join = Source::Join::Right;
  } else if (!cursor_.acceptWord("inner")) {
    return std::nullopt;
  }
  if (join != Source::Join::Inner) cursor_.acceptWord("outer");
  cursor_.expectWord("join");
  return join;
}

std::unique_ptr<Source> StatementParser::joinedSource(int nesting) {
  auto source = plainOrNestedSource(nesting);
  while (const auto kind = joinKind()) {
    // Chained joins nest to the left.
    auto join = std::make_unique<Source>();
    join->join = *kind;
    join->left = std::move(source);
    join->right = plainOrNestedSource(nesting);
    cursor_.expectWord("on");
    join->on = expressions_.parse();
    source = std::move(join);
    ++nesting;
  }
  return source;
}

void StatementParser::insert() {
  statement_->kind = Statement::Kind::Insert;
  cursor_.expectWord("into");
  statement_->from = plainTable();
  cursor_.expectSymbol('(');
  do {
    statement_->columns.push_back(expressions_.name());
  } while (cursor_.acceptSymbol(','));
  cursor_.expectSymbol(')');
  cursor_.expectWord("values");
  cursor_.expectSymbol('(');
  do {
    statement_->values.push_back(expressions_.parse());
  } while (cursor_.acceptSymbol(','));
  if (statement_->values.size() != statement_->columns.size()) {
    cursor_.fail("Number of query values and destination fields are not the same");
  }
  cursor_.expectSymbol(')');
}

void StatementParser::update() {
  statement_->kind = Statement::Kind::Update;
  statement_->from = plainTable();
  cursor_.expectWord("set");
  do {
    Assignment assignment;
    assignment.column = expressions_.name();
    cursor_.expectSymbol('=');
    assignment.value = expressions_.parse();
    statement_->assignments.push_back(std::move(assignment));
  } while (cursor_.acceptSymbol(','));
  where();
}

void StatementParser::remove() {
  statement_->kind = Statement::Kind::Delete;
  cursor_.acceptSymbol('*');
  cursor_.expectWord("from");
  statement_->from = plainTable();
  where();
}

void StatementParser::alter() {
  statement_->kind = Statement::Kind::AlterAddColumn;
  cursor_.expectWord("table");
  statement_->from = plainTable();
  cursor_.expectWord("add");
  cursor_.acceptWord("column");
  statement_->newColumn = expressions_.name();
  columnType();
}

struct ColumnType {
  std::string_view word;
  Type type;
  int size;
};

constexpr std::array kColumnTypes = {
    ColumnType{"text", Type::Text, 255},       ColumnType{"varchar", Type::Text, 255},
    ColumnType{"char", Type::Text, 255},       ColumnType{"memo", Type::Text, 0},
    ColumnType{"long", Type::Long, 0},         ColumnType{"integer", Type::Long, 0},
    ColumnType{"int", Type::Long, 0},          ColumnType{"short", Type::Long, 0},
    ColumnType{"double", Type::Double, 0},     ColumnType{"float", Type::Double, 0},
    ColumnType{"datetime", Type::DateTime, 0}, ColumnType{"date", Type::DateTime, 0},
    ColumnType{"yesno", Type::Boolean, 0},     ColumnType{"bit", Type::Boolean, 0},
};

// TEXT or TEXT(n), 1 to 255 characters, and the other type words.
void StatementParser::columnType() {
  const ColumnType* found = nullptr;
  for (const ColumnType& each : kColumnTypes) {
    if (cursor_.isWord(each.word)) found = &each;
  }
  if (found == nullptr) cursor_.fail("Syntax error in field definition");
  cursor_.advance();
  statement_->newColumnType = found->type;
  statement_->newColumnSize = found->size;
  if (found->size == 0 || !cursor_.acceptSymbol('(')) return;
  const bool isSize = cursor_.current().kind == TokenKind::KeyedInteger;
  const std::size_t size = isSize ? integer() : 0;
  if (size < 1 || size > 255) cursor_.fail("Syntax error in field definition (size)");
  statement_->newColumnSize = static_cast<int>(size);
  cursor_.expectSymbol(')');
}

}  // namespace

std::unique_ptr<const Statement> parseStatement(std::string_view sql) {
  return StatementParser(sql).parse();
}

ExpressionPtr parseCondition(std::string_view condition) {
  Cursor cursor(condition);
  ExpressionPtr expression = ExpressionParser(cursor).parse();
  if (!cursor.atEnd()) cursor.failOperator();
  return expression;
}

}  // namespace jet
