#include "ingest/smdr_manager.h"

#include "base/printf.h"
#include "security/restriction.h"

namespace ingest {

SMDRManager2::SMDRManager2(const Services& services) : services_(services), parties_(services.config) {}

void SMDRManager2::openTariffs(std::string_view folder) {
  tariffs_ = tariff::TariffDatabase::open(folder);
}

void SMDRManager2::openPhonebook(std::string_view folder) {
  phonebook_ = Phonebook::open(folder);
}

void SMDRManager2::load(jet::Database& main, bool openOutputPort) {
  main_ = &main;
  output_ = std::make_unique<OutputPort>(services_.config, services_.log);
  if (openOutputPort) output_->Open();
  parties_.load(main, tariffDatabase());
  prices_ = std::make_unique<tariff::PriceCalculator>(services_.config, parties_, tariffs_.get(), services_.log,
                                                      services_.language, services_.person);
}

void SMDRManager2::startRecording(CallListener* listener) {
  listener_ = listener;
  recorder_ = std::make_unique<Recorder>(exchangeParts());
  recorder_->open();
  live_ = std::make_unique<LiveRecorder>(*recorder_, services_.unconfirmed);
}

void SMDRManager2::Close() {
  live_.reset();
  recorder_.reset();
  listener_ = nullptr;
  if (output_) output_->Close();
  prices_.reset();
  phonebook_.reset();
  tariffs_.reset();
  main_ = nullptr;
}

std::vector<jet::Database*> SMDRManager2::databases() const {
  std::vector<jet::Database*> databases;
  if (tariffs_) databases.push_back(&tariffs_->database());
  if (phonebook_) databases.push_back(&phonebook_->database());
  return databases;
}

ExchangeParts SMDRManager2::exchangeParts() {
  return {*main_,        tariffs_.get(),       phonebook_.get(), parties_,
          *prices_,      services_.currencies, services_.config, services_.tags,
          services_.log, services_.language,   services_.person, output_.get(),
          listener_};
}

ImportResult SMDRManager2::importMonitorFile(const ImportOptions& options) {
  const ImportResult result = MonitorImport(*recorder_, options).run();
  services_.afterImport();
  return result;
}

ImportResult SMDRManager2::resumeStoppedImports(const ImportOptions& options) {
  return MonitorImport(*recorder_, options).resumeStoppedImports();
}

ImportResult SMDRManager2::catchUp(const ImportOptions& options) {
  using Outcome = ImportResult::Outcome;
  try {
    const ImportResult resumed = resumeStoppedImports(options);
    // A file of which the rest was not read stays where it is, ahead of the monitor's newer one.
    if (resumed.outcome == Outcome::Failed || resumed.outcome == Outcome::Interrupted) return resumed;
    ImportResult result = importMonitorFile(options);
    result.addEarlier(resumed);
    return result;
  } catch (const jet::Error& error) {
    return {.outcome = Outcome::Failed, .message = error.description()};
  }
}

ImportResult SMDRManager2::importFile(const std::filesystem::path& file, const ImportOptions& options) {
  const ImportResult result = MonitorImport(*recorder_, options).importFile(file);
  services_.afterImport();
  return result;
}

std::string SMDRManager2::keptText(const ImportResult& result) const {
  const foundation::LanguageFile& language = services_.language;
  std::string text;
  if (result.refused > 0) text = language.TranslateFormat("IDS_IMPORT_REFUSED", result.refused, result.refusedFile);
  if (!result.restFile.empty()) {
    text += (text.empty() ? "" : "\n") + language.TranslateFormat("IDS_IMPORT_REST", result.restFile);
  }
  return text;
}

void SMDRManager2::refreshDefinitions() {
  if (recorder_) recorder_->refreshDefinitions();
}

void SMDRManager2::makeDurable() {
  if (live_) live_->makeDurable();
}

void SMDRManager2::saveDefinitions() {
  jet::Transaction transaction(*main_);
  if (!parties_.changed(*main_, tariffDatabase())) parties_.save(*main_);
  transaction.commit();
}

// More than a day's calls go when the setting was changed, or after a long pause.
std::int64_t SMDRManager2::deleteOldCalls() {
  return ingest::deleteOldCalls(*main_, services_.config, services_.clock, [this] {
    services_.person.messageBox(
        base::format("%s\n%s", services_.language.Translate("IDS_RETENTION_DELETES"), services_.backups()));
  });
}

std::int64_t SMDRManager2::purgeOldCalls() {
  security::requireAllCalls(services_.user, services_.language);
  const std::int64_t deleted = deleteOldCalls();
  if (deleted > 0) services_.tags.TouchCalls();
  return deleted;
}

void SMDRManager2::hideNumber(std::string_view number) {
  security::requireAllCalls(services_.user, services_.language);
  jet::Transaction transaction(*main_);
  HideNumber(*main_, number);
  services_.tags.TouchCalls();
  transaction.commit();
}

void SMDRManager2::showNumber(std::string_view number) {
  security::requireAllCalls(services_.user, services_.language);
  jet::Transaction transaction(*main_);
  ShowNumber(*main_, number);
  services_.tags.TouchCalls();
  transaction.commit();
}

RecalcResult SMDRManager2::recalc(const RecalcOptions& options) {
  security::requireAllCalls(services_.user, services_.language);
  const RecalcResult result = Recalc(exchangeParts(), options);
  services_.tags.TouchCalls();
  return result;
}

}  // namespace ingest
