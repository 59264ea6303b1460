#include "capture/format/toml_table.h"

#include <algorithm>

namespace capture {

void failAt(const toml::node& node, const std::string& message) {
  const toml::source_region& place = node.source();
  throw FormatError((place.path ? *place.path : std::string("format")) + ":" + std::to_string(place.begin.line) + ":" +
                    std::to_string(place.begin.column) + ": " + message);
}

namespace {

const toml::table& tableOf(const toml::node& node) {
  const toml::table* table = node.as_table();
  if (table == nullptr) failAt(node, "a table { ... } is needed here");
  return *table;
}

}  // namespace

TomlTable::TomlTable(const toml::node& node) : table_(tableOf(node)) {}

const toml::node* TomlTable::find(std::string_view key) {
  asked_.emplace(key);
  return table_.get(key);
}

std::optional<std::string> TomlTable::text(std::string_view key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  return textOf(*node);
}

std::string TomlTable::text(std::string_view key, std::string_view fallback) {
  return text(key).value_or(std::string(fallback));
}

std::string TomlTable::needText(std::string_view key) {
  auto value = text(key);
  if (!value) failAt(table_, "the key '" + std::string(key) + "' is missing");
  return *value;
}

std::optional<std::int64_t> TomlTable::integer(std::string_view key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  const auto value = node->value_exact<std::int64_t>();
  if (!value) failAt(*node, "'" + std::string(key) + "' must be a whole number");
  return value;
}

bool TomlTable::flag(std::string_view key, bool fallback) {
  const toml::node* node = find(key);
  if (node == nullptr) return fallback;
  const auto value = node->value_exact<bool>();
  if (!value) failAt(*node, "'" + std::string(key) + "' must be true or false");
  return *value;
}

std::vector<std::string> TomlTable::texts(std::string_view key) {
  const toml::node* node = find(key);
  return node == nullptr ? std::vector<std::string>() : textsOf(*node);
}

void TomlTable::done() const {
  for (const auto& [key, node] : table_) {
    if (!asked_.contains(key.str())) failAt(node, "unknown key '" + std::string(key.str()) + "'");
  }
}

std::vector<std::pair<std::string, const toml::node*>> TomlTable::all() {
  std::vector<std::pair<std::string, const toml::node*>> entries;
  for (const auto& [key, node] : table_) {
    asked_.emplace(key.str());
    entries.emplace_back(key.str(), &node);
  }
  std::stable_sort(entries.begin(), entries.end(), [](const auto& left, const auto& right) {
    return left.second->source().begin.line < right.second->source().begin.line;
  });
  return entries;
}

std::string textOf(const toml::node& node) {
  const auto value = node.value_exact<std::string>();
  if (!value) failAt(node, "a text is needed here");
  return *value;
}

std::vector<std::string> textsOf(const toml::node& node) {
  std::vector<std::string> values;
  if (const toml::array* list = node.as_array()) {
    for (const toml::node& item : *list) values.push_back(textOf(item));
  } else {
    values.push_back(textOf(node));
  }
  return values;
}

void eachTable(const toml::node& node, const std::function<void(const toml::node&)>& take) {
  if (const toml::array* list = node.as_array()) {
    for (const toml::node& item : *list) take(item);
  } else {
    take(node);
  }
}

}  // namespace capture
