#pragma once

#include "exchange/party_definitions.h"
#include "filter/call_filter.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/operator.h"
#include "security/audit_log.h"
#include "security/session.h"
#include "tariff/currencies.h"

namespace folders {

// What folders and reports work on; lent by the document for as long as they live.
struct FolderServices {
  jet::Database& main;
  foundation::ConfigManager& config;
  const foundation::LanguageFile& texts;
  const exchange::PartyDefinitions& definitions;
  const tariff::Currencies& currencies;
  filter::CallFilter& filter;
  security::AuditLog& log;
  const security::CurrentUser& user;
  platform::Operator& person;
  const platform::Clock& clock;
};

}  // namespace folders
