#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <iostream>

#include "capture/service/service.h"
#include "tallymon/commands.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

// A thousand exchanges, or peers that hold connections, need as many handles.
void raiseHandleLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

int run(const std::string& file, bool onlyCheck) {
  capture::Site site = capture::readSite(file);
  if (onlyCheck) {
    std::cout << file << ": in order, " << site.sources.size()
              << (site.sources.size() == 1 ? " source\n" : " sources\n");
    return 0;
  }
  // Broken pipes and limits on file sizes are faults where they occur, no reason to die.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  raiseHandleLimit();
  for (;;) {
    capture::Service service(std::move(site), file);
    if (service.run() == capture::Service::End::Stop) return 0;
    site = capture::readSite(file);
  }
}

}  // namespace

void addRun(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "run", "Take lines from every exchange of the site file and hand their calls to Tallybook, until SIGTERM.");
  const auto file = addSiteOption(*command);
  const auto check = std::make_shared<bool>(false);
  command->add_flag("--check", *check, "Only check the site file: a fault is told with its line and column");
  command->footer(
      "SIGHUP reads the site file and the formats again; with a fault in them everything goes on as it was.\n"
      "Example: tallymon run --config /etc/tallymon/tallymon.toml --check");
  command->callback([file, check, &status] { status = run(*file, *check); });
}

}  // namespace tallymon
