#include "capture/format/layout.h"

#include <re2/re2.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "base/text.h"

namespace capture {

namespace {

// Byte offset of the character after the one at `at`.
std::size_t nextCharacter(std::string_view line, std::size_t at) {
  do {
    ++at;
  } while (at < line.size() && (static_cast<unsigned char>(line[at]) & 0xC0) == 0x80);
  return at;
}

bool isBlank(std::string_view text) {
  return base::trim(text).empty();
}

// The part of a line from one character to another (counted from 0, the end not included), as a walk from left to
// right.
class ColumnWalk {
 public:
  explicit ColumnWalk(std::string_view line) : line_(line) {}

  std::string_view upTo(std::size_t character) {
    const std::size_t begin = at_;
    while (character_ < character && at_ < line_.size()) {
      at_ = nextCharacter(line_, at_);
      ++character_;
    }
    return line_.substr(begin, at_ - begin);
  }

 private:
  std::string_view line_;
  std::size_t at_ = 0;
  std::size_t character_ = 0;
};

// A quoted value, its opening quote already taken; false when no quote closes it.
bool takeQuoted(std::string_view& line, std::string& value) {
  while (!line.empty()) {
    const std::size_t quote = line.find('"');
    if (quote == std::string_view::npos) return false;
    value += line.substr(0, quote);
    line.remove_prefix(quote + 1);
    if (!line.starts_with('"')) return true;
    value += '"';
    line.remove_prefix(1);
  }
  return false;
}

std::string jsonText(const nlohmann::json& value) {
  if (value.is_string()) return std::string(base::trim(value.get_ref<const std::string&>()));
  if (value.is_number() || value.is_boolean()) return value.dump();
  return {};
}

}  // namespace

std::string readLine(const ColumnsLayout& layout, std::string_view line, Fields& fields) {
  ColumnWalk walk(line);
  std::size_t last = 0;
  for (const ColumnsLayout::Column& column : layout.columns) {
    if (!isBlank(walk.upTo(column.first - 1))) {
      return "there is text between column " + std::to_string(last) + " and column " + std::to_string(column.first);
    }
    fields[column.field] = base::trim(walk.upTo(column.last));
    last = column.last;
  }
  return {};
}

std::optional<std::vector<std::string>> splitCsv(std::string_view line, char separator) {
  std::vector<std::string> values;
  for (;;) {
    std::string& value = values.emplace_back();
    const std::size_t first = line.find_first_not_of(" \t");
    if (first != std::string_view::npos && line[first] == '"' && separator != '"') {
      line.remove_prefix(first + 1);
      if (!takeQuoted(line, value)) return std::nullopt;
      value = base::trim(std::string(value));
      const std::size_t next = std::min(line.find(separator), line.size());
      if (!isBlank(line.substr(0, next))) return std::nullopt;
      line.remove_prefix(next);
    } else {
      const std::size_t next = std::min(line.find(separator), line.size());
      value = base::trim(line.substr(0, next));
      line.remove_prefix(next);
    }
    if (line.empty()) return values;
    line.remove_prefix(1);
  }
}

std::string readLine(const CsvLayout& layout, std::string_view line, Fields& fields) {
  auto values = splitCsv(line, layout.separator);
  if (!values) return "a quote is not closed";
  const bool fits = layout.counts.empty()
                        ? values->size() >= layout.fields.size()
                        : std::find(layout.counts.begin(), layout.counts.end(), values->size()) != layout.counts.end();
  if (!fits) return "the line has " + std::to_string(values->size()) + " values";
  for (std::size_t i = 0; i < std::min(values->size(), layout.fields.size()); ++i) {
    if (layout.fields[i]) fields[*layout.fields[i]] = std::move((*values)[i]);
  }
  return {};
}

std::string readLine(const PatternLayout& layout, std::string_view line, Fields& fields) {
  line = line.substr(0, line.find_last_not_of(" \t") + 1);
  std::vector<re2::StringPiece> groups(static_cast<std::size_t>(layout.pattern->NumberOfCapturingGroups()) + 1);
  if (!layout.pattern->Match({line.data(), line.size()}, 0, line.size(), re2::RE2::ANCHOR_BOTH, groups.data(),
                             static_cast<int>(groups.size()))) {
    return "the line does not fit the pattern";
  }
  const auto group = [&](int number) {
    const re2::StringPiece& found = groups[static_cast<std::size_t>(number)];
    return std::string_view(found.data() == nullptr ? "" : found.data(), found.size());
  };
  for (const auto& [number, field] : layout.groups) fields[field] = base::trim(group(number));
  if (!layout.pairs) return {};
  for (const std::string& pair : base::split(group(layout.pairs->group), std::string(1, layout.pairs->between))) {
    const std::size_t equals = pair.find('=');
    if (equals == std::string::npos) return "'" + pair + "' is no name=value";
    for (const auto& [name, field] : layout.pairs->fields) {
      if (std::string_view(pair).substr(0, equals) == name) {
        fields[field] = base::trim(std::string_view(pair).substr(equals + 1));
      }
    }
  }
  return {};
}

std::string readLine(const JsonLayout& layout, std::string_view line, Fields& fields) {
  const nlohmann::json object = nlohmann::json::parse(line, nullptr, false);
  if (!object.is_object()) return "the line is no JSON object";
  for (const auto& [field, pointers] : layout.fields) {
    for (const std::string& pointer : pointers) {
      const nlohmann::json::json_pointer place(pointer);
      if (!object.contains(place)) continue;
      fields[field] = jsonText(object.at(place));
      if (!fields[field].empty()) break;
    }
  }
  return {};
}

std::string readLine(const BlockLayout& layout, std::string_view line, bool first, Fields& fields) {
  for (const std::string& ignored : layout.ignored) {
    if (line.starts_with(ignored)) return {};
  }
  if (first && layout.stamp) {
    fields[*layout.stamp] = base::trim(line);
    return {};
  }
  const std::size_t mark = line.find(layout.colon ? ':' : '=');
  if (mark == std::string_view::npos) return "a line of the block has no name and value";
  const std::string_view name = base::trim(line.substr(0, mark));
  std::string_view value = base::trim(line.substr(mark + 1));
  if (!layout.colon && value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = base::trim(value.substr(1, value.size() - 2));
  }
  for (const auto& [wanted, field] : layout.fields) {
    if (!base::equalFoldAscii(name, wanted)) continue;
    // Some devices put the name in front of the value again.
    if (value.size() > wanted.size() && value[wanted.size()] == '=' &&
        base::equalFoldAscii(value.substr(0, wanted.size()), wanted)) {
      value.remove_prefix(wanted.size() + 1);
    }
    fields[field] = value;
  }
  return {};
}

}  // namespace capture
