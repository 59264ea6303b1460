#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "alarms/alarm_desk.h"
#include "contacts/contacts_manager.h"
#include "filter/call_filter.h"
#include "filter/description.h"
#include "folders/services.h"
#include "folders/value_formatter.h"
#include "foundation/change_tags.h"
#include "ingest/smdr_manager.h"
#include "schedule/report_maker.h"
#include "schema/database_place.h"
#include "security/audit_log.h"
#include "security/login.h"
#include "security/users.h"
#include "server/server_app.h"
#include "tariff/currencies.h"

namespace server {

// What a start does beyond opening: the desktop and the service do all of it, a command only what it is for.
struct StartDuties {
  bool maintain = true;     // purge of the log, retention of calls, redenomination
  bool firstImport = true;  // the monitor's file, and imports that were interrupted
  bool outputPort = true;   // forwarding lines of outgoing calls
  security::AutoLogin autoLogin = security::AutoLogin::Allowed;
};

// Where a start ended, for the code that tells the operator what to do next.
enum class StartEnd {
  Ready,
  NotConfigured,     // setting "PathDatabase" is not set
  NotOpened,         // a database cannot be used
  NobodyLoggedIn,    // wrong name or password, or the login was cancelled
  AccountRefused,    // disabled, without groups, or its password was not changed
  DefinitionsFailed  // the reference data of the calls cannot be read
};

// The document: the open databases and everything that lives as long as they do.
class CServerDoc {
 public:
  explicit CServerDoc(CServerApp& app);
  CServerDoc(const CServerDoc&) = delete;
  CServerDoc& operator=(const CServerDoc&) = delete;
  ~CServerDoc();

  // The start, in its documented order. False when it ended; the operator was told why. Who may not change calls
  // imports none, deletes none and forwards none by starting: those duties are left to the next start.
  bool OnNewDocument(const StartDuties& duties);
  [[nodiscard]] StartEnd startEnd() const { return startEnd_; }
  // The close: pane settings, logout, definitions, output port, databases. Also done on destruction.
  void OnCloseDocument();

  // False after the connection to the databases' server was lost: nothing can be read or changed until reconnect() gave
  // true. Costs nothing.
  [[nodiscard]] bool connected() const;
  // Connects anew; false while the server cannot be reached or refuses. Lists have to be read anew then.
  bool reconnect();

  // When the last backup was made, as a sentence for the operator: said before much is deleted.
  [[nodiscard]] std::string lastBackupText();
  void noteBackup(base::DateTime at);

  // The operator's commands. Each asks first; false when the answer was no. Throw jet::Error, and those that work on
  // calls security::RestrictedUserError for a user with a restriction.
  bool resetCalls();
  bool resetContacts();
  bool deleteZeroLengthCalls();

  [[nodiscard]] CServerApp& app() { return app_; }
  [[nodiscard]] jet::Database& database() { return *main_; }
  [[nodiscard]] bool DatabaseReadOnly() const { return main_ != nullptr && main_->readOnly(); }
  // Why the main database could be opened read-only only; empty while it can be written.
  [[nodiscard]] const std::string& readOnlyReason() const { return readOnlyReason_; }
  // Definitions, prices, recording, import and what is done to stored calls.
  [[nodiscard]] ingest::SMDRManager2& smdr() { return smdr_; }
  [[nodiscard]] foundation::ChangeTags& tags() { return tags_; }
  [[nodiscard]] security::AuditLog& log() { return log_; }
  [[nodiscard]] security::CurrentUser& user() { return user_; }
  [[nodiscard]] security::UserDirectory& users() { return *users_; }
  [[nodiscard]] security::LoginManager& login() { return *login_; }
  [[nodiscard]] tariff::Currencies& currencies() { return currencies_; }
  [[nodiscard]] contacts::ContactsManager& contactBook() { return contacts_; }
  // What alarms are judged with.
  [[nodiscard]] alarms::DeskServices alarmServices();
  [[nodiscard]] filter::CallFilter& callFilter() { return filter_; }
  [[nodiscard]] filter::FilterDescription& filterDescription() { return description_; }
  // What folders and reports work on; only after a successful start.
  [[nodiscard]] const folders::FolderServices& folderServices() const { return *folderServices_; }
  [[nodiscard]] const folders::ValueFormatter& valueFormatter() const { return *formatter_; }
  // What scheduled reports are made from; only after a successful start.
  [[nodiscard]] schedule::ReportMaker::Parts reportParts();
  [[nodiscard]] bool HasRight(int object, int right);
  [[nodiscard]] schema::DatabasePlace databases() const { return schema::DatabasePlace::of(*main_); }
  // Height of the main window's upper pane in percent; kept at the close.
  [[nodiscard]] int upperPane() const { return upperPane_; }
  void setUpperPane(int percent) { upperPane_ = percent; }
  // A page that may be written and shown, made when it is first asked for and removed at the close; empty when it
  // cannot be made.
  [[nodiscard]] const std::filesystem::path& previewFile();

 private:
  bool openMainDatabase();
  StartEnd openSettings();
  StartEnd start(StartDuties duties);
  StartEnd openAndLogIn(const StartDuties& duties);
  StartEnd logIn(const StartDuties& duties);
  [[nodiscard]] std::vector<jet::Database*> openDatabases() const;
  void watchDatabases();
  void addMissingTables();
  void upgradeSchema();
  bool loadReferenceData(const StartDuties& duties);
  void firstImport();
  void redenominate();
  void stepAlarms();
  bool confirmDeletion(std::string_view question, std::string_view count);
  [[nodiscard]] std::string describe(const jet::Error& error);
  void report(const jet::Error& error);

  CServerApp& app_;
  platform::Operator& person_;
  foundation::ConfigManager& config_;
  foundation::LanguageFile& language_;

  std::unique_ptr<jet::Database> main_;
  foundation::ChangeTags tags_;
  security::CurrentUser user_;
  security::AuditLog log_;
  tariff::Currencies currencies_;
  ingest::SMDRManager2 smdr_;
  contacts::ContactsManager contacts_;
  filter::CallFilter filter_;
  filter::FilterDescription description_;
  std::unique_ptr<folders::FolderServices> folderServices_;
  std::unique_ptr<folders::ValueFormatter> formatter_;
  std::unique_ptr<security::UserDirectory> users_;
  std::unique_ptr<security::LoginManager> login_;
  std::unique_ptr<alarms::AlarmDesk> alarms_;

  StartEnd startEnd_ = StartEnd::NotOpened;
  std::string readOnlyReason_;
  std::filesystem::path previewFile_;
  std::int32_t previewMode_ = 0;
  std::int32_t upperPane_ = 70;  // percent
  bool keepsState_ = false;      // pane settings, at the close
  bool maintains_ = false;       // a program that maintains, and a user who may change calls
  bool referenceDataLoaded_ = false;
};

}  // namespace server
