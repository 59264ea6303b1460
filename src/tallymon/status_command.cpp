#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "capture/deliver/state_store.h"
#include "capture/journal/journal_entry.h"
#include "capture/watch/times.h"
#include "tallymon/commands.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

using nlohmann::ordered_json;

constexpr std::int64_t kFresh = 60'000;  // milliseconds; the service writes every few seconds

ordered_json readStatus(const std::filesystem::path& file) {
  std::ifstream in(file);
  ordered_json json = ordered_json::parse(std::string(std::istreambuf_iterator<char>(in), {}), nullptr, false);
  if (!json.is_object()) json = ordered_json{{"sources", ordered_json::array()}, {"alarms", ordered_json::array()}};
  const auto written = capture::utcTime(json.value("time", ""));
  const std::int64_t age = written ? capture::nowMilliseconds() - *written : kFresh + 1;
  json["running"] = age >= -kFresh && age <= kFresh;
  return json;
}

void addUnknownLines(ordered_json& json, const capture::StateStore& state) {
  for (ordered_json& source : json["sources"]) {
    source["unknown_lines"] = ordered_json::array();
    for (const capture::UnknownLine& line : state.unknownLines(source.value("id", ""))) {
      source["unknown_lines"].push_back({{"position", line.position},
                                         {"time", capture::utcText(line.time)},
                                         {"line", line.text},
                                         {"reason", line.reason}});
    }
  }
}

std::string orNone(const std::string& text) {
  return text.empty() ? "none" : text;
}

void printSource(const ordered_json& source) {
  const auto count = [&](const char* key) { return std::to_string(source.value(key, std::int64_t{0})); };
  std::cout << "\nSource " << source.value("id", "") << " (" << source.value("format", "") << ", "
            << source.value("transport", "") << ")\n"
            << "  connection  " << (source.value("connected", false) ? "" : "none: ") << source.value("state", "")
            << '\n'
            << "  last line   " << orNone(source.value("last_line", "")) << '\n'
            << "  last call   " << orNone(source.value("last_call", "")) << '\n'
            << "  lines       " << count("lines") << ": " << count("records") << " with records, " << count("parts")
            << " parts, " << count("headings") << " headings, " << count("skipped") << " skipped (" << count("repeats")
            << " repeats), " << count("alarms") << " alarms, " << count("unknown") << " unknown, " << count("waiting")
            << " waiting\n"
            << "  calls       " << count("calls") << " handed over, " << count("internal") << " internal\n"
            << "  lost        " << count("lost_bytes") << " bytes, " << count("connections")
            << " connections since the start\n";
  for (const ordered_json& line : source["unknown_lines"]) {
    std::cout << "  unknown     " << line.value("time", "") << "  " << line.value("line", "") << "\n              "
              << line.value("reason", "") << '\n';
  }
}

void print(const ordered_json& json) {
  std::cout << (json.value("running", false) ? "tallymon runs" : "tallymon does not run; what it wrote last:") << '\n';
  std::cout << orNone(json.value("summary", "")) << '\n';
  if (json.contains("spool")) {
    const int files = json["spool"].value("files", 0);
    std::cout << files << (files == 1 ? " file waits" : " files wait") << " for Tallybook";
    if (files > 0) std::cout << ", the oldest for " << json["spool"].value("oldest_seconds", 0) << " s";
    std::cout << '\n';
  }
  for (const ordered_json& source : json["sources"]) printSource(source);
  for (const ordered_json& alarm : json["alarms"]) {
    std::cout << "\nAlarm " << alarm.value("event", "") << (alarm.value("source", "").empty() ? "" : " of ")
              << alarm.value("source", "") << " since " << alarm.value("since", "") << "\n  " << alarm.value("text", "")
              << '\n';
  }
}

int showStatus(const std::string& file, bool asJson) {
  const capture::Site site = capture::readSite(file);
  ordered_json json = readStatus(site.folder / ".tallymon" / "status.json");
  if (std::filesystem::exists(site.dataFolder / "state.db")) {
    addUnknownLines(json, capture::StateStore(site.dataFolder / "state.db"));
  }
  if (asJson) {
    std::cout << json.dump(1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
  } else {
    print(json);
  }
  return json.value("running", false) ? 0 : 1;
}

}  // namespace

void addStatus(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "status", "Show each source: its connection, last line and call, what became of its lines, and what is wrong.");
  const auto file = addSiteOption(*command);
  const auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "As JSON");
  command->footer("The exit status is 1 when tallymon does not run.\nExample: tallymon status --json");
  command->callback([file, json, &status] { status = showStatus(*file, *json); });
}

}  // namespace tallymon
