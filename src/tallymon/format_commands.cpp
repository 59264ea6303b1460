// guess, formats and check.

#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/printf.h"
#include "capture/format/definition.h"
#include "capture/format/file_test.h"
#include "tallymon/commands.h"
#include "tallymon/line_file.h"

namespace tallymon {

namespace {

using capture::FormatLibrary;
using capture::Outcome;

// Enough to tell a format; a file of years needs no more.
constexpr std::size_t kGuessBytes = std::size_t{4} << 20;

struct Guess {
  std::shared_ptr<const capture::Format> format;
  capture::OutcomeCounts counts;
  // Lines that belong to calls, of those that are not skipped. A format that skips everything has none.
  [[nodiscard]] double share() const {
    const std::size_t told = counts.lines - counts.of(Outcome::Skipped);
    const std::size_t read = told - counts.of(Outcome::Unknown);
    return told == 0 || counts.of(Outcome::Record) == 0 ? 0 : static_cast<double>(read) / static_cast<double>(told);
  }
};

void printJson(const nlohmann::ordered_json& json) {
  std::cout << json.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

// The formats that read something of the file, the best first; `lines` gets its lines.
std::vector<Guess> guessesOf(const std::string& name, const capture::SourceSettings& settings,
                             std::vector<std::string>& lines) {
  LineFile file(name);
  std::string text(kGuessBytes, '\0');
  file.stream().read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.stream().gcount()));
  capture::SourceSettings assumed = settings;
  if (assumed.extensions.empty()) assumed.extensions = "\\d{2,6}";
  const auto arrived = arrivalOrNow("", settings);
  const FormatLibrary library = FormatLibrary::standard();
  std::vector<Guess> guesses;
  for (const std::string& format : library.names()) {
    try {
      Guess made{library.load(format), {}};
      std::istringstream stream(text);
      lines.clear();
      for (const auto& result : capture::readAll(stream, made.format, assumed, arrived, &lines)) {
        made.counts.add(result.outcome);
      }
      if (made.share() > 0) guesses.push_back(std::move(made));
    } catch (const capture::FormatError& fault) {
      std::cerr << "tallymon: left out: " << fault.what() << '\n';
    }
  }
  std::stable_sort(guesses.begin(), guesses.end(),
                   [](const Guess& left, const Guess& right) { return left.share() > right.share(); });
  return guesses;
}

void guess(const std::string& name, const std::vector<std::string>& sets, bool asJson, int& status) {
  const capture::SourceSettings settings = settingsOf(sets);
  const auto arrived = arrivalOrNow("", settings);
  std::vector<std::string> lines;
  const auto guesses = guessesOf(name, settings, lines);
  auto json = nlohmann::ordered_json::array();
  for (const Guess& made : guesses) {
    const auto open = doubts(lines, made.format, settings, arrived);
    json.push_back({{"format", made.format->name},
                    {"title", made.format->title},
                    {"share", made.share()},
                    {"unknown", made.counts.of(Outcome::Unknown)},
                    {"doubts", open}});
    if (asJson) continue;
    std::cout << base::format("%5.1f %%  %-16s %s", made.share() * 100, made.format->name, made.format->title) << '\n';
    for (const std::string& doubt : open) std::cout << "         " << doubt << '\n';
  }
  if (asJson) printJson(json);
  if (!guesses.empty()) return;
  std::cerr << "tallymon: no format reads these lines. See docs/exchanges.md for how to describe an exchange of your "
               "own.\n";
  status = 1;
}

void listFormats(bool asJson) {
  const FormatLibrary library = FormatLibrary::standard();
  auto json = nlohmann::ordered_json::array();
  for (const std::string& name : library.names()) {
    std::string title;
    try {
      const auto format = library.load(name);
      title = format->title;
      json.push_back({{"name", name},
                      {"title", title},
                      {"trunks", format->asksTrunks()},
                      {"extensions", format->asksExtensions()},
                      {"date_order", format->hasDateOrder()}});
    } catch (const capture::FormatError& fault) {
      title = std::string("cannot be used: ") + fault.what();
      json.push_back({{"name", name}, {"fault", fault.what()}});
    }
    if (!asJson) std::cout << base::format("%-16s %s", name, title) << '\n';
  }
  if (asJson) printJson(json);
}

void check(const std::string& wanted, int& status) {
  const FormatLibrary library = FormatLibrary::standard();
  const std::vector<std::string> names = wanted.empty() ? library.names() : std::vector<std::string>{wanted};
  for (const std::string& name : names) {
    std::size_t count = 0;
    std::vector<std::string> faults;
    try {
      faults = capture::checkFormat(library.load(name), count);
    } catch (const capture::FormatError& fault) {
      faults.emplace_back(fault.what());
    }
    for (const std::string& fault : faults) std::cout << fault << '\n';
    std::cout << base::format("%-16s %u test lines, %u faults", name, count, faults.size()) << '\n';
    if (!faults.empty()) status = 1;
  }
}

}  // namespace

void addGuess(CLI::App& program, int& status) {
  auto file = std::make_shared<std::string>();
  auto sets = std::make_shared<std::vector<std::string>>();
  CLI::App* command =
      program.add_subcommand("guess", "Which format reads the lines of a file, and what stays in doubt.");
  command->add_option("file", *file, "Lines of the exchange; - reads standard input")->required();
  command->add_option("--set", *sets, "KEY=VALUE of the source; may be given again")
      ->take_all()
      ->allow_extra_args(false);
  auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "As JSON, the best format first");
  command->footer("Example: tallymon guess lines.txt");
  command->callback([file, sets, json, &status] { guess(*file, *sets, *json, status); });
}

void addFormats(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand("formats", "Lists the formats.");
  auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "As JSON, with the settings that each asks for");
  command->footer("Example: tallymon formats --json");
  command->callback([json, &status] {
    listFormats(*json);
    status = 0;
  });
}

void addCheck(CLI::App& program, int& status) {
  auto format = std::make_shared<std::string>();
  CLI::App* command = program.add_subcommand("check", "Runs the test lines inside of the format files.");
  command->add_option("format", *format, "Only this format, by name or file");
  command->footer("Exit status 1 when a file has a fault or a line gives another record than it should.");
  command->callback([format, &status] { check(*format, status); });
}

}  // namespace tallymon
