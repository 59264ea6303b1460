#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "jet/parser/ast.h"
#include "jet/sqlite/plan.h"
#include "jet/sqlite/scope.h"

namespace jet::sqlite {

// An expression as SQL, with what its surroundings need to know of it.
struct Piece {
  std::string sql;
  Type type = Type::Null;
  bool foldsCase = false;  // a text that SQLite compares without regard to case by itself
};

// Turns expressions into SQL, literals into parameters. The meaning of the dialect where SQLite's differs (division,
// joining of texts, Yes/No, comparisons across types) is settled here from the types of the operands.
class ExpressionEmitter {
 public:
  ExpressionEmitter(Plan& plan, std::span<const LikeSite> sites, std::span<const LikeValue> likes,
                    std::string_view statement)
      : plan_(plan), sites_(sites), likes_(likes), statement_(statement) {}

  // Where names are looked up, and which list of literals the expressions refer to.
  void use(const Scope& scope, std::size_t source) {
    scope_ = &scope;
    source_ = source;
  }
  [[nodiscard]] const Scope& scope() const { return *scope_; }

  Piece emit(const Expression& expression);
  std::string condition(const Expression& expression);
  // The value of an INSERT or UPDATE for a column.
  std::string stored(const Expression& expression, const FieldDef& field);
  // A parameter that the caller fills in.
  std::string extra(std::size_t index);
  // With the folding collation where a text would compare by bytes.
  static std::string folded(const Piece& piece);

 private:
  std::string parameter(Binding binding);
  std::string literal(const Expression& expression, Convert convert, Type type = Type::Null, bool ordering = false);
  std::string number(const Expression& expression);
  std::string text(const Expression& expression);
  std::string textOrEmpty(const Expression& expression);
  Type typeOf(const Expression& expression);

  Piece emitKind(const Expression& expression);
  Piece column(const Expression& expression);
  Piece plainLiteral(const Expression& expression);
  Piece unary(const Expression& expression);
  Piece binary(const Expression& expression);
  Piece arithmetic(const Expression& expression);
  Piece add(const Expression& expression);
  Piece dateShift(const Expression& expression);
  Piece divide(const Expression& expression);
  Piece wholeNumbers(const Expression& expression);
  Piece comparison(const Expression& left, const Expression& right, Operator op);
  Piece compareTyped(const Expression& left, const Expression& right, const char* op);
  Piece like(const Expression& expression);
  std::string likeGeneral(const Expression& expression);
  std::string likeKnown(const Expression& expression, const LikeSite& site, const LikeValue& value, std::size_t index);
  std::string ownPrefixes(const Expression& expression, const LikeValue& value, std::size_t index);
  Piece between(const Expression& expression);
  Piece in(const Expression& expression);
  Piece function(const Expression& expression);
  Piece datePart(const Expression& expression);
  Piece aggregate(const Expression& expression);
  Piece iif(const Expression& expression);

  Plan& plan_;
  std::span<const LikeSite> sites_;
  std::span<const LikeValue> likes_;
  std::string_view statement_;
  const Scope* scope_ = nullptr;
  std::size_t source_ = 0;
  std::unordered_map<const Expression*, Type> types_;
};

}  // namespace jet::sqlite
