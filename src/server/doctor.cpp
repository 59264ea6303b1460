#include "server/doctor.h"

#include <sys/socket.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

#include "base/path.h"
#include "base/printf.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "foundation/settings_catalogue.h"
#include "ingest/output_port.h"
#include "platform/instance_lock.h"
#include "platform/live_channel.h"
#include "platform/serial_parameters.h"
#include "schema/database_place.h"
#include "server/doctor_databases.h"

namespace server {

namespace fs = std::filesystem;

namespace {

using foundation::StoreMachine;

bool mayWrite(const fs::path& path) {
  return access(path.c_str(), W_OK) == 0;
}

bool fileExists(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

class Examination {
 public:
  explicit Examination(const Patient& patient) : patient_(patient), config_(patient.machineStore) {}

  std::vector<Finding> run() {
    checkMachineStore();
    checkLanguageFile();
    checkMachineSettings();
    const std::string data = setting(foundation::keys::PathDatabase);
    if (data.empty() || data == "---") {
      wrong("data folder", "no data folder is set", patient_.machineStore.file().string(),
            "Make one: tallyctl init DIR");
      return std::move(findings_);
    }
    const auto databases = schema::DatabasePlace::ofSetting(data);
    if (!databases.onServer()) checkDataFolder(base::systemPath(data));
    if (!databases.onServer() || checkServer(databases)) {
      examineDatabases(databases, patient_.clock.now(), findings_);
    }
    checkMonitor();
    checkLiveSocket();
    checkOutput();
    return std::move(findings_);
  }

 private:
  std::string setting(const foundation::TextKey& key) { return config_.ReadConfigString(key, ""); }

  void good(std::string_view part, std::string what, std::string detail = {}) {
    findings_.push_back({Health::Good, part, std::move(what), std::move(detail), {}});
  }
  void note(std::string_view part, std::string what, std::string detail, std::string advice) {
    findings_.push_back({Health::Note, part, std::move(what), std::move(detail), std::move(advice)});
  }
  void wrong(std::string_view part, std::string what, std::string detail, std::string advice) {
    findings_.push_back({Health::Wrong, part, std::move(what), std::move(detail), std::move(advice)});
  }

  void checkMachineStore() {
    const fs::path file = patient_.machineStore.file();
    if (!patient_.machineStore.usable()) {
      return wrong("machine store", "it is not a file that this user may read", file.string(),
                   "Name another one with --store FILE.");
    }
    if (!fileExists(file))
      return note("machine store", "there is none yet", file.string(), "tallyctl init DIR makes one.");
    if (access(file.c_str(), R_OK) != 0) {
      return wrong("machine store", "it cannot be read", file.string(),
                   "Let its owner give you the right to read it, or name another one with --store FILE.");
    }
    if (!mayWrite(file)) {
      return note("machine store", "it can only be read", file.string(), "Settings cannot be changed by this user.");
    }
    good("machine store", "it can be read and written", file.string());
  }

  void checkLanguageFile() {
    const std::string folder = base::withSeparator(setting(foundation::keys::Path));
    fs::path file = base::systemPath(folder + "Tallybook.lng");
    if (!file.has_parent_path() || !fileExists(file)) file = patient_.programFolder / "Tallybook.lng";
    foundation::LanguageFile language;
    if (!language.LoadLanguageFile(file)) {
      return wrong("language file", "it cannot be read", file.string(), "Install the program's files again.");
    }
    if (language.Translate("IDS_NO_BACKUP") == "IDS_NO_BACKUP") {
      return wrong("language file", "it is of an earlier version and lacks texts", file.string(),
                   "Put the file of this version in its place, or delete it: the program's own is then used.");
    }
    good("language file", "it has the texts of this version", file.string());
  }

  // A value of the wrong type or out of range is not in force, or does what no one meant.
  void checkMachineSettings() {
    std::size_t faults = 0;
    for (const foundation::Setting* each : foundation::knownSettings()) {
      const foundation::Setting& known = *each;
      if (known.store != StoreMachine || known.type == foundation::SettingType::Binary) continue;
      const auto text = patient_.machineStore.readString(known.section, known.key);
      const auto number = patient_.machineStore.readInt(known.section, known.key);
      const std::string fault = settingFault(known, text, number ? std::optional<std::int64_t>(*number) : std::nullopt);
      if (fault.empty()) continue;
      ++faults;
      wrong("settings", base::format("%s of the machine store is not usable", known.key), fault,
            base::format("tallyctl setting set %s VALUE --section '%s', or tallyctl setting delete %s", known.key,
                         known.section, known.key));
    }
    if (faults == 0) good("settings", "those of the machine are of the right type and in range");
  }

  // False when it does not answer: nothing is known of its databases then.
  bool checkServer(const schema::DatabasePlace& databases) {
    try {
      good("database server", base::format("PostgreSQL %s answers", databases.askServer()), databases.describe());
      return true;
    } catch (const jet::Error& error) {
      wrong("database server", "it cannot be reached, or refuses", error.description(),
            "Is it running, and may this user and machine connect (pg_hba.conf, the password file ~/.pgpass)?");
      return false;
    }
  }

  void checkDataFolder(const fs::path& folder) {
    if (!fileExists(folder)) {
      return wrong("data folder", "it is not there", folder.string(),
                   "Is its disk or share connected? Else point setting PathDatabase to the right folder.");
    }
    if (!mayWrite(folder)) {
      wrong("data folder", "this user may not write there", folder.string(),
            "Run this as the user of the service, or let the folder's owner give the right.");
    } else {
      good("data folder", "it can be written", folder.string());
    }
    checkFreeSpace(folder);
  }

  void checkFreeSpace(const fs::path& folder) {
    struct statvfs room {};
    if (statvfs(folder.c_str(), &room) != 0) return;
    constexpr std::uint64_t kMegabyte = 1024 * 1024;
    findings_.push_back(freeSpaceFinding(std::uint64_t{room.f_bavail} * room.f_frsize / kMegabyte));
  }

  void checkMonitor() {
    const std::string set = setting(foundation::keys::PathMonitor);
    if (set.empty()) {
      return note("monitor folder", "none is set: nothing is imported", "",
                  "tallyctl setting set PathMonitor FOLDER/ --where machine");
    }
    const fs::path folder = base::systemPath(set);
    if (!fileExists(folder)) {
      return wrong("monitor folder", "it is not there", folder.string(),
                   "Is its disk or share connected? Else point setting PathMonitor to the right folder.");
    }
    if (!mayWrite(folder)) {
      return wrong("monitor folder", "this user may not rename and delete files there", folder.string(),
                   "Run this as the user of the service, or let the folder's owner give the right to its group.");
    }
    good("monitor folder", "files there can be taken over", folder.string());
    checkMonitorFiles(folder);
  }

  void checkMonitorFiles(const fs::path& folder) {
    std::error_code fault;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, fault)) {
      const std::string name = entry.path().filename().string();
      if (name.find(".refused.") != std::string::npos || name.find(".rest.") != std::string::npos) {
        note("monitor folder", "records are kept that could not be imported", entry.path().string(),
             base::format("Look for the cause in the audit log, then: tallyctl import --file '%s'",
                          entry.path().string()));
      }
    }
    const auto written = fs::last_write_time(folder / "monitor.data", fault);
    if (fault || fs::file_time_type::clock::now() - written < std::chrono::hours(24)) return;
    wrong("monitor folder", "calls wait there for more than a day", (folder / "monitor.data").string(),
          "No program imports it: systemctl status tallybook, or tallyctl import.");
  }

  void checkLiveSocket() {
    const std::string set = setting(foundation::keys::LiveSocket);
    const fs::path socket = set.empty() ? platform::defaultLiveSocket() : base::systemPath(set);
    if (!platform::InstanceLock::isHeld(patient_.lockFile)) {
      return note("service", "no program that imports and takes live calls runs", patient_.lockFile.string(),
                  "Start it: systemctl start tallybook, or open the desktop.");
    }
    good("service", "a program imports calls");
    try {
      const platform::LiveChannelClient client(socket);
      good("live channel", "it answers", socket.string());
    } catch (const std::exception& error) {
      note("live channel", "it does not answer", error.what(),
           "Where the service listens elsewhere, say so: tallyctl setting set LiveSocket SOCKET --where machine");
    }
  }

  void checkOutput() {
    const std::string port = setting(foundation::keys::COMOut);
    if (!port.empty()) checkOutputPort(port);
    const std::string file = setting(foundation::keys::OutFile);
    if (file.empty()) return;
    const fs::path path = base::systemPath(file);
    if (fileExists(path) ? mayWrite(path) : mayWrite(path.parent_path())) {
      return good("output file", "it can be written", path.string());
    }
    wrong("output file", "this user may not write it", path.string(), "Give the right, or change setting OutFile.");
  }

  void checkOutputPort(const std::string& port) {
    const ingest::OutputAddress address = ingest::outputAddress(config_, port);
    if (address.device.empty() || !fileExists(address.device)) {
      return wrong("output port", "there is no such device", port + ' ' + address.device,
                   "Name the device in setting Device_COMn, or mend setting COMOut.");
    }
    if (access(address.device.c_str(), R_OK | W_OK) != 0) {
      return wrong("output port", "this user may not use the device", address.device,
                   "Add the user to the group dialout.");
    }
    if (!platform::parseSerialParameters(address.parameters)) {
      return wrong("output port", "its parameters cannot be read", port,
                   "Write them as in COM1:baud=9600 parity=n data=8 stop=1.");
    }
    good("output port", "the device is there", address.device);
  }

  const Patient& patient_;
  foundation::ConfigManager config_;
  std::vector<Finding> findings_;
};

}  // namespace

Finding freeSpaceFinding(std::uint64_t megabytes) {
  constexpr std::uint64_t kTooLittle = 200;
  constexpr std::uint64_t kLittle = 2000;
  constexpr std::string_view kPart = "free space";
  const std::string detail = base::format("%d MB", megabytes);
  if (megabytes < kTooLittle) {
    return {Health::Wrong, kPart, "the disk of the data folder is nearly full", detail,
            "Free some space: calls are refused when it is full."};
  }
  if (megabytes < kLittle) {
    return {Health::Note, kPart, "there is little left on the disk of the data folder", detail,
            "Free some space soon."};
  }
  return {Health::Good, kPart, "there is enough on the disk of the data folder", {}, {}};
}

std::vector<Finding> examine(const Patient& patient) {
  return Examination(patient).run();
}

}  // namespace server
