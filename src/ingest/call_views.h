#pragma once

#include <optional>

#include "ingest/exchange_parts.h"

namespace ingest {

// While it lives, for the length of one call or one batch of calls, none of the databases is looked at again for
// changes by other copies.
class CallViews {
 public:
  explicit CallViews(const ExchangeParts& parts) : main_(parts.main), settings_(parts.config) {
    if (parts.tariffs != nullptr) tariffs_.emplace(parts.tariffs->database());
    if (parts.phonebook != nullptr) phonebook_.emplace(parts.phonebook->database());
  }

 private:
  jet::ReadView main_;
  foundation::ConfigManager::View settings_;
  std::optional<jet::ReadView> tariffs_;
  std::optional<jet::ReadView> phonebook_;
};

}  // namespace ingest
