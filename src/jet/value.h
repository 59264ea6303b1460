#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "base/datetime.h"

namespace jet {

// The types of a value and of a column. Text and Memo differ only in a column's definition.
enum class Type { Null, Boolean, Long, Double, Text, DateTime };

// A moment and a day as literals of the dialect (forms of base::DateTime::format).
inline constexpr const char* kDateTimeLiteral = "#%m/%d/%Y %H:%M:%S#";
inline constexpr const char* kDateLiteral = "#%m/%d/%Y#";

// One value of a field or an expression. Long columns hold 32 bits; counts and sums may be longer, so 64 are kept.
class Value {
 public:
  Value() = default;  // Null
  Value(bool value) : data_(value) {}
  Value(int value) : data_(static_cast<std::int64_t>(value)) {}
  Value(std::int64_t value) : data_(value) {}
  Value(double value) : data_(value) {}
  Value(std::string value) : data_(std::move(value)) {}
  Value(std::string_view value) : data_(std::string(value)) {}
  Value(const char* value) : data_(std::string(value)) {}
  Value(base::DateTime value) : data_(value) {}

  [[nodiscard]] Type type() const { return static_cast<Type>(data_.index()); }
  [[nodiscard]] bool isNull() const { return type() == Type::Null; }

  // The value as another type, by the engine's rules; Null and what cannot be converted give the fallback.
  [[nodiscard]] bool toBool(
      bool fallback = false) const;  // numbers: non-zero; texts: "True"/"Yes", or a non-zero number
  [[nodiscard]] std::int64_t toLong(std::int64_t fallback = 0) const;  // doubles round half to even; True is -1
  [[nodiscard]] double toDouble(double fallback = 0) const;            // dates: days since 1899-12-30
  [[nodiscard]] std::string toText() const;  // Null: ""; True: "-1"; doubles with up to 15 digits
                                             // dates: "m/d/yyyy h:nn:ss", midnight and day 0 left out
  [[nodiscard]] std::optional<base::DateTime> toDateTime() const;  // texts in stored or month-first form; numbers: days

  // Strict forms: nothing when the value is Null or cannot be converted.
  [[nodiscard]] std::optional<double> asNumber() const;

  // The text without a copy; only for Type::Text.
  [[nodiscard]] const std::string& text() const { return std::get<std::string>(data_); }
  [[nodiscard]] bool boolean() const { return std::get<bool>(data_); }
  [[nodiscard]] std::int64_t integer() const { return std::get<std::int64_t>(data_); }
  [[nodiscard]] double number() const { return std::get<double>(data_); }
  [[nodiscard]] base::DateTime dateTime() const { return std::get<base::DateTime>(data_); }

  // Becomes a text, in the storage of the one it holds already.
  void setText(std::string_view text);

  // Same type and same content (texts letter for letter). The engine's own comparison is compare() in operators.h.
  bool operator==(const Value&) const = default;

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, base::DateTime> data_;
};

}  // namespace jet
