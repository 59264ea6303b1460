#pragma once

#include "jet/error.h"

namespace ingest {

// True for a fault that lies in the call itself: a text that breaks a statement or does not fit its column. The next
// call may go well then. Every other fault (disk full, file locked, ...) would meet the next call too.
[[nodiscard]] inline bool isFaultOfCall(const jet::Error& error) {
  switch (error.number()) {
    case 3061:
    case 3075:
    case 3085:
    case 3163:
    case 3421:
      return true;
    default:
      return false;
  }
}

}  // namespace ingest
