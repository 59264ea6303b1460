#include "statement_corpus.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "base/text.h"

namespace jet::test {

namespace {

FieldDef fieldOf(const std::string& text) {
  std::istringstream words(text);
  FieldDef field;
  std::string type;
  words >> field.name >> type;
  if (type == "auto") return {.name = field.name, .type = Type::Long, .autoIncrement = true};
  if (type == "memo") return {.name = field.name, .type = Type::Text, .size = 0};
  if (type == "long") return {.name = field.name, .type = Type::Long};
  if (type == "double") return {.name = field.name, .type = Type::Double};
  if (type == "date") return {.name = field.name, .type = Type::DateTime};
  if (type == "yesno") return {.name = field.name, .type = Type::Boolean};
  if (type == "text") return {.name = field.name, .type = Type::Text};
  throw std::runtime_error("no type of a field: " + text);
}

// "NAME: FIELD TYPE, ...; index FIELD FIELD"
TableDef tableOf(const std::string& text) {
  const std::size_t colon = text.find(':');
  TableDef table{.name = text.substr(0, colon), .fields = {}};
  const std::vector<std::string> parts = base::split(text.substr(colon + 1), ";", false);
  for (const std::string& field : base::split(parts.front(), ",", false)) table.fields.push_back(fieldOf(field));
  for (std::size_t i = 1; i < parts.size(); ++i) {
    std::istringstream words(parts[i]);
    std::string word;
    words >> word;
    IndexDef index;
    while (words >> word) index.fields.push_back(word);
    table.indexes.push_back(std::move(index));
  }
  return table;
}

}  // namespace

std::vector<CorpusStep> readCorpus(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::vector<CorpusStep> steps;
  std::string line;
  bool open = false;  // lines belong to the step before
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.starts_with("#") || (line.empty() && !open)) continue;
    if (line.empty()) {
      open = false;
    } else if (line.starts_with("table ")) {
      steps.push_back({.kind = CorpusStep::Kind::Table, .line = number, .table = tableOf(line.substr(6))});
    } else if (line.starts_with("! ") || line.starts_with("> ")) {
      const auto kind = line.front() == '!' ? CorpusStep::Kind::Change : CorpusStep::Kind::Select;
      steps.push_back({.kind = kind, .line = number, .table = {}, .statement = line.substr(2)});
      open = true;
    } else if (!open) {
      throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + line);
    } else if (line.starts_with("  ") && steps.back().rows.empty()) {
      steps.back().statement += " " + line.substr(2);
    } else if (line.starts_with("error ")) {
      steps.back().error = std::stoi(line.substr(6));
    } else {
      steps.back().rows.push_back(line);
    }
  }
  return steps;
}

}  // namespace jet::test
