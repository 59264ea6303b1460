#include "jet/parser/shape_memory.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::size_t kMostPatterns = 256;
// Older ones are found by cutting the text into tokens and looking its shape up.
constexpr std::size_t kMostRecent = 16;

// Reads the forms that most literals have without a lexer: a few digits that no longer token begins with, and a text
// without its own quotation mark. Where the literal ends; nothing where the lexer must say.
std::optional<std::size_t> readPlain(TokenKind kind, std::string_view sql, std::size_t start, Value& out) {
  constexpr std::size_t kMostDigits = 18;
  if (start >= sql.size()) return std::nullopt;
  if (kind == TokenKind::Long) {
    std::int64_t number = 0;
    std::size_t end = start;
    for (; end < sql.size() && sql[end] >= '0' && sql[end] <= '9'; ++end) number = number * 10 + (sql[end] - '0');
    const bool ends = end == sql.size() || sql[end] == ' ' || sql[end] == ')' || sql[end] == ',';
    if (end == start || end - start > kMostDigits || !ends) return std::nullopt;
    out = Value(number);
    return end;
  }
  const char quote = sql[start];
  if (kind != TokenKind::Text || (quote != '\'' && quote != '"')) return std::nullopt;
  const std::size_t closing = sql.find(quote, start + 1);
  if (closing == std::string_view::npos || (closing + 1 < sql.size() && sql[closing + 1] == quote)) return std::nullopt;
  out.setText(sql.substr(start + 1, closing - start - 1));
  return closing + 1;
}

}  // namespace

// A literal that begins where one began before, with the same characters before it, is cut in the same way; it ends
// where the pattern goes on, or the text is another one.
bool ShapeMemory::matches(const Pattern& pattern, std::string_view sql, std::vector<Value>& literals) const {
  std::size_t part = 0;
  std::size_t at = 0;
  literals.resize(pattern.literals.size());
  for (std::size_t i = 0; i < pattern.literals.size(); ++i) {
    const std::size_t size = pattern.literals[i].end - part;
    if (sql.compare(at, size, pattern.parts, part, size) != 0) return false;
    at += size;
    part += size;
    if (const auto end = readPlain(pattern.literals[i].kind, sql, at, literals[i])) {
      at = *end;
      continue;
    }
    const std::optional<Token> token = Lexer::literalAt(sql, at);
    if (!token || token->kind != pattern.literals[i].kind) return false;
    readLiteral(*token, sql, literals[i]);
    at = token->end;
  }
  return sql.substr(at) == std::string_view(pattern.parts).substr(part);
}

std::size_t ShapeMemory::shapeOf(std::string_view sql, Shape& out) {
  for (std::size_t i = 0; i < recent_.size(); ++i) {
    const std::size_t number = recent_[i];
    const Pattern& pattern = patterns_[number];
    // The first characters tell most patterns apart.
    const std::size_t start = pattern.literals.empty() ? pattern.parts.size() : pattern.literals.front().end;
    if (sql.size() < start || sql.compare(0, start, pattern.parts, 0, start) != 0) continue;
    if (!matches(pattern, sql, out.literals)) continue;
    out.key = pattern.key;
    std::rotate(recent_.begin(), recent_.begin() + static_cast<std::ptrdiff_t>(i),
                recent_.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    return number;
  }
  return add(sql, out);
}

std::size_t ShapeMemory::add(std::string_view sql, Shape& out) {
  jet::shapeOf(sql, out);
  auto found = std::ranges::find(patterns_, out.key, &Pattern::key);
  if (found == patterns_.end()) {
    if (patterns_.size() >= kMostPatterns) {
      patterns_.clear();
      recent_.clear();
      ++generation_;
    }
    Pattern pattern{out.key, {}, {}};
    Lexer lexer(sql);
    std::size_t copied = 0;
    for (Token token = lexer.next(); token.kind != TokenKind::End; token = lexer.next()) {
      if (!token.isLiteral()) continue;
      pattern.parts += sql.substr(copied, token.start - copied);
      pattern.literals.push_back({pattern.parts.size(), token.kind});
      copied = token.end;
    }
    pattern.parts += sql.substr(copied);
    patterns_.push_back(std::move(pattern));
    found = std::prev(patterns_.end());
  }
  const auto number = static_cast<std::size_t>(found - patterns_.begin());
  std::erase(recent_, number);
  recent_.insert(recent_.begin(), number);
  if (recent_.size() > kMostRecent) recent_.pop_back();
  return number;
}

}  // namespace jet
