#include "server/data_folder.h"

#include <fstream>
#include <system_error>
#include <vector>

#include "base/path.h"
#include "base/printf.h"
#include "folders/bill_template.h"
#include "foundation/change_tags.h"
#include "jet/stored_database.h"
#include "platform/group_sharing.h"
#include "sample/sample_exchange.h"
#include "sample/tariff_plan.h"
#include "schema/database_place.h"
#include "security/users.h"

namespace server {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMonitor = "monitor";

// What cannot even be looked at is in no one's way: making the folder fails then, and says why.
bool isOnDisk(const fs::path& file) {
  std::error_code ignored;
  return fs::exists(file, ignored);
}

// What belongs to the databases and is a file: beside them, or beside the machine store when they are on a server.
fs::path folderOfFiles(const schema::DatabasePlace& place, foundation::ConfigManager& config) {
  return place.billPage(fs::absolute(config.machineStore().file())).parent_path();
}

fs::path monitorOf(const fs::path& given, const schema::DatabasePlace& place, foundation::ConfigManager& config) {
  return given.empty() ? folderOfFiles(place, config) / kMonitor : given;
}

// The bill's page can be adapted.
void writeBillTemplate(const fs::path& file) {
  if (isOnDisk(file)) return;
  std::ofstream out(file, std::ios::binary);
  out << folders::defaultBillTemplate();
  out.close();
  if (!out) throw DataFolderError(base::format("%s cannot be written.", file.string()));
}

void addGroup(jet::Database& main, int id, std::string_view name, std::string_view description,
              std::string_view access) {
  main.execute(base::format(
      "insert into Groups (RecordID, Name, [Desc], PasswordExpire, ObjectAccess) values (%d, '%s', '%s', 0, '%s')", id,
      name, description, access));
}

void makeDatabases(const schema::DatabasePlace& place, const DataFolderPlan& plan, const DataFolderTools& tools) {
  const auto main = place.create(schema::Which::Main);
  const auto tariffs = place.create(schema::Which::Tariffs);
  const auto phonebook = place.create(schema::Which::Phonebook);
  addFirstUsers(*main, tools.clock, plan.password, plan.passwordIsDue, tools.texts);
  foundation::ChangeTags tags(tools.person);
  tags.LoadTouch(*main);
  tools.config.OpenConfig(*main, tags);
  // A bill without its page names neither organisation nor period.
  tools.config.WriteConfigInt(1, foundation::keys::TemplateHotel);
  if (plan.withSample) sample::fillMain(*main, tools.config);
  tools.config.CloseConfig();
  tags.CloseTouch();
  if (!plan.withSample) return;
  sample::fillTariffs(*tariffs);
  sample::fillPhonebook(*phonebook);
}

// What was made goes again when it cannot be finished.
class HalfMade {
 public:
  HalfMade(const schema::DatabasePlace& place, const std::vector<fs::path>& beside)
      : folder_(place.onServer() ? fs::path() : fs::path(place.setting())),
        folderIsNew_(!place.onServer() && !isOnDisk(folder_)),
        databases_(place) {
    for (const fs::path& file : beside) {
      if (!isOnDisk(file)) newFiles_.push_back(file);
    }
  }
  HalfMade(const HalfMade&) = delete;
  HalfMade& operator=(const HalfMade&) = delete;
  ~HalfMade() {
    if (finished_) return;
    // What cannot be removed is named by the next attempt.
    std::error_code ignored;
    for (const fs::path& file : newFiles_) fs::remove(file, ignored);
    if (folderIsNew_) fs::remove_all(folder_, ignored);
  }
  void finish() {
    databases_.publish();
    finished_ = true;
  }

 private:
  fs::path folder_;
  bool folderIsNew_;
  schema::NewDatabases databases_;
  std::vector<fs::path> newFiles_;  // beside the databases
  bool finished_ = false;
};

}  // namespace

std::string folderSetting(const fs::path& folder) {
  if (jet::isServerAddress(folder.native())) return jet::completedAddress(folder.native());
  return base::withSeparator(folder.string());
}

void refuseExistingDatabases(const fs::path& folder) {
  const auto place = schema::DatabasePlace::ofTyped(folder);
  if (place.onServer()) place.askServer();
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    if (place.exists(kind.which)) {
      throw DataFolderError(base::format("%s exists already and is left as it is. Give another %s.",
                                         place.describe(kind.which), place.onServer() ? "database" : "folder"));
    }
  }
}

void makeDataFolder(const DataFolderPlan& plan, const DataFolderTools& tools, const std::function<void()>& finish) {
  refuseExistingDatabases(plan.folder);
  const auto place = schema::DatabasePlace::ofTyped(plan.folder);
  const fs::path monitor = monitorOf(plan.monitor, place, tools.config);
  const fs::path billPage = place.billPage(fs::absolute(tools.config.machineStore().file()));
  platform::shareWithGroupOfParent(place.onServer() ? monitor : plan.folder);
  HalfMade halfMade(place, {billPage, monitor});
  std::error_code fault;
  fs::create_directories(monitor, fault);
  if (fault) {
    throw DataFolderError(base::format("The folder %s cannot be made (%s). Choose another one, or check the rights.",
                                       monitor.string(), fault.message()));
  }
  writeBillTemplate(billPage);
  makeDatabases(place, plan, tools);
  if (!plan.role.empty()) place.grantUse(plan.role);
  finish();
  halfMade.finish();
}

void addFirstUsers(jet::Database& main, const platform::Clock& clock, const std::string& password, bool passwordIsDue,
                   const foundation::LanguageFile* texts) {
  constexpr int kAdministrators = 1;
  const auto name = [texts](const char* key, const char* english) {
    return texts != nullptr ? texts->Translate(key) : std::string(english);
  };
  addGroup(main, kAdministrators, name("IDS_FIRST_ADMINISTRATORS", "Administrators"),
           name("IDS_FIRST_ADMINISTRATORS_DO", "All rights"), "6;1;6;2;9;1;9;2");
  addGroup(main, 2, name("IDS_FIRST_OPERATORS", "Operators"),
           name("IDS_FIRST_OPERATORS_DO", "The calls, without users and settings"), "9;1;9;2");
  const auto rows = main.openRecordset("SELECT * FROM Users");
  rows->addNew();
  rows->set("RecordID", 1);
  rows->set("Name", kAdministrator);
  rows->set("Fullname", "Administrator");
  // The column is signed, the digest is not: the 32 bits count.
  rows->set("Password", static_cast<std::int32_t>(security::PasswordDigest(password)));
  rows->set("PasswordDate", clock.now());
  rows->set("Flags", password.empty() && passwordIsDue ? security::UserMustChangePassword : 0);
  rows->set("Groups", base::format(";%d;", kAdministrators));
  rows->update();
}

bool useDataFolder(const fs::path& folder, foundation::ConfigManager& config, const fs::path& monitor) {
  const auto place = schema::DatabasePlace::ofTyped(folder);
  return config.WriteConfigString(place.setting(), foundation::keys::PathDatabase) &&
         config.WriteConfigString(folderSetting(monitorOf(monitor, place, config)), foundation::keys::PathMonitor) &&
         config.WriteConfigString(folderSetting(folderOfFiles(place, config)), foundation::keys::Path) &&
         config.WriteConfigString(kAdministrator, foundation::keys::LastUser) && showBarsAtFirst(config);
}

bool showBarsAtFirst(foundation::ConfigManager& config) {
  bool written = true;
  for (const foundation::NumberKey& key : {foundation::keys::iface_Toolbar, foundation::keys::iface_Statusbar}) {
    if (config.machineStore().readInt(key.section, key.key)) continue;
    written = config.WriteConfigInt(1, key) && written;
  }
  return written;
}

}  // namespace server
