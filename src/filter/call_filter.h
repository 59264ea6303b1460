#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "exchange/party_definitions.h"
#include "filter/condition.h"
#include "filter/settings.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "security/session.h"

namespace filter {

// The operator's filter over calls. Nothing is cached but the number-filter switch: the settings are read at every use,
// since other windows and programs of the workstation change them. Everything referred to must outlive it.
class CallFilter {
 public:
  CallFilter(foundation::ConfigManager& config, const exchange::PartyDefinitions& definitions,
             const security::CurrentUser& user, const platform::Clock& clock, const foundation::LanguageFile& texts)
      : config_(config), definitions_(definitions), user_(user), clock_(clock), texts_(texts) {}

  // The condition text with the user's restriction, to be looked at: it may not parse. Throws as restrictCondition and
  // requireOnlyValues.
  [[nodiscard]] std::string condition();
  // The same, to be run. Throws FilterError when it does not parse, too.
  [[nodiscard]] std::string runnableCondition();
  // The runnable condition of other settings than the stored ones (a bill's).
  [[nodiscard]] std::string conditionOf(const FilterSettings& settings) const;

  [[nodiscard]] FilterSettings settings() { return readSettings(config_); }
  [[nodiscard]] bool active() { return settings().onFilter == 1; }
  // "Number_Filter_Enabled" as of the last condition or description.
  [[nodiscard]] std::int32_t numberFilterEnabled() const { return numberFilterEnabled_; }
  void keepNumberFilter(const FilterSettings& settings) { numberFilterEnabled_ = settings.numberFilterEnabled; }

  // Each is false when the machine store cannot be written.
  bool write(const FilterSettings& settings) { return writeSettings(config_, settings); }
  bool clear();
  bool thisMonth();
  bool previousMonth();
  // Stores all of the values or, when one is wrong (std::invalid_argument, see setValue), none. Another account takes
  // its code as display text unless that is given, too.
  bool set(const std::vector<std::pair<std::string, std::string>>& values);

  // What the filter dialog offers, of the calls that the user may see.
  [[nodiscard]] std::vector<std::string> offeredAreas(jet::Database& main) const;  // the dialog adds kLocalArea
  [[nodiscard]] std::vector<std::string> offeredClients(jet::Database& main) const;
  [[nodiscard]] std::vector<std::string> offeredFolders(jet::Database& main, std::string_view client) const;

  [[nodiscard]] foundation::ConfigManager& config() { return config_; }

 private:
  [[nodiscard]] std::string restricted(const FilterSettings& settings) const;
  // The first column of a statement with one place for its condition, within the user's restriction.
  [[nodiscard]] std::vector<std::string> offered(jet::Database& main, std::string_view statement,
                                                 std::string condition) const;

  foundation::ConfigManager& config_;
  const exchange::PartyDefinitions& definitions_;
  const security::CurrentUser& user_;
  const platform::Clock& clock_;
  const foundation::LanguageFile& texts_;
  std::int32_t numberFilterEnabled_ = 0;
};

}  // namespace filter
