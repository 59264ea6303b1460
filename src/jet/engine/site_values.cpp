#include "jet/engine/site_values.h"

#include <algorithm>

#include "jet/operators.h"

namespace jet::engine {

namespace {

constexpr std::size_t kMaxPrefixes = 64;

// A zero byte may end a text for a database's folding; a prefix that ends with DEL has no end among texts of ASCII.
bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0 && c < 0x7F; });
}

}  // namespace

SiteValue classifyPattern(const Value& pattern) {
  if (pattern.type() != Type::Text || !isPlain(pattern.text())) return {};
  std::string_view text = pattern.text();
  if (!text.empty() && text.find_first_not_of('*') == std::string_view::npos) return {SiteClass::Anything, {}, {}};
  const bool open = text.starts_with('*');
  const bool openEnd = text.ends_with('*');
  if (open) text.remove_prefix(1);
  if (openEnd) text.remove_suffix(1);
  if (hasWildcard(text) || (open && !openEnd)) return {};
  return {open ? SiteClass::Contained : openEnd ? SiteClass::Prefix : SiteClass::Equal, std::string(text), {}};
}

SiteValue classifyOwnPrefixes(const Value& text, const std::vector<std::string>& wildcardPrefixes) {
  if (text.type() != Type::Text || !isPlain(text.text())) return {};
  SiteValue value{SiteClass::OwnPrefixes, {}, {""}};
  for (std::size_t end = 1; end <= text.text().size(); ++end) {
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

std::string containedPattern(std::string_view text) {
  std::string pattern = "%";
  for (const char c : text) {
    if (c == '%' || c == '_' || c == '\\') pattern += '\\';
    pattern += c;
  }
  return pattern + '%';
}

}  // namespace jet::engine
