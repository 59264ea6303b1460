#include "capture/format/test_loader.h"

#include <limits>

#include "base/text.h"

namespace capture {

namespace {

// A record of a test; what is left out is empty, 0 or false.
Call loadCall(const toml::node& node) {
  TomlTable table(node);
  Call call;
  const std::string type = table.needText("type");
  if (type == "incoming") {
    call.direction = Direction::Incoming;
  } else if (type == "internal") {
    call.direction = Direction::Internal;
  } else if (type != "outgoing") {
    failAt(node, "the type is outgoing, incoming or internal");
  }
  const auto start = base::DateTime::fromStored(table.needText("start"));
  if (!start) failAt(node, "the start is written like \"2026-11-24 09:14:31\"");
  call.start = *start;
  call.extension = table.text("extension", "");
  call.trunk = table.text("trunk", "");
  call.number = table.text("number", "");
  call.durationSeconds = table.integer("duration").value_or(0);
  call.ringSeconds = table.integer("ring").value_or(0);
  call.account = table.text("account", "");
  call.redirected = table.flag("redirected", false);
  call.cd = table.text("cd", "");
  const std::int64_t pulses = table.integer("pulses").value_or(0);
  if (pulses < 0 || pulses > std::numeric_limits<std::int32_t>::max()) failAt(node, "the pulses are out of range");
  call.pulses = static_cast<std::int32_t>(pulses);
  table.done();
  return call;
}

FormatTest::Expected loadExpected(const toml::node& node) {
  FormatTest::Expected expected;
  if (node.is_string()) {
    const std::string text = textOf(node);
    for (const Outcome outcome :
         {Outcome::Part, Outcome::Heading, Outcome::Skipped, Outcome::Alarm, Outcome::Unknown}) {
      expected.outcome = outcome;
      if (text == toText(outcome)) return expected;
    }
    failAt(node, "'" + text + "' is none of part, heading, skipped, alarm, unknown");
  }
  expected.outcome = Outcome::Record;
  eachTable(node, [&](const toml::node& item) { expected.records.push_back(loadCall(item)); });
  return expected;
}

std::string settingText(const toml::node& node) {
  if (!node.is_array()) return textOf(node);
  std::string all;
  for (const std::string& text : textsOf(node)) all += (all.empty() ? "" : ",") + text;
  return all;
}

}  // namespace

FormatTest loadTest(const toml::node& node) {
  TomlTable table(node);
  FormatTest test;
  if (const auto lines = table.text("lines")) {
    test.lines = base::split(*lines, "\n", true);
    // The text ends with a line end.
    if (test.lines.size() > 1 && test.lines.back().empty()) test.lines.pop_back();
  } else {
    test.lines.push_back(table.needText("line"));
  }
  test.arrived = table.text("arrived", "2026-11-25 00:00:00");
  if (!base::DateTime::fromStored(test.arrived)) failAt(node, "'arrived' is written like \"2026-11-24 09:17:10\"");
  if (const toml::node* settings = table.find("set")) {
    for (const auto& [key, value] : TomlTable(*settings).all()) test.settings.emplace_back(key, settingText(*value));
  }
  const toml::node* gives = table.find("gives");
  if (gives == nullptr) failAt(node, "the key 'gives' is missing");
  const toml::array* list = gives->as_array();
  if (list != nullptr && table.find("lines") != nullptr) {
    for (const toml::node& item : *list) test.gives.push_back(loadExpected(item));
  } else {
    test.gives.push_back(loadExpected(*gives));
  }
  if (test.gives.size() != test.lines.size()) {
    failAt(node, "the test has " + std::to_string(test.lines.size()) + " lines and " +
                     std::to_string(test.gives.size()) + " results");
  }
  const auto& place = node.source();
  test.place = (place.path ? *place.path : std::string("format")) + ":" + std::to_string(place.begin.line);
  table.done();
  return test;
}

}  // namespace capture
