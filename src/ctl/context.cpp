#include "ctl/context.h"

#include "base/path.h"
#include "base/printf.h"
#include "convert/converter.h"
#include "platform/instance_lock.h"
#include "schema/schema.h"
#include "security/rights.h"
#include "server/program_files.h"

namespace ctl {

namespace {

constexpr const char* kGeneral = "general";
using foundation::StoreMachine;
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

}  // namespace

Context::Context(const GlobalOptions& options)
    : options_(options),
      operator_(interrupts_),
      prompt_(options.user),
      app_(storeFile(options), server::programFilesFolder(), {operator_, prompt_, clock_, documents_, {}}) {}

std::string Context::folder(std::string_view key) {
  return config().ReadConfigString(key, kGeneral, StoreMachine, "");
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
    operator_.leave();
  }
  document_.emplace(app_);
  if (!document_->OnNewDocument(dutiesOf(duty, options_))) failToStart();
}

void Context::failToStart() {
  const std::string folderText = folder("PathDatabase");
  document_.reset();
  if (folderText.empty() || folderText == "---") {
    throw Failure(base::format("No data folder is set in %s. Make one with: tallyctl init DIR --sample",
                               machineStore().file().string()));
  }
  if (convert::isOldDatabase(base::systemPath(folderText + schema::kMainFile))) {
    throw Failure(
        base::format("The databases in %s are old ones. Carry them over with: tallyctl convert '%s' NEWDIR --use",
                     folderText, folderText));
  }
  throw Failure(
      base::format("The databases in %s were not opened, or nobody was logged in. Give --user NAME and the "
                   "password in TALLYBOOK_PASSWORD, or another machine store with --store FILE.",
                   folderText));
}

void Context::require(const Access& access) {
  open(access.duty);
  if (document_->HasRight(access.object, access.right)) return;
  throw Failure(
      base::format("%s may not do this (right %d of object %d is missing). Ask an administrator, or give "
                   "--user NAME.",
                   document_->user().Name, access.right, access.object));
}

}  // namespace ctl
