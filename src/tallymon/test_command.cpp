#include <chrono>
#include <fstream>
#include <iostream>
#include <memory>

#include "base/printf.h"
#include "capture/format/call_json.h"
#include "capture/format/definition.h"
#include "capture/format/file_test.h"
#include "tallymon/commands.h"
#include "tallymon/line_file.h"
#include "tallymon/shown_call.h"

namespace tallymon {

namespace {

struct TestOptions {
  std::string format;
  std::string file;
  bool all = false;
  bool json = false;
  std::string arrived;
  std::vector<std::string> settings;
};

// Records and unknown lines, or every line; then the counts.
void printText(const std::vector<capture::LineResult>& results, const std::vector<std::string>& lines, bool all,
               const capture::OutcomeCounts& counts) {
  using capture::Outcome;
  for (const capture::LineResult& result : results) {
    const std::string number = base::format("%6u  ", result.position);
    for (const capture::Call& call : result.records) std::cout << number << callText(call) << '\n';
    if (result.outcome == Outcome::Record) continue;
    if (!all && result.outcome != Outcome::Unknown && result.outcome != Outcome::Alarm) continue;
    std::cout << number << base::format("%-8s %s", capture::toText(result.outcome), result.reason) << '\n';
    std::cout << "        " << visibleText(lines[result.position - 1]) << '\n';
  }
  std::cout << base::format("%u lines: %u with records, %u parts, %u headings, %u skipped, %u alarms, %u unknown",
                            counts.lines, counts.of(Outcome::Record), counts.of(Outcome::Part),
                            counts.of(Outcome::Heading), counts.of(Outcome::Skipped), counts.of(Outcome::Alarm),
                            counts.of(Outcome::Unknown))
            << '\n';
}

void run(const TestOptions& options, int& status) {
  const auto format = capture::FormatLibrary::standard().load(options.format);
  const capture::SourceSettings settings = settingsOf(options.settings);
  const auto arrived = arrivalOrNow(options.arrived, settings);
  LineFile file(options.file);
  std::vector<std::string> lines;
  const auto results = capture::readAll(file.stream(), format, settings, arrived, &lines);
  capture::OutcomeCounts counts;
  for (const capture::LineResult& result : results) counts.add(result.outcome);
  if (options.json) {
    for (const capture::LineResult& result : results) std::cout << capture::lineJson(result, false) << '\n';
  } else {
    printText(results, lines, options.all, counts);
    for (const std::string& doubt : doubts(lines, format, settings, arrived)) std::cerr << "note: " << doubt << '\n';
  }
  std::cout.flush();
  status = counts.of(capture::Outcome::Unknown) > 0 ? 1 : 0;
}

}  // namespace

void addTest(CLI::App& program, int& status) {
  auto options = std::make_shared<TestOptions>();
  CLI::App* command =
      program.add_subcommand("test", "How each line of a file is read: the record it gives, or why not.");
  command->add_option("format", options->format, "Name of a format (see `tallymon formats`) or a .toml file")
      ->required();
  command->add_option("file", options->file, "Lines of the exchange; - reads standard input")->required();
  command->add_flag("--all", options->all, "Show skipped lines, headings and parts too");
  command->add_flag("--json", options->json, "One JSON object a line");
  command->add_option("--arrived", options->arrived,
                      "When the lines came, \"YYYY-MM-DD HH:MM:SS\" in the source's zone (default: now); gives missing "
                      "years and dates");
  command->add_option("--set", options->settings, "KEY=VALUE of the source, as in the site file; may be given again")
      ->take_all()
      ->allow_extra_args(false);
  command->footer(
      "Exit status 1 when a line is unknown.\n"
      "Example: tallymon test panasonic lines.txt --set date_order=dmy --set strip_access=9,0");
  command->callback([options, &status] { run(*options, status); });
}

}  // namespace tallymon
