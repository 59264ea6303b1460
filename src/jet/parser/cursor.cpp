#include "jet/parser/cursor.h"

#include <string>

#include "base/text.h"
#include "jet/parser/syntax_error.h"

namespace jet {

Cursor::Cursor(std::string_view sql) : sql_(sql) {
  Lexer lexer(sql);
  Value unused;
  do {
    const Token& token = tokens_.emplace_back(lexer.next());
    if (!token.isLiteral()) continue;
    readLiteral(token, sql, unused);
    ++literalCount_;
  } while (tokens_.back().kind != TokenKind::End);
}

const Token& Cursor::following(std::size_t distance) const {
  const std::size_t position = position_ + distance;
  return position < tokens_.size() ? tokens_[position] : tokens_.back();
}

void Cursor::advance() {
  if (current().isLiteral()) ++literalIndex_;
  if (!atEnd()) ++position_;
}

bool Cursor::isWord(const Token& token, std::string_view keyword) {
  return token.kind == TokenKind::Word && base::equalFoldAscii(token.text, keyword);
}

bool Cursor::isSymbol(const Token& token, char symbol) {
  return token.kind == TokenKind::Symbol && token.symbol == symbol;
}

bool Cursor::acceptWord(std::string_view keyword) {
  if (!isWord(keyword)) return false;
  advance();
  return true;
}

bool Cursor::acceptSymbol(char symbol) {
  if (!isSymbol(symbol)) return false;
  advance();
  return true;
}

void Cursor::expectWord(std::string_view keyword) {
  if (!acceptWord(keyword)) fail("Syntax error (" + std::string(keyword) + " expected)");
}

void Cursor::expectSymbol(char symbol) {
  if (!acceptSymbol(symbol)) fail("Syntax error ('" + std::string(1, symbol) + "' expected)");
}

void Cursor::fail(std::string_view what) const {
  throwSyntaxError(what, sql_, current().start);
}

}  // namespace jet
