#include "server/server_doc.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"
#include "schema/database_place.h"
#include "schema/missing.h"
#include "schema/schema.h"
#include "security/restriction.h"
#include "security/rights.h"
#include "server/alarm_mail.h"
#include "tariff/redenomination.h"

namespace server {

namespace {

constexpr std::int32_t kDatabaseVersion = 1;

}  // namespace

CServerDoc::CServerDoc(CServerApp& app)
    : app_(app),
      person_(app.surroundings().person),
      config_(app.config()),
      language_(app.language()),
      tags_(person_),
      log_(config_, app.surroundings().clock, [this] { return user_.stampName(); }),
      currencies_(config_, language_, person_),
      smdr_({config_, tags_, log_, currencies_, user_, language_, person_, app.surroundings().clock,
             [this] { stepAlarms(); }, [this] { return lastBackupText(); }, app.unconfirmedFile()}),
      contacts_(config_, tags_, language_, log_, person_),
      filter_(config_, smdr_.parties(), user_, app.surroundings().clock, language_),
      description_(filter_, language_, currencies_) {}

CServerDoc::~CServerDoc() {
  OnCloseDocument();
}

bool CServerDoc::OnNewDocument(const StartDuties& duties) {
  startEnd_ = start(duties);
  return startEnd_ == StartEnd::Ready;
}

StartEnd CServerDoc::start(StartDuties duties) {
  keepsState_ = duties.maintain;
  previewMode_ = config_.ReadConfigInt(foundation::keys::PreviewMode);
  upperPane_ = config_.ReadConfigInt(foundation::keys::UpperPane);
  if (const StartEnd end = openAndLogIn(duties); end != StartEnd::Ready) return end;
  if (!HasRight(security::ObjectCalls, security::RightChange)) {
    duties.maintain = duties.firstImport = duties.outputPort = false;
  }
  maintains_ = duties.maintain;
  upgradeSchema();
  if (!loadReferenceData(duties)) {
    person_.messageBox(language_.Translate("IDS_SMDR_CANTSTART"));
    return StartEnd::DefinitionsFailed;
  }
  if (duties.firstImport) firstImport();
  if (duties.maintain) redenominate();
  return StartEnd::Ready;
}

StartEnd CServerDoc::openAndLogIn(const StartDuties& duties) {
  if (const StartEnd end = openSettings(); end != StartEnd::Ready) return end;
  try {
    currencies_.load(*main_);
    log_.OpenLog(*main_);
    log_.LoadLogLevels();
    if (duties.maintain) log_.PurgeOldLogEntries();
    return logIn(duties);
  } catch (const jet::Error& error) {
    report(error);
    return StartEnd::NotOpened;
  }
}

// A name that no one else can have taken beforehand.
const std::filesystem::path& CServerDoc::previewFile() {
  if (!previewFile_.empty()) return previewFile_;
  const char* folder = std::getenv("TMP");
  std::string name = (std::filesystem::path(folder != nullptr ? folder : "/tmp") / "tallybookXXXXXX.htm").string();
  const int descriptor = mkstemps(name.data(), 4);
  if (descriptor < 0) return previewFile_;
  close(descriptor);
  previewFile_ = name;
  return previewFile_;
}

// Database, change tags and settings; tried again while the operator can choose another folder.
StartEnd CServerDoc::openSettings() {
  for (;;) {
    try {
      if (!openMainDatabase()) return StartEnd::NotConfigured;
      watchDatabases();
      tags_.LoadTouch(*main_);
      config_.OpenConfig(*main_, tags_);
      return StartEnd::Ready;
    } catch (const jet::Error& error) {
      const std::string reason = describe(error);
      config_.CloseConfig();
      tags_.CloseTouch();
      main_.reset();
      const auto& choose = app_.surroundings().chooseOtherDatabase;
      if (!choose) {
        person_.messageBox(reason);
        return StartEnd::NotOpened;
      }
      if (!choose(reason)) return StartEnd::NotOpened;
    }
  }
}

bool CServerDoc::openMainDatabase() {
  const std::string folder = config_.ReadConfigString(foundation::keys::PathDatabase);
  if (folder == "---") {
    person_.messageBox(language_.Translate("IDS_CANTREADREGISTRY"));
    return false;
  }
  auto opened = schema::DatabasePlace::ofSetting(folder).openWritableOrReadOnly(schema::Which::Main);
  main_ = std::move(opened.database);
  readOnlyReason_ = std::move(opened.readOnlyReason);
  return true;
}

StartEnd CServerDoc::logIn(const StartDuties& duties) {
  const Surroundings& around = app_.surroundings();
  users_ = std::make_unique<security::UserDirectory>(
      security::UserDirectory::Services{*main_, tags_, language_, person_, around.clock}, user_);
  login_ = std::make_unique<security::LoginManager>(
      security::LoginManager::Services{*main_, config_, language_, log_, person_, around.clock}, user_, around.login);
  if (!login_->Login(duties.autoLogin)) return StartEnd::NobodyLoggedIn;
  return login_->CheckAccount() ? StartEnd::Ready : StartEnd::AccountRefused;
}

schedule::ReportMaker::Parts CServerDoc::reportParts() {
  return {*main_, language_, smdr_.parties(), currencies_, log_, *users_, app_.surroundings().clock};
}

// A database of an earlier version, or one that was converted from an old file, may lack a table or what an order of
// its rows needs.
void CServerDoc::addMissingTables() {
  const std::vector<std::string> present = main_->tableNames();
  for (const jet::TableDef& table : schema::mainTables()) {
    const bool known = std::any_of(present.begin(), present.end(),
                                   [&](const std::string& name) { return base::equalFoldAscii(name, table.name); });
    if (known) {
      main_->upgradeTable(table);
    } else {
      main_->createTable(table);
    }
  }
}

void CServerDoc::upgradeSchema() {
  if (DatabaseReadOnly()) return;
  try {
    addMissingTables();
    const auto stored = [this] { return config_.ReadConfigInt(foundation::keys::DbVersion); };
    if (stored() >= kDatabaseVersion) return;
    jet::Transaction transaction(*main_);
    std::int32_t version = stored();  // another copy may have been faster
    if (version >= kDatabaseVersion) return;
    try {
      main_->execute("ALTER table calls ADD COLUMN Folder TEXT");
      version = kDatabaseVersion;
    } catch (const jet::Error& error) {
      report(error);
    }
    config_.WriteConfigInt(version, foundation::keys::DbVersion);
    transaction.commit();
  } catch (const jet::Error& error) {
    report(error);
  }
}

bool CServerDoc::loadReferenceData(const StartDuties& duties) {
  const std::string folder = config_.ReadConfigString(foundation::keys::PathDatabase);
  try {
    smdr_.openTariffs(folder);
  } catch (const jet::Error& error) {
    report(error);
  }
  try {
    smdr_.openPhonebook(folder);
  } catch (const jet::Error& error) {
    // Without the file there is just no phonebook; what is wrong with one that is there can be mended.
    constexpr int kFileNotFound = 3024;
    const std::string text = language_.Translate("IDS_SMDR_CANTOPENPBDB");
    person_.messageBox(error.number() == kFileNotFound ? text : text + "\n" + error.description());
  }
  try {
    smdr_.load(*main_, duties.outputPort);
    contacts_.Open(*main_);
    watchDatabases();
    alarms_ = std::make_unique<alarms::AlarmDesk>(alarmServices());
    smdr_.startRecording(alarms_.get());
    folderServices_ = std::make_unique<folders::FolderServices>(
        folders::FolderServices{*main_, config_, language_, smdr_.parties(), currencies_, filter_, log_, user_, person_,
                                app_.surroundings().clock});
    formatter_ = std::make_unique<folders::ValueFormatter>(config_, language_, smdr_.parties());
    if (duties.maintain) smdr_.deleteOldCalls();
    referenceDataLoaded_ = true;
  } catch (const jet::Error& error) {
    report(error);
  }
  return referenceDataLoaded_;
}

alarms::DeskServices CServerDoc::alarmServices() {
  return {*main_, config_, smdr_.parties(), currencies_, language_, log_, app_.surroundings().clock};
}

// An alarm that cannot be told now is told at the next step.
void CServerDoc::stepAlarms() {
  try {
    if (alarms_) alarms_->step(alarmMailer(config_));
  } catch (const jet::Error& error) {
    // What is lost with the connection is said by who takes it up again.
    if (main_->connected()) log_.WriteLog(security::LogError, "Alarms: %s", error.description());
  }
}

void CServerDoc::firstImport() {
  if (DatabaseReadOnly()) return;
  const auto result = smdr_.catchUp();
  if (const std::string kept = smdr_.keptText(result); !kept.empty()) person_.messageBox(kept);
  if (result.outcome != ingest::ImportResult::Outcome::Failed) return;
  person_.messageBox(language_.Translate("IDS_SMDR_CANTREADLOG"));
  person_.messageBox(result.message);
}

void CServerDoc::redenominate() {
  if (DatabaseReadOnly()) return;
  try {
    tariff::redenominate(*main_, smdr_.tariffDatabase(), currencies_, config_, app_.surroundings().clock, person_);
  } catch (const jet::Error& error) {
    report(error);
  }
}

// With what a database lacks, where that is the cause: the error names neither file nor column.
std::string CServerDoc::describe(const jet::Error& error) {
  std::string missing = main_ ? schema::missingFrom(schema::Which::Main, *main_) : std::string();
  jet::Database* const tariffs = smdr_.tariffDatabase();
  if (missing.empty() && tariffs != nullptr) missing = schema::missingFrom(schema::Which::Tariffs, *tariffs);
  return missing.empty() ? error.description() : error.description() + " " + missing;
}

void CServerDoc::report(const jet::Error& error) {
  person_.messageBox(describe(error));
}

// So that a window can be drawn while one of them works.
void CServerDoc::watchDatabases() {
  for (jet::Database* const database : openDatabases()) {
    database->watch([this] { return person_.progressPulse(); });
  }
}

std::vector<jet::Database*> CServerDoc::openDatabases() const {
  std::vector<jet::Database*> databases = smdr_.databases();
  databases.insert(databases.begin(), main_.get());
  return databases;
}

bool CServerDoc::connected() const {
  return std::ranges::all_of(openDatabases(), [](const jet::Database* each) { return each->connected(); });
}

bool CServerDoc::reconnect() {
  person_.waitIsOver();
  try {
    // All of them are asked: their attempts go on beside each other.
    const std::vector<jet::Database*> databases = openDatabases();
    if (std::ranges::count_if(databases, &jet::Database::reconnect) != std::ssize(databases)) return false;
    return true;
  } catch (const jet::Error&) {
    return false;  // a server that is starting, or was set up anew, refuses for a while
  }
}

std::string CServerDoc::lastBackupText() {
  const std::string stored = config_.ReadConfigString(foundation::keys::LastBackup);
  const auto at = base::DateTime::fromStored(stored);
  if (!at) return language_.Translate("IDS_NO_BACKUP");
  return base::format(language_.Translate("IDS_LAST_BACKUP"), at->format(folders::kDateTimeFormat));
}

void CServerDoc::noteBackup(base::DateTime at) {
  if (DatabaseReadOnly()) return;
  config_.WriteConfigString(at.stored(), foundation::keys::LastBackup);
}

// Says how many records go, and when the last backup was made. Throws jet::Error.
bool CServerDoc::confirmDeletion(std::string_view question, std::string_view count) {
  const std::int64_t records = main_->openSnapshot(count).at(0, 0).toLong();
  return person_.askYesNo(base::format("%s\n%s", lastBackupText(), language_.TranslateFormat(question, records)),
                          platform::Operator::Unattended::No);
}

bool CServerDoc::resetCalls() {
  security::requireAllCalls(user_, language_);
  if (!confirmDeletion("IDS_CONFIRMRESET", "select count(*) as cnt from Calls")) return false;
  jet::Transaction transaction(*main_);
  main_->execute("delete from Calls");
  tags_.TouchCalls();
  transaction.commit();
  return true;
}

bool CServerDoc::resetContacts() {
  if (!confirmDeletion("IDS_CONFIRMRESET_CONTACTS", "select count(*) as cnt from Contacts")) return false;
  jet::Transaction transaction(*main_);
  main_->execute("delete from contacts");
  tags_.Touch("Contacts");
  transaction.commit();
  return true;
}

bool CServerDoc::deleteZeroLengthCalls() {
  security::requireAllCalls(user_, language_);
  constexpr const char* kCount = "select count(*) as cnt from Calls where totaltime=0 and incoming=0";
  if (!confirmDeletion("IDS_DELETE_ZERO_LENGTH_CALLS", kCount)) return false;
  jet::Transaction transaction(*main_);
  // Outgoing calls that no one answered; incoming ones of no length were missed calls and stay.
  main_->execute("delete from Calls where totaltime=0 and incoming=0");
  tags_.TouchCalls();
  transaction.commit();
  return true;
}

bool CServerDoc::HasRight(int object, int right) {
  return security::HasRight(user_, object, right, person_);
}

void CServerDoc::OnCloseDocument() {
  if (main_ == nullptr) return;
  try {
    if (keepsState_) {
      config_.WriteConfigInt(previewMode_, foundation::keys::PreviewMode);
      config_.WriteConfigInt(upperPane_, foundation::keys::UpperPane);
    }
    if (user_.UserLoggedIn)
      log_.WriteLog(security::LogLogin, language_.Translate("IDS_LOG_LOGOUT"), user_.CurrentUserName);
    if (maintains_ && referenceDataLoaded_ && !DatabaseReadOnly()) smdr_.saveDefinitions();
  } catch (const jet::Error& error) {
    // The close goes on: what could not be written now is written again at the next start or change.
    report(error);
  }
  formatter_.reset();
  folderServices_.reset();
  smdr_.Close();
  alarms_.reset();
  contacts_.Close();
  log_.CloseLog();
  config_.CloseConfig();
  tags_.CloseTouch();
  login_.reset();
  users_.reset();
  main_.reset();
  std::error_code ignored;
  if (!previewFile_.empty()) std::filesystem::remove(previewFile_, ignored);
}

}  // namespace server
