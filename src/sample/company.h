#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "exchange/party_definitions.h"

namespace sample {

// The made-up company whose exchange the sample shows: its extensions, lines, clients and own data.

struct Department {
  std::string_view name;
  int firstExtension;
  std::span<const std::string_view> people;  // one extension each, in a row
};

struct Provider {
  std::int32_t id;
  std::string_view name;
  std::string_view localPrefixes;
  std::int32_t freeSeconds;
  std::string_view profile;  // that its lines use
};

struct Trunk {
  std::int32_t number;
  std::string_view label;
  std::int32_t provider;
  bool pulses;
  bool ignoreZeroPulses;
  int share;  // of 100 outgoing calls
};

// Account code definitions; "?" is any one character.
struct Account {
  std::string_view code;
  std::string_view description;
  std::string_view department;
};

struct Client {
  std::string_view account;
  std::string_view name;
  std::string_view folder;
};

// A text setting of section "general" in the database store.
struct OrganizationText {
  const foundation::TextKey& key;
  std::string_view value;
};

struct CurrencyRow {
  std::int32_t id;
  std::string_view name;
  double ratio;
  bool isDefault;
};

inline constexpr std::string_view kCountryCode = "40";
inline constexpr std::string_view kAreaCode = "21";
inline constexpr std::int32_t kVatPercent = 19;

[[nodiscard]] std::span<const Department> departments();
[[nodiscard]] std::span<const Provider> providers();
[[nodiscard]] std::span<const Trunk> trunks();
[[nodiscard]] std::span<const Account> accounts();
[[nodiscard]] std::span<const Client> clients();
[[nodiscard]] std::span<const OrganizationText> organization();
[[nodiscard]] std::span<const CurrencyRow> currencies();
[[nodiscard]] std::span<const std::string_view> hiddenNumbers();

// Puts extensions, accounts, trunks, clients and the providers' settings into the definitions.
void fillDefinitions(exchange::PartyDefinitions& definitions);

}  // namespace sample
