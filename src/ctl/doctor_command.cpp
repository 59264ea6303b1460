#include <sys/utsname.h>

#include <algorithm>

#include "base/version.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "server/doctor.h"
#include "server/library_versions.h"

namespace ctl {

namespace doctor_command {

using server::Finding;
using server::Health;

std::string_view word(Health health) {
  switch (health) {
    case Health::Good:
      return "good";
    case Health::Note:
      return "note";
    case Health::Wrong:
      return "WRONG";
  }
  return {};
}

void printVersions(std::ostream& out) {
  out << base::kProgramName << ' ' << base::kProgramVersion << '\n';
  for (const std::string& library : server::libraryVersions()) out << library << '\n';
  struct utsname system {};
  if (uname(&system) == 0) out << system.sysname << ' ' << system.release << ' ' << system.machine << '\n';
}

// For strangers: no path, no name of a person or machine, no telephone number.
void printReport(const std::vector<Finding>& findings, std::ostream& out) {
  printVersions(out);
  for (const Finding& finding : findings) {
    out << word(finding.health) << "  " << finding.part << ": " << finding.what << '\n';
  }
}

void print(const std::vector<Finding>& findings, std::ostream& out) {
  for (const Finding& finding : findings) {
    out << word(finding.health) << "  " << finding.part << ": " << finding.what;
    if (!finding.detail.empty()) out << " (" << finding.detail << ')';
    out << '\n';
    if (!finding.advice.empty()) out << "       " << finding.advice << '\n';
  }
}

int doctor(const Invocation& call) {
  Context& context = call.context;
  const std::vector<Finding> findings = server::examine({.machineStore = context.machineStore(),
                                                         .programFolder = context.app().programFolder(),
                                                         .lockFile = context.app().lockFile(),
                                                         .clock = context.clock()});
  if (call.arguments.has("--report")) {
    printReport(findings, call.out);
  } else if (call.global.format == TableFormat::Text) {
    print(findings, call.out);
  } else {
    Table table({"State", "Part", "What", "Detail", "Advice"});
    for (const Finding& each : findings) {
      table.add({std::string(word(each.health)), std::string(each.part), each.what, each.detail, each.advice});
    }
    call.print(table);
  }
  return std::ranges::any_of(findings, [](const Finding& each) { return each.health == Health::Wrong; }) ? 1 : 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "--report",
     .takes = Takes::Nothing,
     .help = "In a form to attach to a request for help: versions, and no paths, names or telephone numbers"},
};

constexpr Command kCommands[] = {
    {"doctor",
     "Check the installation and say what to do; exit status 1 when something is wrong",
     "tallyctl doctor\n"
     "tallyctl doctor --report > report.txt",
     kOptions,
     {},
     doctor},
};

}  // namespace doctor_command

std::span<const Command> doctorCommands() {
  return doctor_command::kCommands;
}

}  // namespace ctl
