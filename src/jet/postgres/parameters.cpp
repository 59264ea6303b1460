#include "jet/postgres/parameters.h"

#include <array>
#include <charconv>
#include <cmath>

#include "jet/postgres/texts.h"

namespace jet::postgres {

namespace {

// Enough for every number of 64 bits.
constexpr std::size_t kNumberSize = 32;

template <typename Number>
std::string written(Number number) {
  std::array<char, kNumberSize> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

}  // namespace

void Parameters::clear() {
  values_.clear();
  kept_.clear();
}

void Parameters::addNull() {
  values_.push_back(nullptr);
}

void Parameters::addOwned(std::string text) {
  values_.push_back(kept_.emplace_back(std::move(text)).c_str());
}

void Parameters::add(std::int64_t value) {
  addOwned(written(value));
}

void Parameters::addText(std::string_view text) {
  addOwned(isKeptAsItIs(text) ? std::string(text) : toServer(text));
}

void Parameters::addNumber(const Value& value) {
  const auto number = value.asNumber();
  if (!number) {
    addOwned("NaN");
  } else if (!std::isfinite(*number)) {
    addNull();
  } else {
    addOwned(written(*number));
  }
}

void Parameters::add(const Value& value, Type type) {
  if (value.isNull()) return addNull();
  switch (type) {
    case Type::Boolean:
      if (!value.toBool(false) && value.toBool(true)) return addNull();
      return addOwned(value.toBool() ? "t" : "f");
    case Type::Long:
      return add(value.toLong());
    case Type::Double:
      return value.type() == Type::Long ? add(value.integer()) : addNumber(value);
    case Type::DateTime: {
      const auto date = value.toDateTime();
      return addOwned(date ? date->stored() : "infinity");
    }
    default:
      return value.type() == Type::Text ? addText(value.text()) : addText(value.toText());
  }
}

}  // namespace jet::postgres
