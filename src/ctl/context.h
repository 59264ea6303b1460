#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ctl/command.h"
#include "ctl/interrupt_watch.h"
#include "ctl/terminal_operator.h"
#include "exchange/party_definitions.h"
#include "folders/services.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "foundation/machine_store.h"
#include "ingest/exchange_parts.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "security/audit_log.h"
#include "security/session.h"
#include "tariff/currencies.h"
#include "tariff/price.h"
#include "tariff/tariff_database.h"

namespace ctl {

// What the commands work with: the machine store from the start, the databases and everything over them once open() was
// called. Opening logs the user in.
class Context {
 public:
  explicit Context(const GlobalOptions& options);
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context();

  [[nodiscard]] foundation::MachineStore& machineStore() { return machine_; }
  [[nodiscard]] foundation::ConfigManager& config() { return config_; }
  [[nodiscard]] platform::Operator& person() { return operator_; }
  [[nodiscard]] const platform::Clock& clock() const { return clock_; }
  [[nodiscard]] InterruptWatch& interrupts() { return interrupts_; }

  // Opens the databases, logs in and loads the reference data; does nothing when that was done. Throws Failure.
  void open();
  // Opens, and throws Failure when the user lacks the right.
  void requireRight(int object, int right);

  // Folder of a setting of section "general" in the machine store, with its separator; empty when it is not set.
  [[nodiscard]] std::string folder(std::string_view key);

  // Only after open().
  [[nodiscard]] jet::Database& main();
  [[nodiscard]] tariff::TariffDatabase* tariffs();  // null when there is none
  [[nodiscard]] exchange::PartyDefinitions& parties();
  [[nodiscard]] tariff::Currencies& currencies();
  [[nodiscard]] tariff::PriceCalculator& prices();
  [[nodiscard]] security::AuditLog& log();
  [[nodiscard]] const security::CurrentUser& session();
  [[nodiscard]] const foundation::LanguageFile& language();
  [[nodiscard]] const folders::FolderServices& folderServices();
  // Opens the phonebook, and the output port too.
  [[nodiscard]] ingest::ExchangeParts exchangeParts();

 private:
  struct Documents;

  void applyProfile(const std::string& profile);
  void loadLanguage(Documents& documents);
  void login(Documents& documents);

  GlobalOptions options_;
  InterruptWatch interrupts_;
  TerminalOperator operator_;
  platform::SystemClock clock_;
  foundation::MachineStore machine_;
  foundation::ConfigManager config_;
  std::unique_ptr<Documents> documents_;
};

}  // namespace ctl
