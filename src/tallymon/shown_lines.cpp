#include "tallymon/shown_lines.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "capture/format/call_json.h"
#include "capture/format/format.h"
#include "tallymon/shown_call.h"

namespace tallymon {

namespace {

void printEvent(const nlohmann::ordered_json& json) {
  std::cout << json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
}

}  // namespace

ShownLines::ShownLines(const capture::SourceSite& source, Style style)
    : style_(style),
      reader_(capture::Parser(capture::FormatLibrary::standard().load(source.format), source.settings)) {}

void ShownLines::show(const capture::JournalEntry& entry) {
  if (entry.kind == capture::EntryKind::Line) {
    const std::string text = capture::escapeBytes(entry.bytes);
    if (style_ == Style::Json) {
      printEvent({{"event", "line"}, {"line", entry.position}, {"time", capture::utcText(entry.time)}, {"text", text}});
    } else {
      std::cout << text << std::endl;
    }
  }
  showResults(entry);
}

void ShownLines::showResults(const capture::JournalEntry& entry) {
  for (const capture::LineResult& result : reader_.read(entry)) {
    if (style_ == Style::Json) {
      auto json = nlohmann::ordered_json::parse(capture::lineJson(result, true));
      json["event"] = "result";
      printEvent(json);
    } else if (style_ == Style::LinesAndRecords) {
      for (const capture::Call& call : result.records) std::cout << "    " << callText(call) << std::endl;
      if (result.records.empty()) {
        std::cout << "    " << toText(result.outcome) << (result.reason.empty() ? "" : ": ") << result.reason
                  << std::endl;
      }
    }
  }
}

void ShownLines::settle(std::int64_t now) {
  const auto due = reader_.due();
  if (due && now >= *due * 1000) showResults({0, now, capture::EntryKind::Tick, {}, {}});
}

void ShownLines::connected(bool yes, const std::string& what) {
  if (connected_ == yes && connection_ == what) return;
  connected_ = yes;
  connection_ = what;
  if (style_ == Style::Json) {
    printEvent({{"event", "connection"}, {"connected", yes}, {"text", what}});
  } else if (!what.empty()) {
    std::cerr << (yes ? "-- " : "-- not connected: ") << what << std::endl;
  }
}

void ShownLines::lost(std::uint64_t bytes) {
  if (style_ == Style::Json) {
    printEvent({{"event", "lost"}, {"bytes", bytes}});
  } else {
    std::cerr << "-- " << bytes << " bytes lost" << std::endl;
  }
}

}  // namespace tallymon
