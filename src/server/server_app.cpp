#include "server/server_app.h"

#include <sys/stat.h>

#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"
#include "base/version.h"
#include "platform/durable_files.h"

namespace server {

namespace {

constexpr std::string_view kVersionSwitch = "/v";
constexpr const char* kVersionFile = "server.ver";

std::string_view withoutQuotes(std::string_view text) {
  text = base::trim(text);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
  return text;
}

// In the current folder. False leaves the one that is there.
bool writeVersionFile() {
  const std::string line = base::format("%s %s\n", base::kProgramName, base::kProgramVersion);
  const auto everybodyReads = [](int descriptor) { fchmod(descriptor, 0644); };
  return !platform::replaceDurably(std::filesystem::absolute(kVersionFile),
                                   {reinterpret_cast<const unsigned char*>(line.data()), line.size()}, everybodyReads);
}

}  // namespace

CServerApp::CServerApp(const std::filesystem::path& machineStoreFile, std::filesystem::path programFolder,
                       Surroundings surroundings)
    : store_(machineStoreFile),
      config_(store_),
      programFolder_(std::move(programFolder)),
      surroundings_(std::move(surroundings)) {}

std::filesystem::path CServerApp::unconfirmedFile() const {
  return store_.file().parent_path() / "UnconfirmedCalls";
}

std::filesystem::path CServerApp::lockFile() const {
  return store_.file().parent_path() / "QuorvaneServerMutex";
}

CServerApp::Start CServerApp::InitInstance(std::string_view commandLine, OneCopy oneCopy) {
  if (!store_.usable()) {
    // No language is loaded yet: which one is asked for is in the store.
    surroundings_.person.messageBox(
        base::format("The machine store %s is not a file that you may read.", store_.file().string()));
    return Start::Failed;
  }
  const bool versionOnly = commandLine.find(kVersionSwitch) != std::string_view::npos;
  // The switch is no profile.
  const std::string profile =
      std::string(withoutQuotes(base::replaceAll(std::string(commandLine), kVersionSwitch, "")));
  if (!profile.empty()) applyProfile(profile);
  if (!loadLanguage()) return Start::Failed;
  if (oneCopy == OneCopy::Enforced && !takeLock()) return Start::Failed;
  if (versionOnly) {
    if (writeVersionFile()) return Start::Ended;
    surroundings_.person.messageBox(language_.TranslateFormat("IDS_CANTWRITEFILE", kVersionFile));
    return Start::Failed;
  }
  return Start::Ready;
}

void CServerApp::applyProfile(std::string_view name) {
  namespace keys = foundation::keys;
  const std::string databases = config_.ReadConfigString(keys::PathDatabaseOfProfile.of(name));
  if (databases.empty()) {
    surroundings_.person.messageBox(base::format("Profile %s does not exist!", name));
    return;
  }
  config_.WriteConfigString(databases, keys::PathDatabase);
  config_.WriteConfigString(config_.ReadConfigString(keys::PathOfProfile.of(name)), keys::Path);
  config_.WriteConfigString(config_.ReadConfigString(keys::PathMonitorOfProfile.of(name)), keys::PathMonitor);
}

bool CServerApp::loadLanguage() {
  const std::string folder = base::withSeparator(config_.ReadConfigString(foundation::keys::Path));
  const std::string name = base::format("%s%s.lng", folder, base::kProgramName);
  // A name without a folder is beside the program; a set folder without the file falls back to that one, since the
  // folder is also where reports go.
  std::filesystem::path file = base::systemPath(name);
  if (!file.has_parent_path() || !std::filesystem::exists(file)) file = programFolder_ / file.filename();
  if (!language_.LoadLanguageFile(file)) {
    surroundings_.person.messageBox(base::format("Error loading language file: %s", name));
    return false;
  }
  const std::string chosen = config_.ReadConfigString(foundation::keys::Lang);
  language_.CheckCodepage(chosen.empty() ? config_.ReadConfigString(foundation::keys::Language) : chosen,
                          surroundings_.person);
  if (language_.NativeLanguage() != chosen) {
    config_.WriteConfigString(language_.NativeLanguage(), foundation::keys::Lang);
  }
  return true;
}

bool CServerApp::takeLock() {
  try {
    lock_ = platform::InstanceLock::acquire(lockFile());
  } catch (const std::exception& error) {
    surroundings_.person.messageBox(error.what());
    return false;
  }
  anotherCopyRuns_ = !lock_.has_value();
  return lock_.has_value();
}

void CServerApp::changeLanguage(std::string_view code) {
  config_.WriteConfigString(code, foundation::keys::Lang);
  surroundings_.person.messageBox(language_.Translate("IDS_RESTART_APPLY_LANGUAGE"));
}

}  // namespace server
