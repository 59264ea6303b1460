#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/operators.h"
#include "jet/value.h"

namespace jet {

// What is seen in place of a column's values: function(value, second).
struct ColumnMask {
  std::string table;
  std::string column;
  const Function* function = nullptr;  // gives a text; of maskFunctions()
  std::string secondColumn = {};       // of the same table; empty: `second` is the value
  std::int64_t second = 0;
};

// The masks of a session. A select that is run under them sees the masked values everywhere: in its conditions, groups
// and order as in its rows, so that nothing in the answer depends on what they hide.
class Masks {
 public:
  explicit Masks(std::vector<ColumnMask> masks);

  // Null when the column is seen as it is. Names without regard to case.
  [[nodiscard]] const ColumnMask* find(std::string_view table, std::string_view column) const;
  // A text that different masks do not share.
  [[nodiscard]] const std::string& key() const { return key_; }

 private:
  std::vector<ColumnMask> masks_;
  std::string key_;
};

using MasksPtr = std::shared_ptr<const Masks>;  // null: everything is seen

// Functions for masks; no statement can call them. Null for a Null.
//   mask_number(text, n)   the last n digits of the text as "X"
//   mask_numbers(text, n)  the same of each number of a list that , ; / or a line end separates
//   mask_forms(text, n)    the same of a list that blanks separate
//   mask_text(text, n)     the same of each number of six digits or more within a text
//   mask_name(text, hide)  "***" when `hide` is true and the text is not empty
const Function& maskFunction(std::string_view name);
const std::vector<Function>& maskFunctions();

}  // namespace jet
