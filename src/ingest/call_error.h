#pragma once

#include "exchange/call_record.h"
#include "jet/error.h"

namespace ingest {

// A value of a call that its column in table `Calls` cannot hold.
class UnfitValue : public jet::Error {
 public:
  explicit UnfitValue(const jet::Error& error) : jet::Error(error) {}
};

// True for a fault that the call's own values cause: one that does not fit its column, or a quotation mark in the
// number, which is in statements as it is. Any other fault (a missing column, a full disk, a locked file, ...)
// would meet the next call too.
[[nodiscard]] bool isFaultOfCall(const jet::Error& error, const exchange::CallRecord& record);

}  // namespace ingest
