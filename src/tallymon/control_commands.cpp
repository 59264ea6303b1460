// stop and reload: what systemd does for an installed service, for one that was started by hand.

#include <signal.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "platform/instance_lock.h"
#include "tallymon/commands.h"
#include "tallymon/running_service.h"
#include "tallymon/site_option.h"

namespace tallymon {

pid_t runningService(const capture::Site& site) {
  const auto lock = site.folder / ".tallymon" / "lock";
  return platform::InstanceLock::isHeld(lock) ? static_cast<pid_t>(platform::InstanceLock::holder(lock)) : 0;
}

namespace {

constexpr std::chrono::milliseconds kLook{50};
constexpr int kLooks = 400;  // twenty seconds: the service finishes what it has taken

pid_t signalService(const capture::Site& site, int signal, const char* bySystem) {
  const pid_t process = runningService(site);
  if (process <= 0) throw std::runtime_error("tallymon does not run for " + site.folder.string());
  if (::kill(process, signal) == 0) return process;
  if (errno == EPERM) {
    throw std::runtime_error("tallymon runs as another user (process " + std::to_string(process) + "): " + bySystem);
  }
  throw std::runtime_error(std::string("tallymon cannot be told: ") + std::strerror(errno));
}

int stop(const std::string& file) {
  const capture::Site site = capture::readSite(file);
  const pid_t process = signalService(site, SIGTERM, "systemctl stop tallymon");
  for (int look = 0; look < kLooks; ++look) {
    if (runningService(site) != process) return 0;
    std::this_thread::sleep_for(kLook);
  }
  throw std::runtime_error("tallymon (process " + std::to_string(process) + ") was told to end and still runs");
}

int reload(const std::string& file) {
  signalService(capture::readSite(file), SIGHUP, "systemctl reload tallymon");
  return 0;
}

}  // namespace

void addStop(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "stop", "End the tallymon that delivers into the site's folder; what it has taken is handed over first.");
  const auto file = addSiteOption(*command);
  command->footer("Under systemd: systemctl stop tallymon.\nExample: tallymon stop --config ./tallymon.toml");
  command->callback([file, &status] { status = stop(*file); });
}

void addReload(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "reload",
      "Make the running tallymon read the site file and the formats again; sources that did not change go on.");
  const auto file = addSiteOption(*command);
  command->footer("Under systemd: systemctl reload tallymon.\nExample: tallymon reload --config ./tallymon.toml");
  command->callback([file, &status] { status = reload(*file); });
}

}  // namespace tallymon
