#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/change_tags.h"

namespace foundation {

// For one list or window that shows a table: sees every change of the table's tag, by this copy or another, however
// many others of this copy watch the same table. ChangeTags::IsTouched answers the first who asks only.
class TableWatch {
 public:
  // What is read after this is up to date until changed() says otherwise. Both must outlive the watch. Throws
  // jet::Error.
  TableWatch(jet::Database& database, ChangeTags& tags, std::string tag);

  // True once after each change. A tag without a row is reported as IsTouched does, and counts as changed. Throws
  // jet::Error.
  [[nodiscard]] bool changed();

 private:
  [[nodiscard]] std::optional<std::int64_t> read() const;

  jet::Database* database_;
  ChangeTags* tags_;
  std::string tag_;
  std::uint64_t version_ = 0;  // of the table of tags, when it was last looked at
  std::optional<std::int64_t> seen_;
};

}  // namespace foundation
