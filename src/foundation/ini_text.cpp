#include "foundation/ini_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace foundation {

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool hexPairAt(std::string_view text, std::size_t at) {
  return at + 1 < text.size() && hexDigit(text[at]) >= 0 && hexDigit(text[at + 1]) >= 0;
}

void appendHex(std::string& out, unsigned char byte) {
  static constexpr char kDigits[] = "0123456789abcdef";
  out += kDigits[byte >> 4];
  out += kDigits[byte & 15];
}

std::string unescape(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && hexPairAt(text, i + 1)) {
      out += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

// `first` and `anywhere` are characters that the place cannot show at its start or at all.
std::string escape(std::string_view text, std::string_view first, std::string_view anywhere) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const auto byte = static_cast<unsigned char>(c);
    const bool atEnd = i == 0 || i + 1 == text.size();
    const bool hidden = byte < 0x20 || byte == 0x7f || (c == ' ' && atEnd) || (c == '%' && hexPairAt(text, i + 1)) ||
                        (i == 0 && first.find(c) != std::string_view::npos) ||
                        anywhere.find(c) != std::string_view::npos;
    if (hidden) {
      out += '%';
      appendHex(out, byte);
    } else {
      out += c;
    }
  }
  return out;
}

std::optional<IniText::Value> parseValue(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view type = text.substr(0, colon);
  std::string_view value = text.substr(colon + 1);
  if (base::equalFoldAscii(type, "str")) return IniText::Value(unescape(value));
  value = base::trim(value);
  if (base::equalFoldAscii(type, "int")) {
    std::int32_t number = 0;
    const auto [end, fault] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (fault != std::errc() || end != value.data() + value.size()) return std::nullopt;
    return IniText::Value(number);
  }
  if (base::equalFoldAscii(type, "hex") && value.size() % 2 == 0) {
    IniText::Binary bytes;
    for (std::size_t i = 0; i < value.size(); i += 2) {
      if (!hexPairAt(value, i)) return std::nullopt;
      bytes.push_back(static_cast<unsigned char>(hexDigit(value[i]) * 16 + hexDigit(value[i + 1])));
    }
    return IniText::Value(std::move(bytes));
  }
  return std::nullopt;
}

std::string valueText(const IniText::Value& value) {
  if (const auto* number = std::get_if<std::int32_t>(&value)) return "int:" + std::to_string(*number);
  if (const auto* text = std::get_if<std::string>(&value)) return "str:" + escape(*text, {}, {});
  std::string out = "hex:";
  for (const unsigned char byte : std::get<IniText::Binary>(value)) appendHex(out, byte);
  return out;
}

}  // namespace

IniText::IniText(std::string_view content) {
  if (content.substr(0, 3) == "\xEF\xBB\xBF") content.remove_prefix(3);
  std::string section;
  while (!content.empty()) {
    const std::size_t end = content.find('\n');
    addLine(content.substr(0, end), section);
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
  }
}

std::string IniText::name(std::string_view section, std::string_view key) {
  std::string out = base::foldAscii(section);
  out += '\0';
  out += base::foldAscii(key);
  return out;
}

void IniText::addLine(std::string_view raw, std::string& section) {
  Line line;
  line.raw = std::string(raw);
  const std::string_view shown = base::trim(raw);
  const std::size_t equals = shown.find('=');
  if (shown.size() >= 2 && shown.front() == '[' && shown.back() == ']') {
    line.kind = Kind::Header;
    section = base::foldAscii(unescape(base::trim(shown.substr(1, shown.size() - 2))));
  } else if (equals != std::string_view::npos && shown.front() != ';' && shown.front() != '#') {
    if (auto value = parseValue(base::trim(shown.substr(equals + 1)))) {
      line.kind = Kind::Entry;
      line.key = base::foldAscii(unescape(base::trim(shown.substr(0, equals))));
      values_.insert_or_assign(name(section, line.key), std::move(*value));
    }
  }
  line.section = section;
  lines_.push_back(std::move(line));
}

std::string IniText::text() const {
  std::string out;
  for (const Line& line : lines_) {
    out += line.raw;
    out += '\n';
  }
  return out;
}

const IniText::Value* IniText::find(std::string_view section, std::string_view key) const {
  const auto found = values_.find(name(section, key));
  return found == values_.end() ? nullptr : &found->second;
}

void IniText::set(std::string_view section, std::string_view key, Value value) {
  Line line;
  line.kind = Kind::Entry;
  line.raw = escape(key, ";#[", "=") + "=" + valueText(value);
  line.section = base::foldAscii(section);
  line.key = base::foldAscii(key);
  const auto same = [&](const Line& other) {
    return other.kind == Kind::Entry && other.section == line.section && other.key == line.key;
  };
  const auto existing = std::find_if(lines_.begin(), lines_.end(), same);
  if (existing != lines_.end()) {
    lines_.erase(std::remove_if(existing + 1, lines_.end(), same), lines_.end());
    *std::find_if(lines_.begin(), lines_.end(), same) = std::move(line);
  } else {
    const std::size_t place = placeForNewEntry(line.section, section);
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place), std::move(line));
  }
  values_.insert_or_assign(name(section, key), std::move(value));
}

// After the section's last line that is not blank; a section that is not there yet is opened at the end.
std::size_t IniText::placeForNewEntry(std::string_view foldedSection, std::string_view section) {
  for (std::size_t i = lines_.size(); i > 0; --i) {
    const Line& line = lines_[i - 1];
    if (line.section == foldedSection && (line.kind != Kind::Other || !base::trim(line.raw).empty())) return i;
  }
  if (foldedSection.empty()) return 0;
  if (!lines_.empty()) lines_.push_back({Kind::Other, "", lines_.back().section, ""});
  lines_.push_back({Kind::Header, "[" + escape(section, {}, {}) + "]", std::string(foldedSection), ""});
  return lines_.size();
}

void IniText::erase(std::string_view section, std::string_view key) {
  const std::string foldedSection = base::foldAscii(section);
  const std::string foldedKey = base::foldAscii(key);
  std::erase_if(lines_, [&](const Line& line) {
    return line.kind == Kind::Entry && line.section == foldedSection && line.key == foldedKey;
  });
  values_.erase(name(section, key));
}

void IniText::eraseSection(std::string_view section) {
  const std::string folded = base::foldAscii(section);
  std::erase_if(lines_, [&](const Line& line) { return line.section == folded; });
  const std::string prefix = name(section, {});
  std::erase_if(values_, [&](const auto& entry) { return entry.first.compare(0, prefix.size(), prefix) == 0; });
}

}  // namespace foundation
