#include "capture/format/file_test.h"

#include <algorithm>

#include "capture/format/call_json.h"
#include "capture/format/definition.h"
#include "capture/format/parser.h"
#include "capture/format/zone.h"
#include "capture/framing/line_framer.h"

namespace capture {

namespace {

void append(std::vector<LineResult>& all, std::vector<LineResult> more) {
  std::move(more.begin(), more.end(), std::back_inserter(all));
}

void inLineOrder(std::vector<LineResult>& results) {
  std::sort(results.begin(), results.end(),
            [](const LineResult& left, const LineResult& right) { return left.position < right.position; });
}

void compare(const FormatTest& test, const std::vector<LineResult>& results, std::vector<std::string>& faults) {
  for (std::size_t i = 0; i < test.lines.size(); ++i) {
    LineResult expected;
    expected.position = i + 1;
    expected.outcome = test.gives[i].outcome;
    expected.records = test.gives[i].records;
    const std::string wanted = lineJson(expected, false);
    const std::string got = i < results.size() ? lineJson(results[i], false) : "nothing";
    if (wanted == got) continue;
    const std::string reason = i < results.size() && !results[i].reason.empty() ? " (" + results[i].reason + ")" : "";
    faults.push_back(test.place + ": " + test.lines[i] + "\n  expected " + wanted + "\n  got      " + got + reason);
  }
}

}  // namespace

void OutcomeCounts::add(Outcome outcome) {
  ++lines;
  ++byOutcome[static_cast<std::size_t>(outcome)];
}

std::vector<LineResult> readAll(std::istream& in, const std::shared_ptr<const Format>& format,
                                const SourceSettings& settings, std::chrono::sys_seconds arrived,
                                std::vector<std::string>* lines) {
  Parser parser(format, settings);
  LineFramer framer;
  std::vector<LineResult> results;
  std::uint64_t number = 0;
  const auto take = [&](FramedLine line) {
    append(results, parser.line(++number, line.text, arrived));
    if (lines != nullptr) lines->push_back(std::move(line.text));
  };
  std::string piece(std::size_t{1} << 16, '\0');
  while (in.read(piece.data(), static_cast<std::streamsize>(piece.size())) || in.gcount() > 0) {
    framer.feed(std::string_view(piece).substr(0, static_cast<std::size_t>(in.gcount())));
    while (auto line = framer.next()) take(std::move(*line));
  }
  if (auto line = framer.finish()) take(std::move(*line));
  append(results, parser.finish());
  inLineOrder(results);
  return results;
}

std::vector<std::string> checkFormat(const std::shared_ptr<const Format>& format, std::size_t& count) {
  std::vector<std::string> faults;
  for (const FormatTest& test : format->tests) {
    try {
      SourceSettings settings;
      for (const auto& [key, value] : test.settings) settings.set(key, value);
      const auto arrived = arrivalOf(test.arrived, settings);
      Parser parser(format, settings);
      std::vector<LineResult> results;
      for (std::size_t i = 0; i < test.lines.size(); ++i) append(results, parser.line(i + 1, test.lines[i], arrived));
      append(results, parser.finish());
      inLineOrder(results);
      compare(test, results, faults);
      count += test.lines.size();
    } catch (const SettingError& fault) {
      faults.push_back(test.place + ": " + fault.what());
    }
  }
  return faults;
}

std::chrono::sys_seconds arrivalOf(const std::string& text, const SourceSettings& settings) {
  const auto local = base::DateTime::fromStored(text);
  if (!local) throw SettingError("'" + text + "' is no time of arrival; it is written like \"2026-11-24 09:17:10\"");
  return Zone(settings.zone).toInstant(*local);
}

}  // namespace capture
