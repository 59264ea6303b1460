#pragma once

#include <string>
#include <utility>
#include <vector>

#include "exchange/party_definitions.h"
#include "filter/call_filter.h"
#include "schema/schema.h"
#include "security/audit_log.h"
#include "support/database_folder.h"
#include "support/fixed_clock.h"
#include "support/scripted_operator.h"
#include "tariff/currencies.h"

// An office with an empty database, its settings and a filter.
class CallOffice {
 public:
  CallOffice() {
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    log.OpenLog(*main);
    currencies.load(*main);
  }
  ~CallOffice() {
    log.CloseLog();
    config.CloseConfig();
    tags.CloseTouch();
  }

  // A call with the fields given, as (column, value).
  void call(const std::vector<std::pair<const char*, jet::Value>>& fields) {
    auto calls = main->openRecordset("SELECT * FROM Calls");
    calls->addNew();
    for (const auto& [name, value] : fields) calls->set(name, value);
    calls->update();
  }

  void databaseSetting(const char* key, const std::string& value) {
    config.WriteConfigString(value, key, "general", foundation::StoreDatabase);
  }
  void databaseSetting(const char* key, int value) {
    config.WriteConfigInt(value, key, "general", foundation::StoreDatabase);
  }

  support::DatabaseFolder folder;
  ScriptedOperator person;
  FixedClock clock{*base::DateTime::fromParts(2025, 3, 31, 14, 5, 9)};
  std::unique_ptr<jet::Database> main = schema::createMainDatabase(folder / schema::kMainFile);
  foundation::MachineStore store{folder / "store.ini"};
  foundation::ChangeTags tags{person};
  foundation::ConfigManager config{store};
  foundation::LanguageFile texts;
  exchange::PartyDefinitions definitions{config};
  tariff::Currencies currencies{config, texts, person};
  security::CurrentUser user;
  security::AuditLog log{config, clock, [] { return std::string(); }};
  filter::CallFilter filter{config, definitions, user, clock, texts};
};
