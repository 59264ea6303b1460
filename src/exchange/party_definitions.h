#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/party_index.h"
#include "foundation/config_manager.h"
#include "jet/database.h"

namespace exchange {

struct tagEXTINFO {
  std::string extension;
  std::string description;
  std::string department;

  bool operator==(const tagEXTINFO&) const = default;
};

struct tagCONTINFO {
  std::string account;
  std::string description;
  std::string department;

  bool operator==(const tagCONTINFO&) const = default;
};

// A trunk (line) of the exchange.
struct tagTRUNKINFO {
  std::string label;            // the line's telephone number or name, "-" when unknown
  std::string trunk;            // number as the exchange reports it
  std::int32_t providerId = 0;  // -1 or 0: none, the entry is free
  std::string profile;
  std::int32_t pulses = 0;            // 1: priced by pulses
  std::int32_t ignoreZeroPulses = 0;  // 1: calls without pulses are not priced

  bool operator==(const tagTRUNKINFO&) const = default;
};

struct ClientDefinition {
  std::string account;
  std::string name;
  std::string folder;

  bool operator==(const ClientDefinition&) const = default;
};

struct ProviderDefinition {
  std::int32_t id = 0;
  std::string name;
  std::string localPrefixes;   // separated by "," ";" or blank
  std::string nationalPrefix;  // always empty
  std::int32_t freeSeconds = 0;

  bool operator==(const ProviderDefinition&) const = default;
};

struct PREFIX {
  std::string id;  // in international form, begins with "00"
  std::string name;
  std::string country;
};

inline constexpr std::size_t kTrunkEntries = 256;

// The parties that the operator defines, and the reference tables of the tariff database, held in memory and rebuilt
// whole at each load.
//
// The lists are open to their editors. The find functions look into indexes: call reindex() after a change of a
// list (load and save do).
class PartyDefinitions {
 public:
  explicit PartyDefinitions(foundation::ConfigManager& config) : config_(config) {}

  // Loads everything in the documented order. `tariffs` may be null (no tariff database): prefixes and providers stay
  // empty then. Throws jet::Error.
  void load(jet::Database& main, jet::Database* tariffs);
  // Writes extensions, accounts, trunks, clients and the providers' settings back in one transaction; nothing while
  // the database is read-only. Throws jet::Error (a client's name with an apostrophe breaks its statement); what is
  // stored is unchanged then. Where other copies may have the database open, part of a foundation::DefinitionChange.
  void save(jet::Database& main);

  // True when the tables of the definitions may have changed since they were loaded or saved here, by another
  // copy or by a settings command. Cheap enough to be asked before every call.
  bool changed(jet::Database& main, jet::Database* tariffs);
  // Loads again what changed; true when anything was. Edits that were not saved are lost.
  bool reloadIfChanged(jet::Database& main, jet::Database* tariffs);
  // What is held counts as out of date.
  void forget() noexcept { partiesVersion_ = 0; }

  void reindex();

  // The first trunk entry whose number is the text; null when there is none.
  [[nodiscard]] const tagTRUNKINFO* findTrunk(std::string_view number) const;
  [[nodiscard]] const ProviderDefinition* findProvider(std::int32_t id) const;
  // Department of the last extension entry with that text; empty when there is none.
  [[nodiscard]] const std::string& departmentOfExtension(std::string_view extension) const;
  // Department of the first account whose code matches; empty when there is none.
  [[nodiscard]] const std::string& departmentOfAccount(std::string_view account) const;
  // The first client whose account matches; null when there is none.
  [[nodiscard]] const ClientDefinition* findClient(std::string_view account) const;
  // The first entry, in table order, whose prefix is the start of the number; null when there is none.
  [[nodiscard]] const PREFIX* findPrefix(std::string_view normalisedNumber) const;
  // Description of an extension for display: the first entry of that number, A-Z without regard to case; empty when
  // there is none.
  [[nodiscard]] const std::string& descriptionOfExtension(std::string_view extension) const;

  std::vector<tagEXTINFO> extensions;
  std::vector<tagCONTINFO> accounts;
  std::vector<tagTRUNKINFO> trunks;  // always kTrunkEntries long after load
  std::vector<ClientDefinition> clients;
  std::vector<ProviderDefinition> providers;
  std::vector<PREFIX> prefixes;  // highest first, as the database sorts texts
  bool extensionIsText = true;   // type of the columns Extension and Trunk of table Calls
  std::string countryCode;
  std::string areaCode;

 private:
  void loadReferences(jet::Database* tariffs);
  void loadParties(jet::Database& main);

  foundation::ConfigManager& config_;
  TextIndex extensionIndex_;      // last entry of a text
  TextIndex extensionNameIndex_;  // first entry of a text, case folded
  TextIndex trunkIndex_;
  AccountIndex accountIndex_;
  AccountIndex clientIndex_;
  PrefixIndex prefixIndex_;
  std::uint64_t partiesVersion_ = 0;
  std::uint64_t referencesVersion_ = 0;
};

}  // namespace exchange
