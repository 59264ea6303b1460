#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "base/printf.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/terminal_prompt.h"
#include "folders/bill_template.h"
#include "foundation/change_tags.h"
#include "sample/sample_exchange.h"
#include "sample/tariff_plan.h"
#include "schema/schema.h"
#include "security/users.h"

namespace ctl {

namespace {

using foundation::StoreMachine;
namespace fs = std::filesystem;

constexpr const char* kAdministrator = "admin";
constexpr const char* kGeneral = "general";

// Folder settings are appended to as they stand, so they end with their separator.
std::string folderSetting(const fs::path& folder) {
  return (folder / "").string();
}

void refuseToOverwrite(const fs::path& folder, Context& context) {
  for (const char* file : {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile}) {
    if (fs::exists(folder / file)) {
      throw Failure(
          base::format("%s exists already and is left as it is. Give another folder.", (folder / file).string()));
    }
  }
  const std::string known = context.folder("PathDatabase");
  if (!known.empty() && known != "---" && known != folderSetting(folder)) {
    throw Failure(
        base::format("The machine store %s points to %s already. Give --store FILE for a machine store of "
                     "its own.",
                     context.machineStore().file().string(), known));
  }
}

// The bill's page stands beside the databases, where it can be adapted.
void writeBillTemplate(const fs::path& folder) {
  const fs::path file = folder / "template.html";
  if (fs::exists(file)) return;
  std::ofstream out(file, std::ios::binary);
  out << folders::defaultBillTemplate();
  out.close();
  if (!out) throw Failure(base::format("%s cannot be written.", file.string()));
}

void addGroup(jet::Database& main, int id, std::string_view name, std::string_view description,
              std::string_view access) {
  main.execute(base::format(
      "insert into Groups (RecordID, Name, [Desc], PasswordExpire, ObjectAccess) values (%d, '%s', '%s', 0, '%s')", id,
      name, description, access));
}

void addUsers(jet::Database& main, const platform::Clock& clock, const std::string& password) {
  constexpr int kAdministrators = 1;
  addGroup(main, kAdministrators, "Administrators", "All rights", "6;1;6;2;9;1;9;2");
  addGroup(main, 2, "Operators", "The calls, without users and settings", "9;1;9;2");
  const auto rows = main.openRecordset("SELECT * FROM Users");
  rows->addNew();
  rows->set("RecordID", 1);
  rows->set("Name", kAdministrator);
  rows->set("Fullname", "Administrator");
  // The column is signed, the digest is not: the 32 bits count.
  rows->set("Password", static_cast<std::int32_t>(security::PasswordDigest(password)));
  rows->set("PasswordDate", clock.now());
  rows->set("Flags", password.empty() ? security::UserMustChangePassword : 0);
  rows->set("Groups", base::format(";%d;", kAdministrators));
  rows->update();
}

std::string choosePassword() {
  if (const auto given = passwordFromEnvironment()) return *given;
  const auto typed = askPassword("Password of the new user admin (empty: none)");
  if (!typed || typed->empty()) return {};
  const auto repeated = askPassword("Again");
  if (repeated != typed) throw Failure("The two passwords differ. Nothing was made.");
  return *typed;
}

void writeMachineStore(Context& context, const fs::path& folder, const std::string& password) {
  foundation::ConfigManager& config = context.config();
  bool written = config.WriteConfigString(folderSetting(folder), "PathDatabase", kGeneral, StoreMachine) &&
                 config.WriteConfigString(folderSetting(folder / "monitor"), "PathMonitor", kGeneral, StoreMachine) &&
                 config.WriteConfigString(folderSetting(folder), "Path", kGeneral, StoreMachine) &&
                 config.WriteConfigString(kAdministrator, "LastUser", kGeneral, StoreMachine);
  // Without a password there is nothing to keep secret, and commands can log in by themselves.
  if (password.empty()) {
    written = written && config.WriteConfigString(kAdministrator, "AutoLoginUser", kGeneral, StoreMachine);
  }
  if (!written) {
    throw Failure(base::format("The machine store %s cannot be written. Give --store FILE.",
                               context.machineStore().file().string()));
  }
}

void makeDatabases(const fs::path& folder, Context& context, const std::string& password, bool withSample) {
  const auto main = schema::createMainDatabase(folder / schema::kMainFile);
  const auto tariffs = schema::createTariffDatabase(folder / schema::kTariffFile);
  const auto phonebook = schema::createPhonebookDatabase(folder / schema::kPhonebookFile);
  addUsers(*main, context.clock(), password);
  if (!withSample) return;
  foundation::ChangeTags tags(context.person());
  tags.LoadTouch(*main);
  context.config().OpenConfig(*main, tags);
  sample::fillMain(*main, context.config());
  context.config().CloseConfig();
  tags.CloseTouch();
  sample::fillTariffs(*tariffs);
  sample::fillPhonebook(*phonebook);
}

// What init made goes again when it cannot be finished; what was there before stays.
class HalfMade {
 public:
  explicit HalfMade(fs::path folder) : folder_(std::move(folder)), folderIsNew_(!fs::exists(folder_)) {}
  HalfMade(const HalfMade&) = delete;
  HalfMade& operator=(const HalfMade&) = delete;
  ~HalfMade() {
    if (finished_) return;
    std::error_code ignored;  // what cannot be removed is named by the next init
    for (const char* file : {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile}) {
      for (const char* part : {"", "-wal", "-shm", "-journal"})
        fs::remove(folder_ / (std::string(file) + part), ignored);
    }
    if (folderIsNew_) fs::remove_all(folder_, ignored);
  }
  void finish() { finished_ = true; }

 private:
  fs::path folder_;
  bool folderIsNew_;
  bool finished_ = false;
};

int init(const Invocation& call) {
  if (call.arguments.has("--empty") && call.arguments.has("--sample")) {
    throw WrongUsage("Give --empty or --sample, not both.");
  }
  const bool withSample = call.arguments.has("--sample");
  const fs::path folder = fs::absolute(call.arguments.text("DIR")).lexically_normal() / "";
  const fs::path target = folder.parent_path();
  refuseToOverwrite(target, call.context);
  const std::string password = choosePassword();
  HalfMade halfMade(target);
  fs::create_directories(target / "monitor");
  writeBillTemplate(target);
  makeDatabases(target, call.context, password, withSample);
  writeMachineStore(call.context, target, password);
  halfMade.finish();

  call.out << "Made in " << target.string() << ":\n"
           << "  " << schema::kMainFile << "    calls, settings, users\n"
           << "  " << schema::kTariffFile << "      providers, prefixes, charge bands\n"
           << "  " << schema::kPhonebookFile << "    the phonebook\n"
           << "  template.html    the page of a bill\n"
           << "  monitor/         where the monitor leaves monitor.data\n"
           << (withSample ? "Filled with the sample exchange.\n" : "")
           << "Machine store: " << call.context.machineStore().file().string() << '\n'
           << "User " << kAdministrator << ", group Administrators"
           << (password.empty() ? ", no password: give it one with tallyctl passwd" : "") << '\n';
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "DIR", .help = "Data folder to make", .required = true},
    {.name = "--empty", .takes = Takes::Nothing, .help = "Empty databases (the default)"},
    {.name = "--sample", .takes = Takes::Nothing, .help = "Databases of a made-up company's exchange"},
};

constexpr Command kCommands[] = {
    {"init",
     "Make the three databases, an administrator and a machine store that points to them",
     "tallyctl init demo --sample\n"
     "tallyctl --store site.ini init /srv/tallybook --empty",
     kOptions,
     {},
     init},
};

}  // namespace

std::span<const Command> initCommands() {
  return kCommands;
}

}  // namespace ctl
