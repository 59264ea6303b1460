#pragma once

#include <vector>

#include "exchange/party_definitions.h"

namespace ui {

// The operator's copies of the party lists while the settings sheet is open.
class EditedParties {
 public:
  explicit EditedParties(const exchange::PartyDefinitions& definitions) : lists(definitions), original_(lists) {}

  struct Lists {
    std::vector<exchange::tagEXTINFO> extensions;
    std::vector<exchange::tagCONTINFO> accounts;
    std::vector<exchange::tagTRUNKINFO> trunks;
    std::vector<exchange::ClientDefinition> clients;
    std::vector<exchange::ProviderDefinition> providers;  // their local prefixes and free seconds

    explicit Lists(const exchange::PartyDefinitions& definitions);
    bool operator==(const Lists&) const = default;
  };
  Lists lists;

  [[nodiscard]] bool changed() const { return !(lists == original_); }
  // Writes what was edited into the definitions, over what they hold by now: a trunk that was met meanwhile stays, and
  // so does an entry of another copy.
  void putInto(exchange::PartyDefinitions& definitions) const;
  // Starts again from the definitions as they are now.
  void takeFrom(const exchange::PartyDefinitions& definitions);

  // What is kept of a provider; an empty entry for one that nothing is kept of yet.
  [[nodiscard]] exchange::ProviderDefinition provider(std::int32_t id) const;
  // Its entry to write into, made on first use.
  exchange::ProviderDefinition& ownProvider(std::int32_t id);

 private:
  Lists original_;
};

}  // namespace ui
