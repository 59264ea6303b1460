#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/config_manager.h"
#include "jet/database.h"

namespace privacy {

// Calls before a day lose the last digits of their number, and their name; sums, areas and all else stay. What they
// were is kept aside until it is confirmed or taken back.
class Anonymisation {
 public:
  // Both must outlive this.
  Anonymisation(jet::Database& main, foundation::ConfigManager& config) : main_(main), config_(config) {}

  static constexpr int kDigitsCut = 4;

  // The number of calls that are kept aside; 0: nothing waits.
  [[nodiscard]] std::int64_t waiting();
  // How many calls apply() would change. Throws jet::Error.
  [[nodiscard]] std::int64_t wouldChange(base::DateTime before);
  // Each in one transaction, and the number of calls. Calls that were done before are left alone. Throw jet::Error.
  std::int64_t apply(base::DateTime before);
  std::int64_t undo();
  std::int64_t confirm();

 private:
  [[nodiscard]] std::optional<base::DateTime> doneBefore();
  [[nodiscard]] std::string notDoneBefore(base::DateTime before);  // a condition
  void keepDoneBefore(std::string_view date);

  jet::Database& main_;
  foundation::ConfigManager& config_;
};

}  // namespace privacy
