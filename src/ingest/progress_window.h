#pragma once

#include "ingest/exchange_parts.h"

namespace ingest {

// Shows the progress of long work over the calls, and closes it however the work ends.
class ProgressWindow {
 public:
  ProgressWindow(const ExchangeParts& parts, std::int64_t range) : person_(parts.person) {
    person_.progressBegin(parts.language.Translate("IDS_UPDATE"), parts.language.Translate("IDS_UPDATING_DATABASE"),
                          range);
  }
  ProgressWindow(const ProgressWindow&) = delete;
  ProgressWindow& operator=(const ProgressWindow&) = delete;
  ~ProgressWindow() { person_.progressEnd(); }

 private:
  platform::Operator& person_;
};

}  // namespace ingest
