#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/config_manager.h"
#include "jet/database.h"

namespace exchange {

struct tagEXTINFO {
  std::string extension;
  std::string description;
  std::string department;
};

struct tagCONTINFO {
  std::string account;
  std::string description;
  std::string department;
};

// A trunk (line) of the exchange.
struct tagTRUNKINFO {
  std::string label;            // the line's telephone number or name, "-" when unknown
  std::string trunk;            // number as the exchange reports it
  std::int32_t providerId = 0;  // -1 or 0: none, the entry is free
  std::string profile;
  std::int32_t pulses = 0;            // 1: priced by pulses
  std::int32_t ignoreZeroPulses = 0;  // 1: calls without pulses are not priced
};

struct ClientDefinition {
  std::string account;
  std::string name;
  std::string folder;
};

struct ProviderDefinition {
  std::int32_t id = 0;
  std::string name;
  std::string localPrefixes;   // separated by "," ";" or blank
  std::string nationalPrefix;  // always empty
  std::int32_t freeSeconds = 0;
};

struct PREFIX {
  std::string id;  // in international form, begins with "00"
  std::string name;
  std::string country;
};

inline constexpr std::size_t kTrunkEntries = 256;

// The parties that the operator defines, and the reference tables of the tariff database, held in memory and rebuilt
// whole at each load.
class PartyDefinitions {
 public:
  explicit PartyDefinitions(foundation::ConfigManager& config) : config_(config) {}

  // Loads everything in the documented order. `tariffs` may be null (no tariff database): prefixes and providers stay
  // empty then.
  void load(jet::Database& main, jet::Database* tariffs);
  // Writes extensions, accounts, trunks, clients and the providers' settings back; nothing while read-only.
  void save(jet::Database& main);

  std::vector<tagEXTINFO> extensions;
  std::vector<tagCONTINFO> accounts;
  std::vector<tagTRUNKINFO> trunks;  // always kTrunkEntries long after load
  std::vector<ClientDefinition> clients;
  std::vector<ProviderDefinition> providers;
  std::vector<PREFIX> prefixes;  // longest and highest first
  bool extensionIsText = true;   // type of the columns Extension and Trunk of table Calls
  std::string countryCode;
  std::string areaCode;

 private:
  foundation::ConfigManager& config_;
};

// "?" in the definition stands for any one character; same length, case counts.
bool accountMatches(std::string_view definition, std::string_view account);

}  // namespace exchange
