#include "ingest/call_error.h"

namespace ingest {

namespace {

// What a text that breaks out of its quotation marks can do to a statement. A database at fault in the same way meets
// the next call without a quotation mark.
bool isFaultOfStatement(const jet::Error& error) {
  switch (error.number()) {
    case 3061:
    case 3075:
    case 3078:
    case 3085:
    case 3421:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool isFaultOfCall(const jet::Error& error, const exchange::CallRecord& record) {
  if (dynamic_cast<const UnfitValue*>(&error) != nullptr) return true;
  return isFaultOfStatement(error) && record.dialledNumber.find_first_of("'\"") != std::string::npos;
}

}  // namespace ingest
