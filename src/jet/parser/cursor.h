#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "jet/parser/lexer.h"

namespace jet {

// The tokens of one text and the place that the parser has reached.
class Cursor {
 public:
  explicit Cursor(std::string_view sql);  // Error 3075 for what is no token

  [[nodiscard]] const Token& current() const { return tokens_[position_]; }
  [[nodiscard]] const Token& following(std::size_t distance = 1) const;  // End when the text ends before
  [[nodiscard]] std::size_t previousEnd() const { return position_ == 0 ? 0 : tokens_[position_ - 1].end; }
  [[nodiscard]] std::string_view sql() const { return sql_; }
  [[nodiscard]] bool atEnd() const { return current().kind == TokenKind::End; }
  void advance();

  [[nodiscard]] bool isWord(std::string_view keyword) const { return isWord(current(), keyword); }
  [[nodiscard]] static bool isWord(const Token& token, std::string_view keyword);
  [[nodiscard]] bool isSymbol(char symbol) const { return isSymbol(current(), symbol); }
  [[nodiscard]] static bool isSymbol(const Token& token, char symbol);

  bool acceptWord(std::string_view keyword);
  bool acceptSymbol(char symbol);
  void expectWord(std::string_view keyword);
  void expectSymbol(char symbol);

  // Number of the current literal among the text's literals.
  [[nodiscard]] std::size_t literalIndex() const { return literalIndex_; }
  [[nodiscard]] std::size_t literalCount() const { return literalCount_; }

  [[noreturn]] void fail(std::string_view what) const;  // Error 3075 at the current token
  [[noreturn]] void failOperator() const { fail("Syntax error (missing operator)"); }

 private:
  std::string_view sql_;
  std::vector<Token> tokens_;
  std::size_t position_ = 0;
  std::size_t literalIndex_ = 0;
  std::size_t literalCount_ = 0;
};

}  // namespace jet
