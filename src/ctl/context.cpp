#include "ctl/context.h"

#include <iostream>

#include "base/path.h"
#include "base/printf.h"
#include "base/version.h"
#include "ctl/program_files.h"
#include "ctl/terminal_prompt.h"
#include "filter/call_filter.h"
#include "foundation/change_tags.h"
#include "ingest/output_port.h"
#include "ingest/phonebook.h"
#include "schema/schema.h"
#include "security/login.h"
#include "security/rights.h"

namespace ctl {

namespace {

constexpr const char* kGeneral = "general";
using foundation::StoreMachine;

std::unique_ptr<jet::Database> openMain(const std::filesystem::path& file) {
  try {
    return jet::openDatabase(file, jet::OpenMode::ReadWrite);
  } catch (const jet::Error& error) {
    constexpr int kNoRight = 3051;
    if (error.number() != kNoRight) throw;
  }
  return jet::openDatabase(file, jet::OpenMode::ReadOnly);
}

}  // namespace

// In the order of their making; destroyed the other way round.
struct Context::Documents {
  Documents(std::unique_ptr<jet::Database> database, Context& context)
      : main(std::move(database)),
        tags(context.operator_),
        log(context.config_, context.clock_, [this] { return session.stampName(); }),
        parties(context.config_),
        currencies(context.config_, language, context.operator_),
        output(context.config_, log),
        filter(context.config_, parties, session, context.clock_),
        folderServices{*main, context.config_, language,          parties,       currencies, filter,
                       log,   session,         context.operator_, context.clock_},
        config(context.config_) {
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    log.OpenLog(*main);
  }
  ~Documents() {
    output.Close();
    log.CloseLog();
    config.CloseConfig();
    tags.CloseTouch();
  }

  std::unique_ptr<jet::Database> main;
  std::unique_ptr<tariff::TariffDatabase> tariffs;
  std::unique_ptr<ingest::Phonebook> phonebook;
  foundation::ChangeTags tags;
  foundation::LanguageFile language;
  security::CurrentUser session;
  security::AuditLog log;
  exchange::PartyDefinitions parties;
  tariff::Currencies currencies;
  std::optional<tariff::PriceCalculator> prices;
  ingest::OutputPort output;
  filter::CallFilter filter;
  folders::FolderServices folderServices;
  foundation::ConfigManager& config;
};

Context::Context(const GlobalOptions& options)
    : options_(options),
      operator_(interrupts_),
      machine_(options.store ? std::filesystem::path(*options.store) : foundation::MachineStore::defaultFile()),
      config_(machine_) {
  if (options_.profile) applyProfile(*options_.profile);
}

Context::~Context() = default;

// A profile's folders become the plain settings, which everything else reads.
void Context::applyProfile(const std::string& profile) {
  if (machine_.readString(kGeneral, base::format("PathDatabase_%s", profile)).value_or("").empty()) {
    operator_.messageBox(base::format("Profile %s does not exist!", profile));
    return;
  }
  for (const char* key : {"PathDatabase", "Path", "PathMonitor"}) {
    const std::string value = config_.ReadConfigString(base::format("%s_%s", key, profile), kGeneral, StoreMachine, "");
    config_.WriteConfigString(value, key, kGeneral, StoreMachine);
  }
}

std::string Context::folder(std::string_view key) {
  return config_.ReadConfigString(key, kGeneral, StoreMachine, "");
}

void Context::open() {
  if (documents_) return;
  const std::string folderText = config_.ReadConfigString("PathDatabase", kGeneral, StoreMachine, "---");
  if (folderText == "---") {
    throw Failure(base::format("No data folder is set in %s. Make one with: tallyctl init DIR --sample",
                               machine_.file().string()));
  }
  const std::filesystem::path file = base::systemPath(folderText + schema::kMainFile);
  std::unique_ptr<Documents> documents;
  try {
    documents = std::make_unique<Documents>(openMain(file), *this);
  } catch (const jet::Error& error) {
    throw Failure(base::format("Cannot open %s: %s", file.string(), error.description()));
  }
  loadLanguage(*documents);
  login(*documents);
  try {
    documents->tariffs = tariff::TariffDatabase::open(folderText);
  } catch (const jet::Error& error) {
    operator_.messageBox(
        base::format("Calls cannot be priced, the tariff database cannot be opened: %s", error.description()));
  }
  jet::Database* tariffs = documents->tariffs ? &documents->tariffs->database() : nullptr;
  documents->parties.load(*documents->main, tariffs);
  documents->currencies.load(*documents->main);
  documents->prices.emplace(config_, documents->parties, documents->tariffs.get(), documents->log, documents->language,
                            operator_);
  documents_ = std::move(documents);
}

void Context::loadLanguage(Documents& documents) {
  std::string file = base::format("%s%s.lng", folder("path"), base::kProgramName);
  if (file.find_first_of("/\\") == std::string::npos) {
    if (const auto own = programFilesFolder()) file = (*own / file).string();
  }
  if (!documents.language.LoadLanguageFile(base::systemPath(file))) {
    throw Failure(base::format("Error loading language file: %s", file));
  }
  std::string code = config_.ReadConfigString("Lang", kGeneral, StoreMachine, "");
  if (code.empty()) code = config_.ReadConfigString("Language", kGeneral, StoreMachine, "");
  documents.language.CheckCodepage(code, operator_);
}

void Context::login(Documents& documents) {
  TerminalPrompt prompt(options_.user);
  security::LoginManager manager({*documents.main, config_, documents.language, documents.log, operator_, clock_},
                                 documents.session, prompt);
  if (!manager.Login(options_.user ? security::AutoLogin::Ignored : security::AutoLogin::Allowed)) {
    throw Failure("Nobody is logged in. Give --user NAME and the password in TALLYBOOK_PASSWORD.");
  }
  if (!manager.CheckAccount()) throw Failure("This account may not be used now. Ask an administrator.");
}

void Context::requireRight(int object, int right) {
  open();
  if (security::HasRight(documents_->session, object, right, operator_)) return;
  throw Failure(
      base::format("%s may not do this (right %d of object %d is missing). Ask an administrator, or give "
                   "--user NAME.",
                   documents_->session.Name, right, object));
}

jet::Database& Context::main() {
  return *documents_->main;
}
tariff::TariffDatabase* Context::tariffs() {
  return documents_->tariffs.get();
}
exchange::PartyDefinitions& Context::parties() {
  return documents_->parties;
}
tariff::Currencies& Context::currencies() {
  return documents_->currencies;
}
tariff::PriceCalculator& Context::prices() {
  return *documents_->prices;
}
security::AuditLog& Context::log() {
  return documents_->log;
}
const security::CurrentUser& Context::session() {
  return documents_->session;
}
const foundation::LanguageFile& Context::language() {
  return documents_->language;
}

const folders::FolderServices& Context::folderServices() {
  return documents_->folderServices;
}

ingest::ExchangeParts Context::exchangeParts() {
  Documents& documents = *documents_;
  if (!documents.phonebook) {
    try {
      documents.phonebook = ingest::Phonebook::open(folder("PathDatabase"));
    } catch (const jet::Error&) {
      operator_.messageBox(documents.language.Translate("IDS_SMDR_CANTOPENPBDB"));
    }
    documents.output.Open();
  }
  return {*documents.main,
          documents.tariffs.get(),
          documents.phonebook.get(),
          documents.parties,
          *documents.prices,
          documents.currencies,
          config_,
          documents.tags,
          documents.log,
          documents.language,
          operator_,
          &documents.output};
}

}  // namespace ctl
