#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/text.h"
#include "jet/database.h"
#include "platform/operator.h"

namespace foundation {

// The counters by which copies that share a database tell each other what changed: table `Touch`, one row a tag.
// Tags: "Config", "Contacts", "Calls", "Users", "Groups", "Log".
class ChangeTags {
 public:
  explicit ChangeTags(platform::Operator& person) : person_(person) {}

  // Opens the recordset over `Touch` and takes the values it holds as seen.
  void LoadTouch(jet::Database& database);
  void CloseTouch();

  // True when the table was changed since this copy last looked; a tag without a row reports
  // "Non-fatal: Invalid touch tag." and counts as changed.
  bool IsTouched(std::string_view tag);
  // Records a change by this copy, which counts as seen by it.
  void Touch(std::string_view tag);
  // Records a change of the calls that this copy has not seen yet either.
  void TouchCalls();

 private:
  struct Tag {
    bool present = false;
    std::int32_t value = 0;
    std::optional<std::int32_t> seen;  // nothing = never seen, which counts as 0
    bool current = false;              // `present` and `value` are those of tableVersion_
  };

  // The tag with its present value; asks the database only when the table may have changed since.
  Tag& look(std::string_view name);
  Tag& find(std::string_view name);
  void bump(std::string_view name, bool markSeen);
  void reportInvalid();

  platform::Operator& person_;
  jet::Database* database_ = nullptr;
  std::unique_ptr<jet::Recordset> TouchRecordset_;
  std::unordered_map<std::string, Tag, base::TextHash, std::equal_to<>> SeenTags_;
  std::uint64_t tableVersion_ = 0;
};

}  // namespace foundation
