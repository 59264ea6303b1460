#include "capture/site/site_json.h"

#include <sstream>

#include "base/printf.h"
#include "capture/site/site.h"

namespace capture {

namespace {

using nlohmann::ordered_json;

ordered_json jsonOfNode(const toml::node& node) {
  if (const toml::table* table = node.as_table()) return jsonOf(*table);
  if (const toml::array* array = node.as_array()) {
    ordered_json list = ordered_json::array();
    for (const toml::node& element : *array) list.push_back(jsonOfNode(element));
    return list;
  }
  if (const auto* text = node.as_string()) return text->get();
  if (const auto* number = node.as_integer()) return number->get();
  if (const auto* flag = node.as_boolean()) return flag->get();
  std::ostringstream text;
  node.visit([&text](const auto& value) { text << value; });
  return text.str();
}

toml::array arrayOf(const nlohmann::json& list) {
  toml::array array;
  for (const nlohmann::json& element : list) {
    if (element.is_object()) {
      array.push_back(tableOf(element));
    } else if (element.is_string()) {
      array.push_back(element.get<std::string>());
    } else if (element.is_number_integer()) {
      array.push_back(element.get<std::int64_t>());
    } else {
      throw SiteError("a list of a site file holds texts, whole numbers or tables, not " + element.dump());
    }
  }
  return array;
}

std::string inQuotes(std::string_view text) {
  std::string all = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      all += '\\';
      all += c;
    } else if (c == '\r' || c == '\n') {
      all += c == '\r' ? "\\r" : "\\n";
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      all += base::format("\\u%04X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    } else {
      all += c;
    }
  }
  return all + '"';
}

std::string listText(const toml::array& array) {
  std::string all;
  for (const toml::node& element : array) all += (all.empty() ? "" : ", ") + tomlText(element);
  return "[" + all + "]";
}

std::string tableText(const toml::table& table) {
  std::string all;
  for (const auto& [key, value] : table) {
    all += (all.empty() ? "" : ", ") + tomlKey(key.str()) + " = " + tomlText(value);
  }
  return all.empty() ? "{}" : "{ " + all + " }";
}

}  // namespace

ordered_json jsonOf(const toml::table& table) {
  ordered_json object = ordered_json::object();
  for (const auto& [key, value] : table) object[std::string(key.str())] = jsonOfNode(value);
  return object;
}

toml::table tableOf(const nlohmann::json& object) {
  if (!object.is_object()) throw SiteError("a table of a site file is a JSON object, not " + object.dump());
  toml::table table;
  for (const auto& [key, value] : object.items()) {
    if (value.is_object()) {
      table.insert(key, tableOf(value));
    } else if (value.is_array()) {
      table.insert(key, arrayOf(value));
    } else if (value.is_string()) {
      table.insert(key, value.get<std::string>());
    } else if (value.is_boolean()) {
      table.insert(key, value.get<bool>());
    } else if (value.is_number_integer()) {
      table.insert(key, value.get<std::int64_t>());
    } else {
      throw SiteError("\"" + key + "\" cannot be " + value.dump() + " in a site file");
    }
  }
  return table;
}

std::string tomlText(const toml::node& value) {
  if (const toml::table* table = value.as_table()) return tableText(*table);
  if (const toml::array* array = value.as_array()) return listText(*array);
  if (const auto* text = value.as_string()) return inQuotes(text->get());
  std::ostringstream text;
  value.visit([&text](const auto& node) { text << node; });
  return text.str();
}

std::string tomlKey(std::string_view key) {
  constexpr std::string_view kBare = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
  return key.empty() || key.find_first_not_of(kBare) != std::string_view::npos ? inQuotes(key) : std::string(key);
}

}  // namespace capture
