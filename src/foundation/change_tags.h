#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "jet/database.h"
#include "platform/operator.h"

namespace foundation {

// The counters by which copies that share a database tell each other what changed: table `Touch`, one row a tag.
// Tags: "Config", "Contacts", "Calls", "Users", "Groups", "Log".
class ChangeTags {
 public:
  explicit ChangeTags(platform::Operator& person) : operator_(person) {}

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
  platform::Operator& operator_;
};

}  // namespace foundation
