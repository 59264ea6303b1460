#pragma once

#include <string>

#include "jet/error.h"

namespace jet::engine {

// Faults that every driver can meet, in the same words. `place` names the database, `reason` is the library's own text.

inline Error lockedFault(const std::string& place, const std::string& statement) {
  return {3260, place + " is locked by another copy of the program. Wait until its work is done and try again.",
          statement};
}

inline Error fullDiskFault(const std::string& place, const std::string& statement) {
  return {3183, "The disk that holds " + place + " is full. Free some space and try again.", statement};
}

inline Error readOnlyFault(const std::string& place, const std::string& statement) {
  return {3027, "Cannot update " + place + ": it is open for reading only.", statement};
}

inline Error duplicateKeyFault(const std::string& place, const std::string& reason, const std::string& statement) {
  return {3022, "The change to " + place + " would create a duplicate key (" + reason + ").", statement};
}

inline Error canceledFault(const std::string& statement) {
  return {Error::kCanceled, "Operation canceled by user.", statement};
}

}  // namespace jet::engine
