#include "exchange/party_index.h"

#include <algorithm>

namespace exchange {

namespace {

// Bytes of the UTF-8 character at the front of a text that is not empty.
std::size_t characterLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) ++length;
  return length;
}

}  // namespace

bool accountMatches(std::string_view definition, std::string_view account) {
  while (!definition.empty() && !account.empty()) {
    const std::size_t length = characterLength(account);
    const std::size_t wanted = definition.front() == '?' ? 1 : length;
    if (definition.front() != '?' && definition.substr(0, length) != account.substr(0, length)) return false;
    definition.remove_prefix(wanted);
    account.remove_prefix(length);
  }
  return definition.empty() && account.empty();
}

void AccountIndex::clear() {
  exact_.clear();
  patterns_.clear();
}

void AccountIndex::add(std::string_view definition, std::size_t position) {
  if (definition.find('?') == std::string_view::npos) {
    exact_.emplace(definition, position);
  } else {
    patterns_.push_back({std::string(definition), position});
  }
}

std::optional<std::size_t> AccountIndex::find(std::string_view account) const {
  std::optional<std::size_t> found;
  if (const auto exact = exact_.find(account); exact != exact_.end()) found = exact->second;
  for (const Pattern& pattern : patterns_) {
    if (found && pattern.position > *found) break;
    if (accountMatches(pattern.definition, account)) return pattern.position;
  }
  return found;
}

void PrefixIndex::clear() {
  first_.clear();
  lengths_.clear();
}

void PrefixIndex::add(std::string_view prefix, std::size_t position) {
  first_.emplace(prefix, position);
  const auto at = std::lower_bound(lengths_.begin(), lengths_.end(), prefix.size());
  if (at == lengths_.end() || *at != prefix.size()) lengths_.insert(at, prefix.size());
}

std::optional<std::size_t> PrefixIndex::find(std::string_view number) const {
  std::optional<std::size_t> found;
  for (const std::size_t length : lengths_) {
    if (length > number.size()) break;
    const auto entry = first_.find(number.substr(0, length));
    if (entry != first_.end() && (!found || entry->second < *found)) found = entry->second;
  }
  return found;
}

}  // namespace exchange
