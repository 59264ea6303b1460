#include "jet/parser/lexer.h"
#include "jet/parser/parser.h"

namespace jet {

namespace {

// No token begins with a control character, so a mark cannot be taken for a part of the text.
char markOf(TokenKind literal) {
  return static_cast<char>('\x01' + (static_cast<int>(literal) - static_cast<int>(TokenKind::Long)));
}

}  // namespace

void shapeOf(std::string_view sql, Shape& out) {
  Lexer lexer(sql);
  out.key.clear();
  std::size_t copied = 0;
  std::size_t count = 0;
  for (Token token = lexer.next(); token.kind != TokenKind::End; token = lexer.next()) {
    if (!token.isLiteral()) continue;
    out.key.append(sql.data() + copied, token.start - copied);
    out.key += markOf(token.kind);
    copied = token.end;
    if (count == out.literals.size()) out.literals.emplace_back();
    readLiteral(token, sql, out.literals[count++]);
  }
  out.key.append(sql.data() + copied, sql.size() - copied);
  out.literals.resize(count);
}

}  // namespace jet
