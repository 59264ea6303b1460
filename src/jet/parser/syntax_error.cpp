#include "jet/parser/syntax_error.h"

#include <algorithm>
#include <string>

#include "base/printf.h"
#include "jet/error.h"

namespace jet {

namespace {

constexpr std::size_t kExcerptLength = 240;

bool continuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

std::string_view excerpt(std::string_view sql, std::size_t offset) {
  if (sql.size() <= kExcerptLength) return sql;
  std::size_t start = offset > kExcerptLength / 2 ? offset - kExcerptLength / 2 : 0;
  std::size_t end = std::min(sql.size(), start + kExcerptLength);
  while (start < end && continuesCharacter(sql[start])) ++start;
  while (end > start && end < sql.size() && continuesCharacter(sql[end])) --end;
  return sql.substr(start, end - start);
}

}  // namespace

void throwSyntaxError(std::string_view what, std::string_view sql, std::size_t offset) {
  offset = std::min(offset, sql.size());
  const auto before = sql.substr(0, offset);
  const auto continuations = std::count_if(before.begin(), before.end(), continuesCharacter);
  const auto character = static_cast<std::ptrdiff_t>(offset) - continuations + 1;
  throw Error(3075, base::format("%s in query expression '%s' at character %d.", what, excerpt(sql, offset), character),
              std::string(sql));
}

}  // namespace jet
