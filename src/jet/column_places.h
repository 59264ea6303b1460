#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "jet/snapshot.h"

namespace jet {

// Where some columns are in the results of one select, by their places in the list given here. Looked up once, not for
// every result.
template <std::size_t Count>
class ColumnPlaces {
 public:
  explicit constexpr ColumnPlaces(const std::array<std::string_view, Count>& names) : names_(names) {}

  // Error 3265 when the result lacks a column.
  const std::array<std::size_t, Count>& in(const Snapshot& rows) {
    if (rows.columnNames() == known_) return places_;
    for (std::size_t i = 0; i < Count; ++i) places_[i] = rows.column(names_[i]);
    known_ = rows.columnNames();
    return places_;
  }

 private:
  std::array<std::string_view, Count> names_;
  std::array<std::size_t, Count> places_{};
  ColumnNames known_;
};

}  // namespace jet
