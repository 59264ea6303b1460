#include "capture/transport/http_body.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "capture/framing/line_framer.h"

namespace capture {

namespace {

using nlohmann::json;

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

int base64Value(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+' || c == '-' || c == ' ') return 62;  // a form turns the plus into a blank
  if (c == '/' || c == '_') return 63;
  return -1;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    if (c == '=' || c == '\r' || c == '\n') continue;
    const int value = base64Value(c);
    if (value < 0) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>(bits >> count & 0xFF);
    }
  }
  return bytes;
}

std::string textOf(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

// An object that only wraps a list: {"cdr": [...]}, {"cdr_root": [...]}.
const json* listIn(const json& value) {
  if (value.is_array()) return &value;
  if (!value.is_object()) return nullptr;
  for (const char* key : {"cdr", "cdr_root", "records", "data"}) {
    const auto found = value.find(key);
    if (found != value.end() && found->is_array()) return &*found;
  }
  return nullptr;
}

bool addJson(std::vector<std::string>& lines, std::string_view body) {
  const json value = json::parse(body, nullptr, false);
  if (value.is_discarded() || !value.is_structured()) return false;
  if (const json* list = listIn(value)) {
    for (const json& element : *list) {
      if (element.is_array()) {
        for (const json& inner : element) lines.push_back(textOf(inner));
      } else {
        lines.push_back(textOf(element));
      }
    }
  } else {
    lines.push_back(textOf(value));
  }
  return true;
}

bool addForm(std::vector<std::string>& lines, std::string_view body) {
  while (!body.empty()) {
    const std::string_view field = body.substr(0, body.find('&'));
    body.remove_prefix(std::min(body.size(), field.size() + 1));
    if (!field.starts_with("cdr=")) continue;
    const std::string value = decodeForm(field.substr(4));
    if (addJson(lines, value)) return true;
    const auto decoded = decodeBase64(value);
    if (decoded && addJson(lines, *decoded)) return true;
  }
  return false;
}

}  // namespace

std::string decodeForm(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? hexValue(text[i + 1]) : -1;
    const int low = high >= 0 ? hexValue(text[i + 2]) : -1;
    if (low >= 0) {
      decoded += static_cast<char>(high << 4 | low);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

std::vector<std::string> linesOfBody(std::string_view body) {
  std::vector<std::string> lines;
  if (addJson(lines, body) || addForm(lines, body)) return lines;
  if (const auto decoded = decodeBase64(body); decoded && addJson(lines, *decoded)) return lines;
  LineFramer framer;
  framer.feed(body);
  while (auto line = framer.next()) lines.push_back(std::move(line->text));
  if (auto line = framer.finish()) lines.push_back(std::move(line->text));
  return lines;
}

}  // namespace capture
