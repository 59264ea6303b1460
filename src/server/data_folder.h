#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/operator.h"

namespace server {

// The user whom a new database begins with; a member of the group "Administrators".
inline constexpr const char* kAdministrator = "admin";

// What the service's first start makes; the unit and the package's folders name it too.
inline constexpr const char* kServiceDataFolder = "/var/lib/tallybook/data";

// The folder cannot be made; the text says why and what to do. Nothing was left behind.
class DataFolderError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct DataFolderPlan {
  std::filesystem::path folder;  // absolute; or the address of a server
  std::string password;          // of the administrator; empty: none
  bool withSample = false;       // filled with the sample exchange
  // An empty password is to be changed at the next login; else it stays until somebody sets one.
  bool passwordIsDue = true;
  // Empty: "monitor" beside the databases, or beside the machine store when they are on a server.
  std::filesystem::path monitor = {};
  std::string role = {};  // of the server, whose members are to use the databases; empty: none
};

// What an operator needs around it too: the machine store whose `config` gets the codes of the sample.
struct DataFolderTools {
  foundation::ConfigManager& config;
  platform::Operator& person;
  const platform::Clock& clock;
  const foundation::LanguageFile* texts = nullptr;  // of the names of the first groups; null: English
};

// Throws DataFolderError when one of the databases is there already; jet::Error when the server does not answer.
void refuseExistingDatabases(const std::filesystem::path& folder);

// Makes the three databases, the monitor's folder, the bill's page and the administrator; `finish` is the last step and
// may throw. What was made goes again when it cannot be finished; what was there before stays. Throws DataFolderError
// or jet::Error.
void makeDataFolder(const DataFolderPlan& plan, const DataFolderTools& tools, const std::function<void()>& finish);

// Adds the groups and the administrator to a database without users. `passwordIsDue` and `texts` as above.
void addFirstUsers(jet::Database& main, const platform::Clock& clock, const std::string& password,
                   bool passwordIsDue = true, const foundation::LanguageFile* texts = nullptr);

// Points the machine store to a data folder or a server: databases, monitor's folder (as DataFolderPlan says), reports,
// the proposed user, and the bars of the desktop (showBarsAtFirst). False when the store cannot be written.
bool useDataFolder(const std::filesystem::path& folder, foundation::ConfigManager& config,
                   const std::filesystem::path& monitor = {});

// A machine store that says nothing about the desktop's toolbar and status bar shows them from now on: settings that
// are not there count as 0, hidden. False when the store cannot be written.
bool showBarsAtFirst(foundation::ConfigManager& config);

// Settings of folders are appended to as they are, so they end with their separator.
[[nodiscard]] std::string folderSetting(const std::filesystem::path& folder);

}  // namespace server
