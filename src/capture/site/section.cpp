#include "capture/site/section.h"

#include "capture/site/site.h"

namespace capture {

toml::table parseSite(std::string_view text, const std::string& file) {
  try {
    return toml::parse(text, std::string_view(file));
  } catch (const toml::parse_error& error) {
    const auto& begin = error.source().begin;
    throw SiteError(file + ":" + std::to_string(begin.line) + ":" + std::to_string(begin.column) + ": " +
                    std::string(error.description()));
  }
}

std::string Section::place(const toml::source_region& region) const {
  return file_ + ":" + std::to_string(region.begin.line) + ":" + std::to_string(region.begin.column) + ": ";
}

void Section::fail(std::string_view key, const std::string& what) const {
  const toml::node* node = table_.get(key);
  throw SiteError(place(node == nullptr ? table_.source() : node->source()) + (name_.empty() ? "" : name_ + ": ") +
                  (key.empty() ? what : "\"" + std::string(key) + "\" " + what));
}

const toml::node* Section::find(std::string_view key) {
  read_.emplace(key);
  return table_.get(key);
}

std::string Section::text(const char* key, const std::string& absent) {
  const toml::node* node = find(key);
  if (node == nullptr) return absent;
  const auto value = node->value_exact<std::string>();
  if (!value) fail(key, "must be a text in quotation marks");
  return *value;
}

std::string Section::neededText(const char* key) {
  if (!has(key)) fail({}, std::string("\"") + key + "\" is missing");
  std::string value = text(key);
  if (value.empty()) fail(key, "must not be empty");
  return value;
}

std::int64_t Section::number(const char* key, std::int64_t absent, std::int64_t least, std::int64_t most) {
  const toml::node* node = find(key);
  if (node == nullptr) return absent;
  const auto value = node->value_exact<std::int64_t>();
  if (!value || *value < least || *value > most) {
    fail(key, "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return *value;
}

std::int64_t Section::neededNumber(const char* key, std::int64_t least, std::int64_t most) {
  if (!has(key)) fail({}, std::string("\"") + key + "\" is missing");
  return number(key, 0, least, most);
}

bool Section::yes(const char* key, bool absent) {
  const toml::node* node = find(key);
  if (node == nullptr) return absent;
  const auto value = node->value_exact<bool>();
  if (!value) fail(key, "must be true or false");
  return *value;
}

std::vector<std::string> Section::texts(const char* key) {
  const toml::node* node = find(key);
  std::vector<std::string> values;
  if (node == nullptr) return values;
  const toml::array* list = node->as_array();
  if (list == nullptr) fail(key, "must be a list of texts: [\"...\", \"...\"]");
  for (const toml::node& element : *list) {
    const auto value = element.value_exact<std::string>();
    if (!value) fail(key, "must be a list of texts: [\"...\", \"...\"]");
    values.push_back(*value);
  }
  return values;
}

Section Section::table(const char* key) {
  const toml::node* node = find(key);
  static const toml::table empty;
  if (node == nullptr) return {empty, file_, key};
  if (!node->is_table()) fail(key, "must be a table: { ... }");
  return {*node->as_table(), file_, key};
}

std::vector<Section> Section::tables(const char* key) {
  std::vector<Section> sections;
  const toml::node* node = find(key);
  if (node == nullptr) return sections;
  const toml::array* list = node->as_array();
  if (list == nullptr) fail(key, "must be a list of tables");
  for (const toml::node& element : *list) {
    if (!element.is_table()) fail(key, "must be a list of tables");
    sections.emplace_back(*element.as_table(), file_, key);
  }
  return sections;
}

std::string Section::anyText(const std::string& key) {
  const toml::node* node = find(key);
  if (node == nullptr) return {};
  if (node->is_array()) {
    std::string all;
    for (const std::string& value : texts(key.c_str())) all += (all.empty() ? "" : ",") + value;
    return all;
  }
  if (const auto text = node->value_exact<std::string>()) return *text;
  if (const auto number = node->value_exact<std::int64_t>()) return std::to_string(*number);
  if (const auto flag = node->value_exact<bool>()) return *flag ? "true" : "false";
  fail(key, "must be a text, a number, true, false or a list of texts");
}

std::vector<std::string> Section::unreadKeys() const {
  std::vector<std::string> keys;
  for (const auto& [key, value] : table_) {
    if (!read_.contains(std::string_view(key.str()))) keys.emplace_back(key.str());
  }
  return keys;
}

void Section::refuseUnread() const {
  const auto keys = unreadKeys();
  if (!keys.empty()) fail(keys.front(), "is no key that is known here");
}

}  // namespace capture
