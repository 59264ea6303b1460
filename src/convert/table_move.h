#pragma once

#include <cstdint>
#include <filesystem>

#include "convert/table_manifest.h"
#include "platform/operator.h"
#include "schema/database_place.h"

namespace convert {

// Rows between two reports of progress, and rows stored in one transaction.
inline constexpr std::int64_t kProgressStep = 1000;
inline constexpr std::int64_t kRowsPerTransaction = 20000;

// Writes every table of the databases at a place, those that this program does not know too, as text: one file a
// table and kManifestFile beside them. The files hold password digests and are private to their owner. The tables of
// the main database are those of one moment, whatever other copies write meanwhile. The target must not exist or be
// empty; it appears when it is whole. Memory does not depend on the number of rows. Throws ConversionError.
TableManifest exportTables(const schema::DatabasePlace& place, const std::filesystem::path& target, TextFormat format,
                           platform::Operator& person);

// Makes the databases from such a folder: equal tables with equal rows. What this program needs and the folder
// does not name is made empty. The new folder must not exist or be empty; it appears when it is whole. It may be the
// address of a server, which must not have the databases. Throws
// ConversionError that names the file and the line.
TableManifest importTables(const std::filesystem::path& source, const std::filesystem::path& newFolder,
                           platform::Operator& person);

}  // namespace convert
