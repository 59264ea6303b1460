#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "jet/value.h"

namespace jet {

// Longer texts are refused: the tree and the work on it stay bounded whatever a text holds.
inline constexpr std::size_t kMaxStatementLength = 64 * 1024;

enum class TokenKind : std::uint8_t {
  End,
  Word,        // bare name or keyword
  QuotedName,  // [name]; `text` is what is between the brackets
  Long,        // literals that become parameters ...
  Double,
  Text,          // `text` with its quotes
  DateTime,      // `text` with its number signs
  Boolean,       // true, false
  KeyedInteger,  // ... and integers that belong to the shape: after TOP, positions of ORDER BY, all of ALTER TABLE
  Symbol,
};

// Symbols are their own character; those of two characters have these.
inline constexpr char kLessOrEqual = 'l';
inline constexpr char kGreaterOrEqual = 'g';
inline constexpr char kNotEqual = 'n';

struct Token {
  TokenKind kind = TokenKind::End;
  char symbol = '\0';
  std::size_t start = 0;  // bytes from the start of the text
  std::size_t end = 0;
  std::string_view text;

  [[nodiscard]] bool isLiteral() const { return kind >= TokenKind::Long && kind <= TokenKind::Boolean; }
};

// Cuts a text into tokens. The parser and the shape both read through it, so their literals cannot differ in number.
// Error 3075 for characters that belong to no token (comments among them), and for names, texts and dates that do not
// end.
class Lexer {
 public:
  explicit Lexer(std::string_view sql);  // Error 3075 for a text that is too long
  Token next();
  // The literal that begins at a place where a token begins; nothing when it is none. A whole number is a literal,
  // though in some places it would belong to the shape.
  static std::optional<Token> literalAt(std::string_view sql, std::size_t position);

 private:
  Token word();
  Token number();
  Token quotedText();
  Token enclosed(TokenKind kind, char closing);
  Token symbol();
  Token finish(TokenKind kind, std::size_t end);
  void followOrderBy(const Token& token);
  [[nodiscard]] bool belongsToShape(std::size_t end) const;
  [[nodiscard]] char at(std::size_t position) const { return position < sql_.size() ? sql_[position] : '\0'; }
  [[nodiscard]] std::size_t skipBlanks(std::size_t position) const;

  // What came before, as far as the meaning of an integer depends on it.
  enum class Before : std::uint8_t { Nothing, Dot, Top, Order, ListStart, Other };

  std::string_view sql_;
  std::size_t position_ = 0;
  Before before_ = Before::Nothing;
  bool inOrderBy_ = false;
  bool inAlter_ = false;
  int depth_ = 0;  // open parentheses
};

// The value of a literal token; Error 3075 for a date that is none. `out` keeps its storage where it can.
void readLiteral(const Token& token, std::string_view sql, Value& out);

}  // namespace jet
