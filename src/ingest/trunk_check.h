#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "exchange/call_record.h"
#include "ingest/exchange_parts.h"
#include "tariff/price.h"

namespace ingest {

// The check made before a call is recorded or priced again: its trunk must lead to a provider.
class TrunkCheck {
 public:
  explicit TrunkCheck(const ExchangeParts& parts) : parts_(parts) {}

  // Fills profile, provider and normalised number of the context from the last trunk entry that has the call's trunk
  // and a provider. A trunk that is not known takes the first free entry, which is saved at once. False, told to the
  // operator and the audit log, when no entry or no provider is left for it.
  bool accept(const exchange::CallRecord& record, tariff::PricingContext& context);

 private:
  bool fillContext(const exchange::CallRecord& record, tariff::PricingContext& context);
  bool assignFreeEntry(std::int32_t trunk);
  [[nodiscard]] bool isAssigned(std::int32_t trunk) const;
  [[nodiscard]] exchange::tagTRUNKINFO* freeEntry() const;  // null when there is none
  // Of the first provider that has one.
  struct Profile {
    std::int32_t provider = 0;
    std::string name;
  };
  [[nodiscard]] std::optional<Profile> firstProfile() const;
  void reportNoEntryLeft(std::int32_t trunk);

  ExchangeParts parts_;
};

}  // namespace ingest
