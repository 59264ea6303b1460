#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet::postgres {

// The values of one run, in text form. Borrowed texts must stay until the run was sent.
class Parameters {
 public:
  void clear();
  void addNull();
  void add(std::int64_t value);
  // A value that does not convert becomes one that equals none of a column's: "infinity" for a date, "NaN" for a
  // number, Null for Yes/No. Numbers that are not finite are Null.
  void add(const Value& value, Type type);
  void addText(std::string_view text);
  void addOwned(std::string text);

  [[nodiscard]] int count() const { return static_cast<int>(values_.size()); }
  [[nodiscard]] const char* const* values() const { return values_.data(); }

 private:
  void addNumber(const Value& value);

  std::vector<const char*> values_;
  std::deque<std::string> kept_;
};

}  // namespace jet::postgres
