#include "jet/prepared_select.h"

#include <algorithm>
#include <stdexcept>

#include "jet/parser/lexer.h"
#include "jet/parser/parser.h"

namespace jet {

namespace {

// Longer values are left to the text, which has a limit of its own.
constexpr std::size_t kLongestText = 1000;
constexpr std::string_view kTimeOfDay = "#%d:%d#";
constexpr int kMinutesPerHour = 60;

[[noreturn]] void failPattern(std::string_view pattern) {
  throw std::logic_error("A placeholder that is no value: " + std::string(pattern));
}

}  // namespace

PreparedSelect::PreparedSelect(std::string_view pattern) : pattern_(pattern) {
  std::string sample;
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < pattern.size();) at += takePart(pattern.substr(at), sample, starts);
  findLiterals(sample, starts);
}

// Adds the part that the rest of the pattern begins with to a text with sample values, and where it holds a literal
// with a placeholder. How long the part is in the pattern.
std::size_t PreparedSelect::takePart(std::string_view rest, std::string& sample, std::vector<std::size_t>& starts) {
  const auto addSlot = [&](Slot slot, std::string_view value, std::size_t size) {
    slots_.push_back(std::move(slot));
    starts.push_back(sample.size());
    sample += value;
    return size;
  };
  const auto addPlain = [&](std::size_t size) {
    sample += rest.substr(0, size);
    return std::min(size, rest.size());
  };
  const char c = rest.front();
  if (rest.starts_with(kTimeOfDay)) return addSlot({.kind = Kind::TimeOfDay}, "#0:0#", kTimeOfDay.size());
  if (rest.starts_with("%d")) return addSlot({.kind = Kind::Number}, "0", 2);
  if (rest.starts_with("%%")) return addPlain(1) + 1;
  if (c == '%') failPattern(pattern_);
  if (c == '[') {
    const std::size_t size = std::min(rest.find(']'), rest.size() - 1) + 1;
    for (std::size_t i = 0; i < size; ++i) {
      sample += rest[i];
      if (rest.substr(i, 2) == "%%") ++i;
    }
    return size;
  }
  if (c != '\'' && c != '"') return addPlain(1);
  const std::size_t size = std::min(rest.find(c, 1), rest.size() - 1) + 1;
  const std::string_view content = rest.substr(1, size - 2);
  const std::size_t place = content.find("%s");
  if (place == std::string_view::npos) return addPlain(size);
  if (content.find('%', place + 1) != std::string_view::npos) failPattern(pattern_);
  return addSlot({.kind = Kind::Text,
                  .quote = c,
                  .before = std::string(content.substr(0, place)),
                  .after = std::string(content.substr(place + 2))},
                 rest.substr(0, size), size);
}

// Sample values are cut out of the text as all others are, and so show where its literals are.
void PreparedSelect::findLiterals(std::string_view sample, const std::vector<std::size_t>& starts) {
  Shape shape;
  shapeOf(sample, shape);
  literals_ = std::move(shape.literals);
  Lexer lexer(sample);
  std::size_t literal = 0;
  std::size_t found = 0;
  for (Token token = lexer.next(); token.kind != TokenKind::End; token = lexer.next()) {
    if (!token.isLiteral()) continue;
    if (found < starts.size() && token.start == starts[found]) slots_[found++].literal = literal;
    ++literal;
  }
  if (found != starts.size()) failPattern(pattern_);
}

std::string PreparedSelect::text(std::span<const base::FormatArgument> values) const {
  std::vector<base::FormatArgument> arguments;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i < slots_.size() && slots_[i].kind == Kind::TimeOfDay) {
      const std::int64_t minute = std::get<std::int64_t>(values[i]);
      arguments.emplace_back(minute / kMinutesPerHour);
      arguments.emplace_back(minute % kMinutesPerHour);
    } else {
      arguments.push_back(values[i]);
    }
  }
  return base::formatArguments(pattern_, arguments.data(), arguments.size());
}

std::optional<std::span<const Value>> PreparedSelect::literals(std::span<const base::FormatArgument> values) {
  if (values.size() != slots_.size()) throw std::logic_error("Not a value for each placeholder: " + pattern_);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!put(slots_[i], values[i])) return std::nullopt;
  }
  return literals_;
}

bool PreparedSelect::put(const Slot& slot, const base::FormatArgument& value) {
  Value& literal = literals_[slot.literal];
  if (slot.kind == Kind::Text) {
    const auto* const text = std::get_if<std::string_view>(&value);
    if (text == nullptr || text->size() > kLongestText || text->find(slot.quote) != std::string_view::npos) {
      return false;
    }
    if (slot.before.empty() && slot.after.empty()) {
      literal.setText(*text);
      return true;
    }
    joined_.assign(slot.before).append(*text).append(slot.after);
    literal.setText(joined_);
    return true;
  }
  const auto* const number = std::get_if<std::int64_t>(&value);
  if (number == nullptr || *number < 0) return false;
  literal = slot.kind == Kind::Number ? Value(*number) : Value(base::DateTime(*number * kMinutesPerHour));
  return true;
}

}  // namespace jet
