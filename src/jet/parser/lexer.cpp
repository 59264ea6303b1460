#include "jet/parser/lexer.h"

#include <array>
#include <charconv>
#include <string>

#include "base/text.h"
#include "jet/parser/syntax_error.h"

namespace jet {

namespace {

enum Class : std::uint8_t { None, Blank, NameStart, Digit };

constexpr std::array<std::uint8_t, 256> makeClasses() {
  std::array<std::uint8_t, 256> classes{};
  for (const char blank : {' ', '\t', '\r', '\n'}) classes[static_cast<unsigned char>(blank)] = Blank;
  for (int c = 'a'; c <= 'z'; ++c) classes[static_cast<std::size_t>(c)] = NameStart;
  for (int c = 'A'; c <= 'Z'; ++c) classes[static_cast<std::size_t>(c)] = NameStart;
  for (std::size_t c = 0x80; c < 256; ++c) classes[c] = NameStart;
  classes[static_cast<std::size_t>('_')] = NameStart;
  for (int c = '0'; c <= '9'; ++c) classes[static_cast<std::size_t>(c)] = Digit;
  return classes;
}

constexpr std::array<std::uint8_t, 256> kClasses = makeClasses();

std::uint8_t classOf(char c) {
  return kClasses[static_cast<unsigned char>(c)];
}

// Inline: every word of every statement executed comes through here.
bool isKeyword(std::string_view word, std::string_view lowerCase) {
  if (word.size() != lowerCase.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (classOf(word[i]) != NameStart || (word[i] | 0x20) != lowerCase[i]) return false;
  }
  return true;
}

// Longer integers may not fit 64 bits and are read as Double.
constexpr std::size_t kMaxLongDigits = 18;

}  // namespace

Lexer::Lexer(std::string_view sql) : sql_(sql) {
  if (sql.size() > kMaxStatementLength) throwSyntaxError("Statement too long", sql, kMaxStatementLength);
}

std::size_t Lexer::skipBlanks(std::size_t position) const {
  while (position < sql_.size() && classOf(sql_[position]) == Blank) ++position;
  return position;
}

Token Lexer::next() {
  position_ = skipBlanks(position_);
  if (position_ == sql_.size()) return finish(TokenKind::End, position_);
  Token token;
  const char c = sql_[position_];
  switch (classOf(c)) {
    case NameStart:
      token = word();
      break;
    case Digit:
      token = number();
      break;
    default:
      if (c == '\'' || c == '"') {
        token = quotedText();
      } else if (c == '[') {
        token = enclosed(TokenKind::QuotedName, ']');
      } else if (c == '#') {
        token = enclosed(TokenKind::DateTime, '#');
      } else if (c == '.' && classOf(at(position_ + 1)) == Digit) {
        token = number();
      } else {
        token = symbol();
      }
  }
  followOrderBy(token);
  return token;
}

std::optional<Token> Lexer::literalAt(std::string_view sql, std::size_t position) {
  Lexer lexer(sql);
  lexer.position_ = position;
  if (position == sql.size() || classOf(sql[position]) == Blank) return std::nullopt;
  const Token token = lexer.next();
  return token.isLiteral() ? std::optional(token) : std::nullopt;
}

Token Lexer::finish(TokenKind kind, std::size_t end) {
  Token token;
  token.kind = kind;
  token.start = position_;
  token.end = end;
  token.text = sql_.substr(position_, end - position_);
  position_ = end;
  return token;
}

Token Lexer::word() {
  std::size_t end = position_ + 1;
  while (end < sql_.size() && classOf(sql_[end]) >= NameStart) ++end;
  Token token = finish(TokenKind::Word, end);
  if (before_ != Before::Dot && (isKeyword(token.text, "true") || isKeyword(token.text, "false"))) {
    token.kind = TokenKind::Boolean;
  }
  return token;
}

Token Lexer::number() {
  const auto digits = [this](std::size_t from) {
    while (classOf(at(from)) == Digit) ++from;
    return from;
  };
  std::size_t end = digits(position_);
  bool isInteger = end - position_ <= kMaxLongDigits;
  if (at(end) == '.') {
    end = digits(end + 1);
    isInteger = false;
  }
  if (at(end) == 'e' || at(end) == 'E') {
    const std::size_t sign = at(end + 1) == '+' || at(end + 1) == '-' ? 1 : 0;
    const std::size_t exponent = digits(end + 1 + sign);
    if (exponent > end + 1 + sign) {
      end = exponent;
      isInteger = false;
    }
  }
  if (classOf(at(end)) >= NameStart) throwSyntaxError("Syntax error in number", sql_, position_);
  if (!isInteger) return finish(TokenKind::Double, end);
  return finish(belongsToShape(end) ? TokenKind::KeyedInteger : TokenKind::Long, end);
}

Token Lexer::quotedText() {
  const char quote = sql_[position_];
  std::size_t end = position_;
  do {
    end = sql_.find(quote, end + 1);
    if (end == std::string_view::npos) throwSyntaxError("Syntax error in string", sql_, position_);
    ++end;
  } while (at(end) == quote);
  return finish(TokenKind::Text, end);
}

Token Lexer::enclosed(TokenKind kind, char closing) {
  const std::size_t end = sql_.find(closing, position_ + 1);
  const bool isName = kind == TokenKind::QuotedName;
  if (end == std::string_view::npos || end == position_ + 1) {
    throwSyntaxError(isName ? "Syntax error in name" : "Syntax error in date", sql_, position_);
  }
  Token token = finish(kind, end + 1);
  if (isName) token.text = token.text.substr(1, token.text.size() - 2);
  return token;
}

Token Lexer::symbol() {
  const char c = sql_[position_];
  const char following = at(position_ + 1);
  if ((c == '-' && following == '-') || (c == '/' && following == '*')) {
    throwSyntaxError("Syntax error (comment)", sql_, position_);
  }
  char kind = c;
  std::size_t length = 1;
  if (c == '<' && following == '=') kind = kLessOrEqual, length = 2;
  if (c == '<' && following == '>') kind = kNotEqual, length = 2;
  if (c == '>' && following == '=') kind = kGreaterOrEqual, length = 2;
  constexpr std::string_view known = "()*+,-./;<=>\\^&";
  if (known.find(c) == std::string_view::npos) throwSyntaxError("Syntax error (character)", sql_, position_);
  Token token = finish(TokenKind::Symbol, position_ + length);
  token.symbol = kind;
  return token;
}

void Lexer::followOrderBy(const Token& token) {
  const Before before = before_;
  before_ = Before::Other;
  if (token.kind == TokenKind::Word) {
    const auto is = [&token](std::string_view keyword) { return isKeyword(token.text, keyword); };
    switch (token.text.size()) {
      case 2:
        if (before == Before::Order && is("by")) {
          inOrderBy_ = true;
          depth_ = 0;
          before_ = Before::ListStart;
        }
        break;
      case 3:
        if (is("top")) before_ = Before::Top;
        break;
      case 5:
        if (is("order")) before_ = Before::Order;
        if (before == Before::Nothing && is("alter")) inAlter_ = true;
        break;
      default:
        break;
    }
  } else if (token.kind == TokenKind::Symbol) {
    if (token.symbol == '(') ++depth_;
    if (token.symbol == ')') --depth_;
    if (token.symbol == '.') before_ = Before::Dot;
    if (token.symbol == ',' && inOrderBy_ && depth_ == 0) before_ = Before::ListStart;
  }
}

// An integer alone in an ORDER BY is a position, in an expression (`ORDER BY 1 + Trunk`) a literal.
bool Lexer::belongsToShape(std::size_t end) const {
  if (inAlter_ || before_ == Before::Top) return true;
  if (before_ != Before::ListStart) return false;
  const std::size_t following = skipBlanks(end);
  if (following == sql_.size() || sql_[following] == ',' || sql_[following] == ';') return true;
  std::size_t wordEnd = following;
  while (classOf(at(wordEnd)) >= NameStart) ++wordEnd;
  const std::string_view word = sql_.substr(following, wordEnd - following);
  return isKeyword(word, "asc") || isKeyword(word, "desc");
}

namespace {

void readText(std::string_view quoted, Value& out) {
  const char quote = quoted.front();
  const std::string_view content = quoted.substr(1, quoted.size() - 2);
  std::size_t doubled = content.find(quote);
  if (doubled == std::string_view::npos) {
    out.setText(content);
    return;
  }
  std::string text;
  std::size_t from = 0;
  for (; doubled != std::string_view::npos; doubled = content.find(quote, from)) {
    text += content.substr(from, doubled + 1 - from);
    from = doubled + 2;
  }
  text += content.substr(from);
  out = Value(std::move(text));
}

void readDate(const Token& token, std::string_view sql, Value& out) {
  const std::string_view content = base::trim(token.text.substr(1, token.text.size() - 2));
  auto date = base::DateTime::fromUsText(content);
  if (!date) date = base::DateTime::fromStored(content);
  if (!date) throwSyntaxError("Syntax error in date", sql, token.start);
  out = Value(*date);
}

}  // namespace

void readLiteral(const Token& token, std::string_view sql, Value& out) {
  const char* const end = token.text.data() + token.text.size();
  switch (token.kind) {
    case TokenKind::Long: {
      std::int64_t value = 0;
      std::from_chars(token.text.data(), end, value);
      out = Value(value);
      break;
    }
    case TokenKind::Double: {
      double value = 0;
      if (std::from_chars(token.text.data(), end, value).ec != std::errc()) {
        throwSyntaxError("Syntax error in number", sql, token.start);
      }
      out = Value(value);
      break;
    }
    case TokenKind::Text:
      readText(token.text, out);
      break;
    case TokenKind::DateTime:
      readDate(token, sql, out);
      break;
    default:
      out = Value(token.text.size() == 4);  // true or false
  }
}

}  // namespace jet
