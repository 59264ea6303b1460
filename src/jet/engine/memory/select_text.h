#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "jet/prepared_select.h"

namespace jet::memory {

// The text of the select that is run. That of a prepared one is made when it is asked for first.
class SelectText {
 public:
  explicit SelectText(std::string_view sql) : given_(sql) {}
  SelectText(const PreparedSelect& select, std::span<const base::FormatArgument> values)
      : select_(&select), values_(values) {}

  std::string_view get() {
    if (isMade()) return select_ == nullptr ? given_ : *made_;
    return made_.emplace(select_->text(values_));
  }
  [[nodiscard]] bool isMade() const { return select_ == nullptr || made_.has_value(); }

 private:
  std::string_view given_;
  const PreparedSelect* select_ = nullptr;
  std::span<const base::FormatArgument> values_;
  std::optional<std::string> made_;
};

}  // namespace jet::memory
