#pragma once

#include "exchange/party_definitions.h"
#include "foundation/change_tags.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "ingest/call_listener.h"
#include "ingest/call_output.h"
#include "ingest/phonebook.h"
#include "jet/database.h"
#include "platform/operator.h"
#include "security/audit_log.h"
#include "tariff/currencies.h"
#include "tariff/price.h"
#include "tariff/tariff_database.h"

namespace ingest {

// What the recording of calls works with, borrowed from its owner; all of it must outlive the users.
struct ExchangeParts {
  jet::Database& main;
  tariff::TariffDatabase* tariffs;  // null: no tariff database
  Phonebook* phonebook;             // null: none, or it could not be opened
  exchange::PartyDefinitions& parties;
  tariff::PriceCalculator& prices;
  tariff::Currencies& currencies;
  foundation::ConfigManager& config;
  foundation::ChangeTags& tags;
  security::AuditLog& log;
  const foundation::LanguageFile& language;
  platform::Operator& person;
  CallOutput* output;  // null: no forwarding lines
  CallListener* listener = nullptr;
};

}  // namespace ingest
