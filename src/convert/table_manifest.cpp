#include "convert/table_manifest.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/printf.h"
#include "convert/conversion_error.h"
#include "schema/database_place.h"

namespace convert {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::pair<jet::Type, const char*> kTypes[] = {
    {jet::Type::Boolean, "boolean"}, {jet::Type::Long, "long"},         {jet::Type::Double, "double"},
    {jet::Type::Text, "text"},       {jet::Type::DateTime, "datetime"},
};

const char* nameOf(jet::Type type) {
  const auto* found =
      std::find_if(std::begin(kTypes), std::end(kTypes), [&](const auto& t) { return t.first == type; });
  return found == std::end(kTypes) ? "text" : found->second;
}

jet::Type typeOf(const std::string& name) {
  const auto* found =
      std::find_if(std::begin(kTypes), std::end(kTypes), [&](const auto& t) { return t.second == name; });
  if (found == std::end(kTypes)) {
    throw ConversionError(base::format("%s: \"%s\" is no type of a column.", kManifestFile, name));
  }
  return found->first;
}

Json columnJson(const jet::FieldDef& field) {
  Json column = {{"name", field.name}, {"type", nameOf(field.type)}};
  // 0: of any length.
  if (field.type == jet::Type::Text) column["size"] = field.size;
  if (field.autoIncrement) column["autoIncrement"] = true;
  if (!field.generatedFrom.empty()) column["equalTo"] = field.generatedFrom;
  return column;
}

jet::FieldDef columnOf(const Json& column) {
  jet::FieldDef field{.name = column.at("name").get<std::string>(), .type = typeOf(column.at("type"))};
  field.size = column.value("size", 0);
  field.autoIncrement = column.value("autoIncrement", false);
  field.generatedFrom = column.value("equalTo", std::string());
  return field;
}

Json tableJson(const ExportedTable& table) {
  Json out = {{"database", table.database}, {"table", table.definition.name}, {"data", table.data}};
  if (table.rows) out["rows"] = *table.rows;
  out["columns"] = Json::array();
  for (const jet::FieldDef& field : table.definition.fields) out["columns"].push_back(columnJson(field));
  out["indexes"] = Json::array();
  for (const jet::IndexDef& index : table.definition.indexes) {
    if (index.forOrder) continue;
    out["indexes"].push_back({{"columns", index.fields}, {"unique", index.unique}});
  }
  return out;
}

void requireKnownDatabase(const std::string& name) {
  if (schema::kindCalled(name) != nullptr) return;
  throw ConversionError(base::format("%s: \"%s\" is none of the three databases.", kManifestFile, name));
}

void requirePlainName(const std::string& name) {
  if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos ||
      name.find('\0') != std::string::npos) {
    throw ConversionError(base::format("%s: \"%s\" is no file of its folder.", kManifestFile, name));
  }
}

ExportedTable tableOf(const Json& entry) {
  ExportedTable table;
  table.database = entry.at("database").get<std::string>();
  requireKnownDatabase(table.database);
  table.data = entry.at("data").get<std::string>();
  requirePlainName(table.data);
  if (entry.contains("rows")) table.rows = entry["rows"].get<std::int64_t>();
  table.definition.name = entry.at("table").get<std::string>();
  for (const Json& column : entry.at("columns")) table.definition.fields.push_back(columnOf(column));
  for (const Json& index : entry.value("indexes", Json::array())) {
    table.definition.indexes.push_back(
        {index.at("columns").get<std::vector<std::string>>(), index.value("unique", false)});
  }
  return table;
}

}  // namespace

std::string manifestText(const TableManifest& manifest) {
  Json out = {{"format", manifest.format == TextFormat::Csv ? "csv" : "json"}, {"tables", Json::array()}};
  for (const ExportedTable& table : manifest.tables) out["tables"].push_back(tableJson(table));
  return out.dump(1) + "\n";
}

TableManifest parseManifest(const std::string& text) {
  TableManifest manifest;
  try {
    const Json in = Json::parse(text);
    const auto format = in.at("format").get<std::string>();
    if (format != "csv" && format != "json") {
      throw ConversionError(base::format("%s: \"%s\" is no known format.", kManifestFile, format));
    }
    manifest.format = format == "csv" ? TextFormat::Csv : TextFormat::Json;
    for (const Json& table : in.at("tables")) manifest.tables.push_back(tableOf(table));
  } catch (const nlohmann::json::exception& fault) {
    throw ConversionError(base::format("%s cannot be understood: %s.", kManifestFile, fault.what()));
  }
  return manifest;
}

std::vector<jet::FieldDef> storedColumns(const jet::TableDef& table) {
  std::vector<jet::FieldDef> columns;
  std::copy_if(table.fields.begin(), table.fields.end(), std::back_inserter(columns),
               [](const jet::FieldDef& field) { return field.generatedFrom.empty(); });
  return columns;
}

}  // namespace convert
