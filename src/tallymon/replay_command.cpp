#include <ctime>
#include <iostream>

#include "base/datetime.h"
#include "capture/service/replay.h"
#include "capture/watch/times.h"
#include "tallymon/commands.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

struct ReplayOptions {
  std::string source;
  std::string from;
  std::string to;
  std::string format;
  bool deliver = false;
};

// "2026-11-24" or "2026-11-24 09:14:31", local time, as milliseconds since 1970.
std::int64_t timeOf(const std::string& text) {
  const auto time = base::DateTime::fromStored(text);
  if (!time) throw std::runtime_error("\"" + text + "\" is no time; write it as \"2026-11-24 09:14:31\"");
  const base::DateTime::Parts parts = time->parts();
  std::tm local{};
  local.tm_year = parts.year - 1900;
  local.tm_mon = parts.month - 1;
  local.tm_mday = parts.day;
  local.tm_hour = parts.hour;
  local.tm_min = parts.minute;
  local.tm_sec = parts.second;
  local.tm_isdst = -1;
  return std::int64_t{std::mktime(&local)} * 1000;
}

std::string shown(const capture::LineResult& result) {
  if (result.records.empty())
    return std::string(toText(result.outcome)) + (result.reason.empty() ? "" : ": " + result.reason);
  std::string text;
  for (const capture::Call& call : result.records) {
    text += std::string(text.empty() ? "" : "; ") + toText(call.direction) + " " + call.start.stored() + " extension " +
            call.extension + " trunk " + call.trunk + " number " + call.number + " " +
            std::to_string(call.durationSeconds) + " s" + (call.account.empty() ? "" : " account " + call.account) +
            (call.cd.empty() ? "" : " " + call.cd);
  }
  return text;
}

int replay(const std::string& file, const ReplayOptions& options) {
  const capture::Site site = capture::readSite(file);
  const capture::SourceSite& source = sourceOf(site, options.source);
  const std::string format = options.format.empty() ? source.format : options.format;
  const std::int64_t to = options.to.empty() ? capture::nowMilliseconds() : timeOf(options.to);
  capture::StateStore state(site.dataFolder / "state.db");
  const capture::Replay result = capture::replayLines(site, source, format, timeOf(options.from), to, state);
  for (const capture::ReplayedLine& line : result.differences) {
    std::cout << (line.isNew ? "+ " : "~ ") << line.position << "  " << line.text << "\n    was " << shown(line.before)
              << "\n    now " << shown(line.after) << '\n';
  }
  std::cout << result.lines << " lines, " << result.newLines << " of them without a record so far that give one now.\n";
  if (!options.deliver) {
    if (result.newLines > 0) std::cout << "Nothing was handed over; add --deliver to hand over those marked +.\n";
    return 0;
  }
  std::cout << capture::deliverReplay(site, source, format, result, state) << " calls handed over.\n";
  return 0;
}

}  // namespace

void addReplay(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "replay",
      "Read lines of the journal again with a mended format and show what differs; hand over what gave no record.");
  const auto file = addSiteOption(*command);
  const auto options = std::make_shared<ReplayOptions>();
  command->add_option("source", options->source, "Id of the source")->required();
  command->add_option("--from", options->from, "Arrived since, local time")->required()->type_name("TIME");
  command->add_option("--to", options->to, "Arrived until (default: now)")->type_name("TIME");
  command->add_option("--format", options->format, "Name or file of the format (default: the source's own)");
  command->add_flag("--deliver", options->deliver, "Hand over the lines that gave no record before, each once");
  command->footer("Example: tallymon replay main --from 2026-11-24 --format ./hicom-mended.toml --deliver");
  command->callback([file, options, &status] { status = replay(*file, *options); });
}

}  // namespace tallymon
