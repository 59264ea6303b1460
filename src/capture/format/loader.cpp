#include "capture/format/loader.h"

#include <re2/re2.h>
#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "capture/format/clean.h"
#include "capture/format/rule_loader.h"
#include "capture/format/source_settings.h"
#include "capture/format/test_loader.h"

namespace capture {

namespace {

char separatorOf(TomlTable& table, std::string_view key, std::string_view fallback) {
  const std::string text = table.text(key, fallback);
  if (text.size() != 1) failAt(*table.find(key), "a separator is one character");
  return text.front();
}

ColumnsLayout loadColumns(const toml::node& node, RuleLoader& rules) {
  ColumnsLayout layout;
  for (const auto& [name, place] : TomlTable(node).all()) {
    const std::string range = textOf(*place);
    ColumnsLayout::Column column;
    const char* end = range.data() + range.size();
    auto parsed = std::from_chars(range.data(), end, column.first);
    column.last = column.first;
    if (parsed.ec == std::errc() && parsed.ptr != end && *parsed.ptr == '-') {
      parsed = std::from_chars(parsed.ptr + 1, end, column.last);
    }
    const bool fits = parsed.ec == std::errc() && parsed.ptr == end && column.first >= 1 &&
                      column.first <= column.last && column.last <= 10000;
    if (!fits) failAt(*place, "columns are written like \"10-16\", counted from 1");
    column.field = rules.addField(name, *place);
    layout.columns.push_back(column);
  }
  std::sort(layout.columns.begin(), layout.columns.end(),
            [](const auto& left, const auto& right) { return left.first < right.first; });
  for (std::size_t i = 1; i < layout.columns.size(); ++i) {
    if (layout.columns[i].first <= layout.columns[i - 1].last) failAt(node, "two columns overlap");
  }
  return layout;
}

CsvLayout loadCsv(const toml::node& node, RuleLoader& rules) {
  TomlTable table(node);
  CsvLayout layout;
  layout.separator = separatorOf(table, "separator", ",");
  for (const std::string& name : base::split(table.needText("fields"), " \n\t")) {
    layout.fields.push_back(name == "-" ? std::nullopt : std::optional(rules.addField(name, node)));
  }
  if (const toml::node* counts = table.find("counts")) {
    const toml::array* list = counts->as_array();
    if (list == nullptr) failAt(*counts, "'counts' is a list of numbers");
    for (const toml::node& count : *list) {
      const auto number = count.value_exact<std::int64_t>();
      if (!number || *number < 1) failAt(count, "a count is a number above 0");
      layout.counts.push_back(static_cast<std::size_t>(*number));
    }
  }
  table.done();
  return layout;
}

HeaderLayout loadHeader(const toml::node& node, RuleLoader& rules) {
  TomlTable table(node);
  HeaderLayout layout;
  layout.separator = separatorOf(table, "separator", ",");
  layout.first = table.needText("first");
  for (const std::string& name : base::split(table.needText("fields"), " \n\t")) {
    layout.fields.emplace_back(name, rules.addField(name, node));
  }
  table.done();
  return layout;
}

int groupOf(const re2::RE2& pattern, const std::string& name, const toml::node& place) {
  const auto found = pattern.NamedCapturingGroups().find(name);
  if (found == pattern.NamedCapturingGroups().end()) failAt(place, "the pattern has no group '" + name + "'");
  return found->second;
}

PatternLayout loadPattern(const toml::node& node, RuleLoader& rules) {
  TomlTable table(node);
  PatternLayout layout;
  // Long patterns are written in pieces.
  std::string whole;
  for (const std::string& piece : table.texts("line")) whole += piece;
  if (whole.empty()) failAt(node, "the key 'line' is missing");
  layout.pattern = rules.pattern(whole, *table.find("line"));
  std::string pairsGroup;
  if (const toml::node* pairs = table.find("pairs")) {
    TomlTable inner(*pairs);
    pairsGroup = inner.needText("group");
    PatternLayout::Pairs made;
    made.group = groupOf(*layout.pattern, pairsGroup, *pairs);
    made.between = separatorOf(inner, "between", ";");
    for (const std::string& name : base::split(inner.needText("fields"), " \n\t")) {
      made.fields.emplace_back(name, rules.addField(name, *pairs));
    }
    inner.done();
    layout.pairs = std::move(made);
  }
  for (const auto& [name, group] : layout.pattern->NamedCapturingGroups()) {
    if (name != pairsGroup) layout.groups.emplace_back(group, rules.addField(name, node));
  }
  table.done();
  return layout;
}

JsonLayout loadJson(const toml::node& node, RuleLoader& rules) {
  JsonLayout layout;
  for (const auto& [name, place] : TomlTable(node).all()) {
    std::vector<std::string> pointers = textsOf(*place);
    for (const std::string& pointer : pointers) {
      try {
        static_cast<void>(nlohmann::json::json_pointer(pointer));
      } catch (const nlohmann::json::exception&) {
        failAt(*place, "'" + pointer + "' is no JSON pointer; they are written like \"/variables/uuid\"");
      }
    }
    layout.fields.emplace_back(rules.addField(name, *place), std::move(pointers));
  }
  return layout;
}

BlockLayout loadBlock(const toml::node& node, RuleLoader& rules) {
  TomlTable table(node);
  BlockLayout layout;
  const std::string style = table.needText("style");
  if (style != "colon" && style != "equals") failAt(*table.find("style"), "the style is \"colon\" or \"equals\"");
  layout.colon = style == "colon";
  layout.ignored = table.texts("ignored");
  if (const auto stamp = table.text("stamp")) layout.stamp = rules.addField(*stamp, *table.find("stamp"));
  const toml::node* fields = table.find("fields");
  if (fields == nullptr) failAt(node, "the key 'fields' is missing");
  for (const auto& [name, place] : TomlTable(*fields).all()) {
    layout.fields.emplace_back(textOf(*place), rules.addField(name, *place));
  }
  table.done();
  return layout;
}

Layout loadLayout(TomlTable& root, RuleLoader& rules) {
  std::optional<Layout> layout;
  const auto take = [&](std::string_view kind, auto load) {
    const toml::node* node = root.find(kind);
    if (node == nullptr) return;
    if (layout) failAt(*node, "a format has one layout only: columns, csv, header, pattern, json or block");
    layout = load(*node, rules);
  };
  take("columns", loadColumns);
  take("csv", loadCsv);
  take("header", loadHeader);
  take("pattern", loadPattern);
  take("json", loadJson);
  take("block", loadBlock);
  if (!layout) failAt(root.node(), "the layout is missing: columns, csv, header, pattern, json or block");
  return *layout;
}

void loadLines(TomlTable& root, RuleLoader& rules, LineRules& lines) {
  const toml::node* node = root.find("lines");
  if (node == nullptr) return;
  TomlTable table(*node);
  lines.skip = rules.patterns(table, "skip");
  lines.part = rules.patterns(table, "part");
  if (const toml::node* alarms = table.find("alarm")) {
    eachTable(*alarms, [&](const toml::node& item) {
      TomlTable alarm(item);
      lines.alarm.emplace_back(rules.pattern(alarm.needText("pattern"), item), alarm.needText("why"));
      alarm.done();
    });
  }
  if (const toml::node* sequence = table.find("sequence")) {
    TomlTable rule(*sequence);
    lines.sequence = {rules.pattern(rule.needText("pattern"), *sequence), rule.integer("last").value_or(0)};
    if (lines.sequence->pattern->NumberOfCapturingGroups() != 1)
      failAt(*sequence, "the pattern needs one group: the number");
    if (lines.sequence->last < 1) failAt(*sequence, "\"last\" must be the number that 0 follows");
    rule.done();
  }
  if (const toml::node* headings = table.find("heading")) {
    eachTable(*headings, [&](const toml::node& item) {
      TomlTable heading(item);
      HeadingRule rule;
      rule.pattern = rules.pattern(heading.needText("pattern"), item);
      if (rule.pattern->NumberOfCapturingGroups() != 1) failAt(item, "the pattern needs one group: the date");
      rule.forms = rules.timeForms(heading);
      heading.done();
      lines.headings.push_back(std::move(rule));
    });
  }
  table.done();
}

DirectionRule::Is directionOf(const toml::node& node) {
  const std::string text = textOf(node);
  if (text == "outgoing") return DirectionRule::Is::Outgoing;
  if (text == "incoming") return DirectionRule::Is::Incoming;
  if (text == "internal") return DirectionRule::Is::Internal;
  if (text == "both") return DirectionRule::Is::Both;
  if (text == "before") return DirectionRule::Is::AsBefore;
  failAt(node, "a direction is one of outgoing, incoming, internal, both, before");
}

Outcome rowOutcome(const toml::node& node) {
  const std::string text = textOf(node);
  for (const Outcome outcome : {Outcome::Skipped, Outcome::Part, Outcome::Alarm, Outcome::Unknown}) {
    if (text == toText(outcome)) return outcome;
  }
  failAt(node, "a row is one of skipped, part, alarm, unknown");
}

const toml::node& need(TomlTable& table, std::string_view key) {
  const toml::node* node = table.find(key);
  if (node == nullptr) failAt(table.node(), "the key '" + std::string(key) + "' is missing");
  return *node;
}

void loadRules(TomlTable& root, RuleLoader& rules, Format& format) {
  TomlTable table(need(root, "rules"));
  if (const toml::node* rows = table.find("rows")) {
    eachTable(*rows, [&](const toml::node& item) {
      TomlTable row(item);
      RowRule rule;
      rule.outcome = rowOutcome(need(row, "is"));
      rule.when = rules.condition(need(row, "when"));
      rule.why = row.needText("why");
      rule.timed = row.flag("timed", false);
      row.done();
      format.rows.push_back(std::move(rule));
    });
  }
  format.required = rules.condition(table, "required");
  eachTable(need(table, "direction"), [&](const toml::node& item) {
    TomlTable direction(item);
    DirectionRule rule;
    rule.is = directionOf(need(direction, "is"));
    const toml::node* when = direction.find("when");
    if (when != nullptr) {
      rule.when = rules.condition(*when);
    } else {
      rule.when.alternatives.emplace_back();
    }
    direction.done();
    format.directions.push_back(std::move(rule));
  });
  format.before = rules.optionalField(table, "before");
  const bool asks = std::any_of(format.directions.begin(), format.directions.end(),
                                [](const auto& rule) { return rule.is == DirectionRule::Is::AsBefore; });
  if (asks && !format.before) failAt(table.node(), "direction \"before\" needs the key 'before': the field to compare");
  table.done();
}

void loadTimes(TomlTable& root, RuleLoader& rules, TimeRules& times) {
  TomlTable table(need(root, "times"));
  const std::string is = table.text("is", "start");
  if (is != "start" && is != "end") failAt(*table.find("is"), "the time is \"start\" or \"end\"");
  times.is = is == "end" ? TimeRules::Is::End : TimeRules::Is::Start;
  times.utc = table.flag("utc", false);
  const std::string year = table.text("year", "nearest");
  if (year != "nearest" && year != "heading") failAt(*table.find("year"), "the year is \"nearest\" or \"heading\"");
  times.year = year == "heading" ? TimeRules::Year::Heading : TimeRules::Year::Nearest;
  times.date = rules.clockField(table, "date");
  times.time = rules.clockField(table, "time");
  times.begin = rules.clockField(table, "begin");
  times.answer = rules.clockField(table, "answer");
  times.end = rules.clockField(table, "end");
  times.stamp = rules.clockField(table, "stamp");
  times.lastDate = rules.condition(table, "last_date");
  times.duration = rules.durationField(table, "duration");
  times.ring = rules.durationField(table, "ring");
  times.total = rules.durationField(table, "total");
  if (times.time.has_value() == times.begin.has_value()) {
    failAt(table.node(), "the times need either 'time' (and 'date') or 'begin'");
  }
  table.done();
}

PartyRules loadParties(TomlTable& root, RuleLoader& rules, std::string_view section, bool trunk) {
  PartyRules parties;
  const toml::node* node = root.find(section);
  if (node == nullptr) return parties;
  TomlTable table(*node);
  parties.extension = rules.value(table, "extension");
  if (trunk) parties.trunk = rules.value(table, "trunk");
  parties.number = rules.value(table, "number");
  table.done();
  return parties;
}

void loadCall(TomlTable& root, RuleLoader& rules, Format& format) {
  const toml::node* node = root.find("call");
  if (node == nullptr) return;
  TomlTable table(*node);
  format.account = rules.value(table, "account");
  format.cd = rules.value(table, "cd");
  format.pulses = rules.value(table, "pulses");
  format.forwarder = rules.value(table, "forwarder");
  table.done();
}

void loadMarks(TomlTable& root, RuleLoader& rules, Marks& marks) {
  const toml::node* node = root.find("marks");
  if (node == nullptr) return;
  TomlTable table(*node);
  marks.unanswered = rules.condition(table, "unanswered");
  marks.ringIsDuration = rules.condition(table, "ring_is_duration");
  marks.busy = rules.condition(table, "busy");
  marks.failed = rules.condition(table, "failed");
  marks.voicemail = rules.condition(table, "voicemail");
  marks.conference = rules.condition(table, "conference");
  marks.forwarded = rules.condition(table, "forwarded");
  marks.transferred = rules.condition(table, "transferred");
  marks.redirects = table.flag("redirects", true);
  table.done();
}

void loadMerging(TomlTable& root, RuleLoader& rules, Format& format) {
  if (const toml::node* node = root.find("id")) {
    TomlTable table(*node);
    format.repeatId = rules.fields(table, "repeat");
    format.onceId = rules.optionalField(table, "once");
    table.done();
  }
  if (const toml::node* node = root.find("group")) {
    TomlTable table(*node);
    format.group.key = rules.needField(table, "key");
    try {
      format.group.window = parseWindow(table.text("window", "10 min"));
    } catch (const SettingError& fault) {
      failAt(*node, fault.what());
    }
    table.done();
  }
  if (const toml::node* node = root.find("parts")) {
    TomlTable table(*node);
    format.parts.key = rules.fields(table, "key");
    format.parts.chain = table.flag("chain", false);
    format.parts.pauses = rules.fields(table, "pauses");
    table.done();
  }
  if (const toml::node* node = root.find("pieces")) {
    TomlTable table(*node);
    PieceRules pieces;
    pieces.when = rules.condition(need(table, "when"));
    pieces.seconds = table.integer("seconds").value_or(0);
    pieces.same = rules.fields(table, "same");
    table.done();
    format.pieces = std::move(pieces);
  }
  if (const toml::node* node = root.find("pair")) {
    TomlTable table(*node);
    PairRules pair;
    pair.answer = rules.condition(need(table, "answer"));
    pair.end = rules.condition(need(table, "end"));
    pair.key = rules.needField(table, "key");
    pair.ends = rules.fields(table, "ends");
    pair.time = rules.needField(table, "time");
    table.done();
    format.pair = std::move(pair);
  }
}

}  // namespace

std::shared_ptr<const Format> loadFormat(const toml::table& table) {
  auto format = std::make_shared<Format>();
  RuleLoader rules(*format);
  TomlTable root(table);
  format->name = root.needText("name");
  format->title = root.text("title", format->name);
  format->encoding = root.text("encoding", "cp1252");
  if (!codepageByName(format->encoding)) failAt(*root.find("encoding"), "'" + format->encoding + "' is no code page");
  static_cast<void>(root.find("extends"));

  format->layout = loadLayout(root, rules);
  if (const toml::node* derive = root.find("derive")) {
    for (const auto& [name, node] : TomlTable(*derive).all()) {
      Value value = rules.value(*node);
      format->derived.emplace_back(rules.addField(name, *node), std::move(value));
    }
  }
  loadLines(root, rules, format->lines);
  loadRules(root, rules, *format);
  loadTimes(root, rules, format->times);
  format->outgoing = loadParties(root, rules, "outgoing", true);
  format->incoming = loadParties(root, rules, "incoming", true);
  format->internal = loadParties(root, rules, "internal", false);
  loadCall(root, rules, *format);
  loadMarks(root, rules, format->marks);
  loadMerging(root, rules, *format);
  if (const toml::node* tests = root.find("test")) {
    eachTable(*tests, [&](const toml::node& node) { format->tests.push_back(loadTest(node)); });
  }
  root.done();
  return format;
}

}  // namespace capture
