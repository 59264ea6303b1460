#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "foundation/machine_store.h"
#include "platform/instance_lock.h"
#include "server/surroundings.h"

namespace server {

// The application: settings root, profile, language and the one-copy lock, in the order of the start.
class CServerApp {
 public:
  // `programFolder` is the folder of the executable: the language file is there unless setting `path` names
  // another.
  CServerApp(const std::filesystem::path& machineStoreFile, std::filesystem::path programFolder,
             Surroundings surroundings);
  CServerApp(const CServerApp&) = delete;
  CServerApp& operator=(const CServerApp&) = delete;

  enum class OneCopy {
    Enforced,  // this program imports or takes live calls
    Shared,    // it only reads or administers
  };
  enum class Start {
    Ready,
    Ended,   // what was asked for is done ("/v")
    Failed,  // the operator was told why, but for another copy that runs: see anotherCopyRuns()
  };
  // `commandLine` is empty, the name of a profile, or holds "/v".
  Start InitInstance(std::string_view commandLine, OneCopy oneCopy);

  [[nodiscard]] bool anotherCopyRuns() const { return anotherCopyRuns_; }
  // The lock's file: "QuorvaneServerMutex" beside the machine store, which is what makes a workstation.
  [[nodiscard]] std::filesystem::path lockFile() const;
  // "UnconfirmedCalls", beside it: live calls whose commit the server has not confirmed.
  [[nodiscard]] std::filesystem::path unconfirmedFile() const;

  // Stores the language for the next start and tells the operator so.
  void changeLanguage(std::string_view code);

  [[nodiscard]] foundation::ConfigManager& config() { return config_; }
  [[nodiscard]] foundation::LanguageFile& language() { return language_; }
  [[nodiscard]] const Surroundings& surroundings() const { return surroundings_; }
  [[nodiscard]] std::filesystem::path helpFile() const { return programFolder_ / "agenda.chm"; }
  [[nodiscard]] const std::filesystem::path& programFolder() const { return programFolder_; }

 private:
  void applyProfile(std::string_view name);
  bool loadLanguage();
  bool takeLock();

  foundation::MachineStore store_;
  foundation::ConfigManager config_;
  foundation::LanguageFile language_;
  std::filesystem::path programFolder_;
  Surroundings surroundings_;
  std::optional<platform::InstanceLock> lock_;
  bool anotherCopyRuns_ = false;
};

}  // namespace server
