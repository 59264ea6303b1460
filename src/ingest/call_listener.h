#pragma once

#include <cstdint>
#include <string>

#include "base/datetime.h"

namespace ingest {

// A call as it was stored.
struct RecordedCall {
  std::int64_t recordId = 0;
  base::DateTime at = {};
  std::string number = {};  // as the exchange gave it
  std::string extension = {};
  std::string trunk = {};
  std::string account = {};
  std::string department = {};
  std::string owner = {};
  std::string provider = {};
  std::string country = {};
  std::int64_t seconds = 0;
  bool incoming = false;
  double cost = 0;  // in the default currency
};

// Hears of every call that was stored, within the transaction that stores it. Must not throw.
class CallListener {
 public:
  virtual ~CallListener() = default;
  // False while no one wants to know; the call need not be put together then.
  [[nodiscard]] virtual bool listens() noexcept = 0;
  virtual void recorded(const RecordedCall& call) noexcept = 0;
};

}  // namespace ingest
