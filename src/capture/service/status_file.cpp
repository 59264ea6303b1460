#include "capture/service/status_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "capture/journal/journal_entry.h"

namespace capture {

namespace {

using nlohmann::ordered_json;

constexpr const char* kStatusFile = "status.json";

std::string timeOrEmpty(std::int64_t milliseconds) {
  return milliseconds == 0 ? std::string() : utcText(milliseconds);
}

ordered_json sourceJson(const CaptureSource& source) {
  const SourceState& state = source.state();
  const SourceCounts& counts = state.counts;
  ordered_json json;
  json["id"] = source.site().id;
  json["format"] = source.site().format;
  json["transport"] = transportName(source.site().transport);
  json["connected"] = source.isConnected();
  json["state"] = source.connection();
  json["last_line"] = timeOrEmpty(state.lastLine);
  json["last_call"] = state.lastCall;
  json["lines"] = counts.lines;
  json["records"] = counts.recordLines;
  json["calls"] = counts.calls;
  json["internal"] = counts.internal;
  json["parts"] = counts.parts;
  json["headings"] = counts.headings;
  json["skipped"] = counts.skipped;
  json["repeats"] = counts.repeats;
  json["alarms"] = counts.alarms;
  json["unknown"] = counts.unknown;
  json["unknown_today"] = state.unknownToday;
  json["waiting"] = counts.lines - counts.recordLines - counts.parts - counts.headings - counts.skipped -
                    counts.alarms - counts.unknown;
  json["lost_bytes"] = source.watched().lostBytes();
  json["connections"] = source.watched().reconnects();
  return json;
}

// "last call 09:14, 3 unknown lines"
std::string summaryOf(const std::vector<std::shared_ptr<CaptureSource>>& sources, std::size_t alarms) {
  std::string lastCall;
  std::int64_t unknown = 0;
  for (const auto& source : sources) {
    lastCall = std::max(lastCall, source->state().lastCall);
    unknown += source->state().unknownToday;
  }
  std::string text = lastCall.size() < 16 ? "no call yet" : "last call " + lastCall.substr(11, 5);
  if (unknown > 0) text += ", " + std::to_string(unknown) + (unknown == 1 ? " unknown line" : " unknown lines");
  if (alarms > 0) text += ", " + std::to_string(alarms) + (alarms == 1 ? " alarm" : " alarms");
  return text;
}

}  // namespace

std::string statusText(const std::vector<std::shared_ptr<CaptureSource>>& sources, const Spool& spool,
                       const std::vector<Alarm>& alarms, std::int64_t now) {
  ordered_json json;
  json["version"] = 1;
  json["time"] = utcText(now);
  json["summary"] = summaryOf(sources, alarms.size());
  json["sources"] = ordered_json::array();
  for (const auto& source : sources) json["sources"].push_back(sourceJson(*source));
  const Spool::Untaken untaken = spool.untaken();
  json["spool"] = {{"files", untaken.files}, {"oldest_seconds", untaken.oldestSeconds}};
  json["alarms"] = ordered_json::array();
  for (const Alarm& alarm : alarms) {
    json["alarms"].push_back(
        {{"source", alarm.source}, {"event", alarm.event}, {"text", alarm.text}, {"since", utcText(alarm.since)}});
  }
  return json.dump(1, ' ', false, ordered_json::error_handler_t::replace) + '\n';
}

std::optional<ConnectionStatus> connectionOf(const std::filesystem::path& monitorFolder, const std::string& source) {
  std::ifstream in(monitorFolder / ".tallymon" / kStatusFile);
  const auto json = ordered_json::parse(std::string(std::istreambuf_iterator<char>(in), {}), nullptr, false);
  if (!json.is_object() || !json.contains("sources")) return std::nullopt;
  for (const ordered_json& found : json["sources"]) {
    if (found.value("id", "") == source)
      return ConnectionStatus{found.value("connected", false), found.value("state", "")};
  }
  return std::nullopt;
}

// Not durably: a power cut takes what is said anew after a few seconds, and the loop shall not wait for the disk.
bool writeStatusFile(const Spool& spool, const std::string& text) {
  const std::filesystem::path file = spool.ownFolder() / kStatusFile;
  const std::filesystem::path temporary = spool.ownFolder() / "status.json.new";
  std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  std::error_code fault;
  if (out.good()) {
    ::chmod(temporary.c_str(), 0664);
    std::filesystem::rename(temporary, file, fault);
    if (!fault) return true;
  }
  std::filesystem::remove(temporary, fault);
  return false;
}

}  // namespace capture
