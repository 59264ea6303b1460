#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/party_definitions.h"
#include "ingest/exchange_parts.h"
#include "ingest/import.h"
#include "ingest/live_recorder.h"
#include "ingest/maintenance.h"
#include "ingest/output_port.h"
#include "ingest/recorder.h"
#include "platform/clock.h"
#include "security/session.h"

namespace ingest {

// The ingestion of an exchange as one object: the definitions of its parties, tariffs and phonebook, prices, the port
// that forwards calls, recording from files and of single calls, and what is done to stored calls.
class SMDRManager2 {
 public:
  // What it works with beside the main database; all of it must outlive this.
  struct Services {
    foundation::ConfigManager& config;
    foundation::ChangeTags& tags;
    security::AuditLog& log;
    tariff::Currencies& currencies;
    const security::CurrentUser& user;
    const foundation::LanguageFile& language;
    platform::Operator& person;
    const platform::Clock& clock;
    std::function<void()> afterImport;     // a file was read, as far as it went
    std::function<std::string()> backups;  // when the last backup was made: said before many calls go
    std::filesystem::path unconfirmed;     // file of UnconfirmedCalls
  };
  explicit SMDRManager2(const Services& services);

  // In this order, each once until Close(). The first two may fail, by jet::Error, without harm to the others: without
  // tariffs every price is 0 and each call says so in the log, without a phonebook calls have no names from it.
  void openTariffs(std::string_view folder);
  void openPhonebook(std::string_view folder);
  // Reads the definitions and makes what prices calls. Throws jet::Error.
  void load(jet::Database& main, bool openOutputPort);
  // The listener is told of each call that is recorded; it may be null. Throws jet::Error.
  void startRecording(CallListener* listener);
  [[nodiscard]] bool records() const { return recorder_ != nullptr; }
  void Close();

  // The objects within; prices and recorders only once they were made.
  [[nodiscard]] exchange::PartyDefinitions& parties() { return parties_; }
  [[nodiscard]] tariff::TariffDatabase* tariffs() { return tariffs_.get(); }  // null: none could be opened
  [[nodiscard]] jet::Database* tariffDatabase() { return tariffs_ ? &tariffs_->database() : nullptr; }
  [[nodiscard]] Phonebook* phonebook() { return phonebook_.get(); }  // null likewise
  [[nodiscard]] tariff::PriceCalculator& prices() { return *prices_; }
  [[nodiscard]] LiveRecorder& liveRecorder() { return *live_; }
  // Those that were opened here.
  [[nodiscard]] std::vector<jet::Database*> databases() const;

  // One run over the monitor's file, as the import timer asks for it; faults are logged and tried again at the next
  // one.
  ImportResult importMonitorFile(const ImportOptions& options = {});
  // Completes imports that were interrupted; to be called once before the first run.
  ImportResult resumeStoppedImports(const ImportOptions& options = {});
  // Both: what was interrupted, by a kill or by a fault, then the monitor's file. Does not throw.
  ImportResult catchUp(const ImportOptions& options = {});
  ImportResult importFile(const std::filesystem::path& file, const ImportOptions& options = {});
  // For the operator: which files keep what did not become a call, in the language in use; empty when nothing was kept.
  [[nodiscard]] std::string keptText(const ImportResult& result) const;

  // Takes over what other copies changed in definitions and currencies.
  void refreshDefinitions();
  // Of the live calls: as LiveRecorder has it.
  void makeDurable();
  // Writes the definitions, unless another copy has changed them since they were loaded: those are newer, and stay.
  void saveDefinitions();

  // Retention, as at the start; the number of calls deleted.
  std::int64_t deleteOldCalls();
  // The operator's commands. Throw jet::Error, and security::RestrictedUserError for a user with a restriction.
  std::int64_t purgeOldCalls();
  void hideNumber(std::string_view number);
  void showNumber(std::string_view number);
  RecalcResult recalc(const RecalcOptions& options);

 private:
  [[nodiscard]] ExchangeParts exchangeParts();

  Services services_;
  jet::Database* main_ = nullptr;
  exchange::PartyDefinitions parties_;
  std::unique_ptr<tariff::TariffDatabase> tariffs_;
  std::unique_ptr<Phonebook> phonebook_;
  std::unique_ptr<tariff::PriceCalculator> prices_;
  std::unique_ptr<OutputPort> output_;
  CallListener* listener_ = nullptr;
  std::unique_ptr<Recorder> recorder_;
  std::unique_ptr<LiveRecorder> live_;
};

}  // namespace ingest
