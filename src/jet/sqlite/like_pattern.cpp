#include "jet/sqlite/like_pattern.h"

#include <algorithm>

#include "jet/operators.h"

namespace jet::sqlite {

namespace {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0 && c < 0x7F; });
}

bool isPatternInColumn(const Expression& pattern) {
  return pattern.kind == Expression::Kind::Binary && pattern.op == Operator::Add &&
         pattern.operands[0]->kind == Expression::Kind::Column &&
         pattern.operands[1]->kind == Expression::Kind::Literal && !pattern.operands[1]->isNullLiteral;
}

bool isKnown(const Expression& expression) {
  return expression.kind == Expression::Kind::Literal && !expression.isNullLiteral;
}

// The text behind `count` whole characters of UTF-8.
std::size_t characterEnd(std::string_view text, std::size_t start) {
  std::size_t end = start + 1;
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) ++end;
  return end;
}

}  // namespace

void collectLikeSites(const Expression* expression, std::size_t source, std::vector<LikeSite>& sites) {
  if (expression == nullptr) return;
  if (expression->kind == Expression::Kind::Binary &&
      (expression->op == Operator::Like || expression->op == Operator::NotLike)) {
    const Expression& text = *expression->operands[0];
    const Expression& pattern = *expression->operands[1];
    if (isKnown(pattern)) {
      sites.push_back({expression, source, false});
    } else if (expression->op == Operator::Like && isKnown(text) && isPatternInColumn(pattern)) {
      sites.push_back({expression, source, true});
    }
  }
  for (const ExpressionPtr& operand : expression->operands) collectLikeSites(operand.get(), source, sites);
}

void collectLikeSites(const Statement& statement, std::vector<LikeSite>& sites) {
  for (const SelectItem& item : statement.items) collectLikeSites(item.expression.get(), 0, sites);
  for (const Assignment& assignment : statement.assignments) collectLikeSites(assignment.value.get(), 0, sites);
  for (const ExpressionPtr& value : statement.values) collectLikeSites(value.get(), 0, sites);
  collectLikeSites(statement.where.get(), 0, sites);
  for (const ExpressionPtr& group : statement.groupBy) collectLikeSites(group.get(), 0, sites);
  collectLikeSites(statement.having.get(), 0, sites);
  for (const OrderItem& order : statement.orderBy) collectLikeSites(order.expression.get(), 0, sites);
}

LikeValue classifyPattern(const Value& pattern) {
  if (pattern.type() != Type::Text || !isAscii(pattern.text())) return {};
  std::string_view text = pattern.text();
  if (!text.empty() && text.find_first_not_of('*') == std::string_view::npos) return {LikeClass::Anything, {}, {}};
  const bool open = text.starts_with('*');
  const bool openEnd = text.ends_with('*');
  if (open) text.remove_prefix(1);
  if (openEnd) text.remove_suffix(1);
  if (hasWildcard(text) || (open && !openEnd)) return {};
  return {open ? LikeClass::Contained : openEnd ? LikeClass::Prefix : LikeClass::Equal, std::string(text), {}};
}

LikeValue classifyOwnPrefixes(const Value& text, const std::vector<std::string>& wildcardPrefixes) {
  if (text.type() != Type::Text || !isAscii(text.text())) return {};
  LikeValue value{LikeClass::OwnPrefixes, {}, {""}};
  for (std::size_t end = 0; end < text.text().size();) {
    end = characterEnd(text.text(), end);
    std::string prefix = text.text().substr(0, end);
    if (hasWildcard(prefix)) break;
    value.prefixes.push_back(std::move(prefix));
  }
  for (const std::string& prefix : wildcardPrefixes) {
    if (like(text.text(), prefix + "*")) value.prefixes.push_back(prefix);
  }
  if (value.prefixes.size() > kMaxPrefixes) return {};
  while (value.prefixes.size() % kPrefixStep != 0) value.prefixes.emplace_back();
  return value;
}

std::string prefixEnd(std::string prefix) {
  char& last = prefix.back();
  if (last >= 'A' && last <= 'Z') last = static_cast<char>(last + ('a' - 'A'));
  // 'A'..'Z' stand where 'a'..'z' are, so '[' comes next after '@'.
  last = last == '@' ? '[' : static_cast<char>(last + 1);
  return prefix;
}

}  // namespace jet::sqlite
