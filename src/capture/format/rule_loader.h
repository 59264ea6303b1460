#pragma once

#include <string>
#include <vector>

#include "capture/format/definition.h"
#include "capture/format/toml_table.h"

namespace capture {

// The parts that all sections of a format file are made of. Fields are known by name: a name that the layout does not
// have is a fault.
class RuleLoader {
 public:
  explicit RuleLoader(Format& format) : format_(format) {}

  // A new field; a fault when the name is taken, or is none.
  FieldIndex addField(const std::string& name, const toml::node& place);
  [[nodiscard]] FieldIndex field(const std::string& name, const toml::node& place) const;
  [[nodiscard]] std::optional<FieldIndex> optionalField(TomlTable& table, std::string_view key) const;
  [[nodiscard]] FieldIndex needField(TomlTable& table, std::string_view key) const;
  // One name, or a list of them.
  [[nodiscard]] std::vector<FieldIndex> fields(TomlTable& table, std::string_view key) const;

  [[nodiscard]] Pattern pattern(const std::string& text, const toml::node& place) const;
  [[nodiscard]] std::vector<Pattern> patterns(TomlTable& table, std::string_view key) const;

  // { field = "value", other = ["a", "b"], third = { pattern = '...' } }, or a list of such tables.
  [[nodiscard]] Condition condition(const toml::node& node) const;
  [[nodiscard]] Condition condition(TomlTable& table, std::string_view key) const;
  // "field", { of = "field", match = '...', when = { ... } }, or a list of them.
  [[nodiscard]] Value value(const toml::node& node) const;
  [[nodiscard]] Value value(TomlTable& table, std::string_view key) const;

  [[nodiscard]] std::vector<TimeForm> timeForms(TomlTable& table) const;
  [[nodiscard]] std::optional<ClockField> clockField(TomlTable& table, std::string_view key) const;
  [[nodiscard]] std::optional<DurationField> durationField(TomlTable& table, std::string_view key) const;

 private:
  [[nodiscard]] FieldTest fieldTest(const std::string& name, const toml::node& node) const;
  [[nodiscard]] ValueSource valueSource(const toml::node& node) const;

  Format& format_;
};

}  // namespace capture
