#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "convert/row_text.h"
#include "jet/table_def.h"

namespace convert {

// One table of a folder of exported tables.
struct ExportedTable {
  std::string database;              // "tallybook.mdb"
  jet::TableDef definition;          // with its indexes, and columns that are computed and are in no row
  std::string data;                  // name of the file with its rows, in the same folder
  std::optional<std::int64_t> rows;  // nothing: not stated, as many as there are
};

// The file schema.json of such a folder: what the tables beside it are. Written last, so a folder with it is whole.
struct TableManifest {
  TextFormat format = TextFormat::Csv;
  std::vector<ExportedTable> tables;
};

inline constexpr const char* kManifestFile = "schema.json";

[[nodiscard]] std::string manifestText(const TableManifest& manifest);

// Throws ConversionError for a text that is no manifest, or that names other databases or files outside its folder.
[[nodiscard]] TableManifest parseManifest(const std::string& text);

// The columns whose values are in the rows.
[[nodiscard]] std::vector<jet::FieldDef> storedColumns(const jet::TableDef& table);

}  // namespace convert
