#include "capture/format/rule_loader.h"

#include <algorithm>
#include <stdexcept>

namespace capture {

namespace {

bool isName(const std::string& name) {
  return !name.empty() && name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-") ==
                              std::string::npos;
}

}  // namespace

FieldIndex RuleLoader::addField(const std::string& name, const toml::node& place) {
  auto& names = format_.fieldNames;
  if (!isName(name)) failAt(place, "'" + name + "' is no name of a field");
  if (std::find(names.begin(), names.end(), name) != names.end())
    failAt(place, "the field '" + name + "' is there twice");
  names.push_back(name);
  return names.size() - 1;
}

FieldIndex RuleLoader::field(const std::string& name, const toml::node& place) const {
  const auto& names = format_.fieldNames;
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) failAt(place, "the lines have no field '" + name + "'");
  return static_cast<FieldIndex>(found - names.begin());
}

std::optional<FieldIndex> RuleLoader::optionalField(TomlTable& table, std::string_view key) const {
  const toml::node* node = table.find(key);
  if (node == nullptr) return std::nullopt;
  return field(textOf(*node), *node);
}

FieldIndex RuleLoader::needField(TomlTable& table, std::string_view key) const {
  const auto found = optionalField(table, key);
  if (!found) failAt(table.node(), "the key '" + std::string(key) + "' is missing");
  return *found;
}

std::vector<FieldIndex> RuleLoader::fields(TomlTable& table, std::string_view key) const {
  std::vector<FieldIndex> found;
  const toml::node* node = table.find(key);
  if (node == nullptr) return found;
  for (const std::string& name : textsOf(*node)) found.push_back(field(name, *node));
  return found;
}

Pattern RuleLoader::pattern(const std::string& text, const toml::node& place) const {
  try {
    return makePattern(text);
  } catch (const std::invalid_argument& fault) {
    failAt(place, fault.what());
  }
}

std::vector<Pattern> RuleLoader::patterns(TomlTable& table, std::string_view key) const {
  std::vector<Pattern> all;
  const toml::node* node = table.find(key);
  if (node == nullptr) return all;
  for (const std::string& text : textsOf(*node)) all.push_back(pattern(text, *node));
  return all;
}

FieldTest RuleLoader::fieldTest(const std::string& name, const toml::node& node) const {
  FieldTest test;
  test.field = field(name, node);
  if (!node.is_table()) {
    test.values = textsOf(node);
    return test;
  }
  TomlTable table(node);
  if (const toml::node* text = table.find("pattern")) {
    test.kind = FieldTest::Kind::Fits;
    test.pattern = pattern(textOf(*text), *text);
  } else if (table.find("not") != nullptr) {
    test.kind = FieldTest::Kind::NoneOf;
    test.values = table.texts("not");
  } else if (table.find("blank") != nullptr) {
    test.kind = table.flag("blank", true) ? FieldTest::Kind::Blank : FieldTest::Kind::NotBlank;
  } else if (const toml::node* other = table.find("differs")) {
    test.kind = FieldTest::Kind::Differs;
    test.other = field(textOf(*other), *other);
  } else if (const auto is = table.text("is")) {
    if (*is != "trunk" && *is != "extension") failAt(node, "'is' knows \"trunk\" and \"extension\" here");
    test.kind = *is == "trunk" ? FieldTest::Kind::IsTrunk : FieldTest::Kind::IsExtension;
  } else {
    failAt(node, "a test is one of pattern, not, blank, differs, is");
  }
  table.done();
  return test;
}

Condition RuleLoader::condition(const toml::node& node) const {
  Condition condition;
  eachTable(node, [&](const toml::node& item) {
    std::vector<FieldTest> tests;
    for (const auto& [name, test] : TomlTable(item).all()) tests.push_back(fieldTest(name, *test));
    condition.alternatives.push_back(std::move(tests));
  });
  return condition;
}

Condition RuleLoader::condition(TomlTable& table, std::string_view key) const {
  const toml::node* node = table.find(key);
  return node == nullptr ? Condition() : condition(*node);
}

ValueSource RuleLoader::valueSource(const toml::node& node) const {
  ValueSource source;
  if (!node.is_table()) {
    source.field = field(textOf(node), node);
    return source;
  }
  TomlTable table(node);
  source.field = optionalField(table, "of");
  source.text = table.text("text", "");
  source.patterns = patterns(table, "match");
  if (const toml::node* when = table.find("when")) source.when = condition(*when);
  source.drop = table.text("drop", "");
  source.hidden = table.text("hidden", "");
  if (source.field.has_value() == !source.text.empty()) failAt(node, "a value is either 'of' a field or a 'text'");
  table.done();
  return source;
}

Value RuleLoader::value(const toml::node& node) const {
  Value value;
  if (const toml::array* list = node.as_array()) {
    for (const toml::node& item : *list) value.sources.push_back(valueSource(item));
  } else {
    value.sources.push_back(valueSource(node));
  }
  return value;
}

Value RuleLoader::value(TomlTable& table, std::string_view key) const {
  const toml::node* node = table.find(key);
  return node == nullptr ? Value() : value(*node);
}

std::vector<TimeForm> RuleLoader::timeForms(TomlTable& table) const {
  std::vector<TimeForm> forms;
  for (const std::string& text : table.texts("form")) {
    try {
      forms.emplace_back(text);
    } catch (const std::invalid_argument& fault) {
      failAt(*table.find("form"), fault.what());
    }
  }
  if (forms.empty()) failAt(table.node(), "the key 'form' is missing");
  return forms;
}

std::optional<ClockField> RuleLoader::clockField(TomlTable& table, std::string_view key) const {
  const toml::node* node = table.find(key);
  if (node == nullptr) return std::nullopt;
  TomlTable inner(*node);
  ClockField clock;
  clock.field = needField(inner, "of");
  clock.forms = timeForms(inner);
  inner.done();
  return clock;
}

std::optional<DurationField> RuleLoader::durationField(TomlTable& table, std::string_view key) const {
  const toml::node* node = table.find(key);
  if (node == nullptr) return std::nullopt;
  TomlTable inner(*node);
  DurationField duration;
  duration.field = needField(inner, "of");
  for (const std::string& name : inner.texts("form")) {
    const auto form = durationForm(name);
    if (!form) {
      failAt(*node, "the form of a duration is one of hh:mm:ss, hh:mm'ss, m'ss, mm:ss, seconds, S=seconds, ms, hmmt");
    }
    duration.forms.push_back(*form);
  }
  if (duration.forms.empty()) failAt(*node, "the key 'form' is missing");
  duration.blanks = inner.texts("blank");
  inner.done();
  return duration;
}

}  // namespace capture
