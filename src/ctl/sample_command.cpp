#include <filesystem>
#include <limits>

#include "base/printf.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "sample/call_file.h"

namespace ctl {

namespace sample_command {

constexpr const char* kDefaultLastDay = "2026-11-20";  // a Friday; fixed, so that a seed names one file for ever

int sampleCalls(const Invocation& call) {
  constexpr std::int64_t kMost = 100'000'000;
  sample::CallPlan plan;
  plan.count = call.arguments.integer("N", 0, 0, kMost);
  plan.seed =
      static_cast<std::uint64_t>(call.arguments.integer("--seed", 1, 0, std::numeric_limits<std::int64_t>::max()));
  plan.days = static_cast<int>(call.arguments.integer("--days", 30, 1, 3660));
  plan.lastDay = call.arguments.date("--until").value_or(*base::DateTime::fromStored(kDefaultLastDay));
  const std::filesystem::path file = call.arguments.text("--out");
  if (!sample::writeCalls(file, plan, call.arguments.has("--append"), call.context.person())) {
    throw Failure(base::format("%s cannot be written. Is the folder there, and is there room?", file.string()));
  }
  call.out << base::format("Wrote %d calls to %s\n", plan.count, file.string());
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "N", .help = "Number of calls", .required = true, .valueName = "COUNT"},
    {.name = "--out", .help = "File to write", .required = true, .valueName = "FILE"},
    {.name = "--seed", .help = "Equal seeds give equal files (default 1)", .valueName = "S"},
    {.name = "--until", .help = "Day of the latest calls (default 2026-11-20)", .valueName = "YYYY-MM-DD"},
    {.name = "--days", .help = "Length of the period (default 30)", .valueName = "D"},
    {.name = "--append", .takes = Takes::Nothing, .help = "Add to the file instead of replacing it"},
};

constexpr Command kCommands[] = {
    {"sample-calls",
     "Write a monitor file with calls of the sample exchange",
     "tallyctl sample-calls 5000 --out demo/monitor/monitor.data\n"
     "tallyctl sample-calls 1000000 --out big.data --seed 7 --days 365 --until 2026-06-30",
     kOptions,
     {},
     sampleCalls},
};

}  // namespace sample_command

std::span<const Command> sampleCommands() {
  return sample_command::kCommands;
}

}  // namespace ctl
