#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/engine/columns/packed_integers.h"
#include "jet/engine/columns/text_dictionary.h"
#include "jet/value.h"

namespace jet::columns {

// The cells of one column of a table, row after row, in a few bytes each.
class Column {
 public:
  explicit Column(Type type) : type_(type) {}

  // Adds a cell as the database stores it. False for what such a column holds only by a foreign hand (a text among
  // numbers, a date in another form) or in an unusual number (a million different texts): then only the database can
  // say how it compares.
  [[nodiscard]] bool addNull();
  [[nodiscard]] bool addInteger(std::int64_t value);
  [[nodiscard]] bool addReal(double value);
  [[nodiscard]] bool addText(std::string_view text);
  // Makes room for that many rows in all, and some more to come.
  void reserve(std::size_t rows);
  // Takes the rows away; the texts keep their numbers.
  void clearRows();

  [[nodiscard]] Type type() const { return type_; }
  [[nodiscard]] std::size_t rows() const { return type_ == Type::Double ? reals_.size() : integers_.size(); }
  [[nodiscard]] std::size_t bytes() const {
    return integers_.bytes() + reals_.capacity() * sizeof(double) + texts_->bytes();
  }

  // All but Double: texts by their number (0 Null), dates in seconds since kFirstDate, PackedIntegers::kNone for Null.
  void integers(std::size_t from, std::size_t count, std::int32_t* out) const { integers_.copy(from, count, out); }
  // Double: not-a-number for Null.
  [[nodiscard]] const double* reals(std::size_t from) const { return reals_.data() + from; }

  [[nodiscard]] const std::shared_ptr<TextDictionary>& texts() const { return texts_; }
  // Least and greatest of the numbers added so far; least > greatest when there is none.
  [[nodiscard]] std::int32_t least() const { return least_; }
  [[nodiscard]] std::int32_t greatest() const { return greatest_; }
  // A number of a Long, Boolean or DateTime column, not kNone, as the database gives it back.
  [[nodiscard]] Value value(std::int32_t integer) const;

  static constexpr std::int64_t kFirstDate = std::int64_t{36'526} * 86'400;  // 2000-01-01, seconds since day zero

 private:
  bool addDate(std::string_view text);
  bool addNumber(std::int64_t value);

  Type type_;
  PackedIntegers integers_;
  std::vector<double> reals_;
  std::shared_ptr<TextDictionary> texts_ = std::make_shared<TextDictionary>();
  std::int32_t least_ = std::numeric_limits<std::int32_t>::max();
  std::int32_t greatest_ = std::numeric_limits<std::int32_t>::min();
  // The day read last: calls follow each other in time.
  std::string day_;
  std::int64_t dayStart_ = 0;
};

}  // namespace jet::columns
