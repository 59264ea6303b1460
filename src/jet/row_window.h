#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/snapshot.h"

namespace jet {

// The rows of a select as a list that can be scrolled: a few rows from any place, without reading those before them
// where the order allows it. Shows the data as of refresh() (or of opening); memory does not grow with the number of
// rows of a plain list. Must not outlive its Database.
class RowWindow {
 public:
  virtual ~RowWindow() = default;

  [[nodiscard]] virtual const std::vector<std::string>& columns() const = 0;
  virtual std::int64_t rowCount() = 0;
  // Rows [first, first + count), fewer at the end.
  virtual Snapshot rows(std::int64_t first, std::int64_t count) = 0;
  // Position of the first row that meets the criteria; nothing when there is none.
  virtual std::optional<std::int64_t> find(std::string_view criteria) = 0;
  virtual void refresh() = 0;
};

}  // namespace jet
