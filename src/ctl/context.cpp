#include "ctl/context.h"

#include "base/printf.h"
#include "convert/converter.h"
#include "ctl/access.h"
#include "platform/instance_lock.h"
#include "schema/database_place.h"
#include "security/users.h"
#include "server/program_files.h"

namespace ctl {

namespace {

using server::CServerApp;

std::filesystem::path storeFile(const GlobalOptions& options) {
  return options.store ? std::filesystem::path(*options.store) : foundation::MachineStore::defaultFile();
}

server::StartDuties dutiesOf(Duty duty, const GlobalOptions& options) {
  const bool works = duty != Duty::Administer;
  return {.maintain = works,
          .firstImport = duty == Duty::Serve,  // the import command imports by itself, to tell how much
          .outputPort = works,
          .autoLogin = options.user ? security::AutoLogin::Ignored : security::AutoLogin::Allowed};
}

// What helps when the databases were not opened; the reason was said.
std::string databaseHelp(const std::string& folder) {
  const auto place = schema::DatabasePlace::ofSetting(folder);
  if (place.onServer()) {
    return base::format(
        "The databases at %s were not opened. Look at the server and the rights there, point setting PathDatabase "
        "elsewhere, or make new databases there with: tallyctl init. docs/postgresql.md tells what a desk needs.",
        place.describe());
  }
  if (convert::isOldDatabase(place.file(schema::Which::Main))) {
    return base::format("The databases in %s are old ones. Carry them over with: tallyctl convert '%s' NEWDIR --use",
                        folder, folder);
  }
  if (!folder.ends_with('/') && !folder.ends_with('\\')) {
    return base::format(
        "Setting PathDatabase is \"%s\"; the folder must end with a slash. Mend it with: tallyctl "
        "setting set PathDatabase '%s/' --where machine",
        folder, folder);
  }
  return base::format(
      "The databases in %s were not opened. Point setting PathDatabase to their folder, or give another "
      "machine store with --store FILE.",
      folder);
}

// What helps a user who gave the right password and was not let in; the reason was said.
std::string accountHelp(const security::CurrentUser& user) {
  if ((user.Flags & security::UserDisabled) != 0 || user.groups.empty()) {
    return base::format("%s is not let in. Let an administrator change that (tallyctl user set), or give --user NAME.",
                        user.CurrentUserName);
  }
  return base::format(
      "%s is not let in before the password is changed: tallyctl --user %s passwd. Without a terminal, "
      "give it the present one in TALLYBOOK_PASSWORD and the new one in TALLYBOOK_NEW_PASSWORD.",
      user.CurrentUserName, user.CurrentUserName);
}

}  // namespace

Context::Context(const GlobalOptions& options)
    : options_(options),
      person_(interrupts_),
      prompt_(options.user),
      app_(storeFile(options), server::programFilesFolder(), {person_, prompt_, clock_, documents_, {}}) {
  if (machineStore().usable()) return;
  throw Failure(base::format("The machine store %s is not a file that you may read. Name one with --store FILE.",
                             machineStore().file().string()));
}

std::string Context::machineText(const foundation::TextKey& key) {
  return config().ReadConfigString(key, "");
}

void Context::open(Duty duty) {
  if (document_) return;
  const bool imports = duty != Duty::Administer;
  if (app_.InitInstance(options_.profile.value_or(""),
                        imports ? CServerApp::OneCopy::Enforced : CServerApp::OneCopy::Shared) !=
      CServerApp::Start::Ready) {
    if (!app_.anotherCopyRuns()) throw Failure("Tallybook could not be started.");
    throw Failure(
        base::format("Another copy of Tallybook (process %d) runs on this machine and imports the calls. "
                     "Stop it first.",
                     platform::InstanceLock::holder(app_.lockFile())));
  }
  if (duty == Duty::Serve) {
    interrupts_.begin();
    person_.leave();
  }
  document_.emplace(app_);
  if (!document_->OnNewDocument(dutiesOf(duty, options_))) failToStart();
}

void Context::failToStart() {
  const server::StartEnd end = document_->startEnd();
  const security::CurrentUser user = document_->user();
  document_.reset();  // with its logout
  switch (end) {
    case server::StartEnd::NotConfigured:
      throw Failure(base::format("No data folder is set in %s. Make one with: tallyctl init DIR --sample",
                                 machineStore().file().string()));
    case server::StartEnd::NobodyLoggedIn:
      throw Failure("Nobody was logged in. Give --user NAME and the password in TALLYBOOK_PASSWORD.");
    case server::StartEnd::AccountRefused:
      throw Failure(accountHelp(user));
    case server::StartEnd::DefinitionsFailed:
      throw Failure(
          base::format("The databases in %s cannot be used as they are. Restore them from a copy.",
                       schema::DatabasePlace::ofSetting(machineText(foundation::keys::PathDatabase)).describe()));
    default:
      throw Failure(databaseHelp(machineText(foundation::keys::PathDatabase)));
  }
}

void Context::require(const Access& access) {
  open(access.duty);
  if (document_->HasRight(access.object, access.right)) return;
  throw Failure(base::format(
      "%s may not do this: the right %s is missing. Let an administrator give it to a group of %s, or "
      "give --user NAME.",
      document_->user().CurrentUserName, rightText({access.object, access.right}), document_->user().CurrentUserName));
}

void Context::requireWritable() {
  if (!main().readOnly()) return;
  throw Failure(base::format("Nothing was changed: the database is open read-only. %s", document_->readOnlyReason()));
}

}  // namespace ctl
