#pragma once

#include <filesystem>
#include <string>

#include "convert/conversion_error.h"
#include "convert/conversion_report.h"
#include "convert/reader_process.h"
#include "platform/operator.h"

namespace convert {

// True when the file begins with the bytes of an old (Jet) database.
bool isOldDatabase(const std::filesystem::path& file);

struct ConversionOptions {
  bool salvage = false;  // go on with the other tables when one cannot be read
  int codepage = 0;      // of Jet 3 texts; 0 = the one that each file names
  ReaderLimits limits;
  // For the report and the page of a bill when the new databases are on a server.
  std::filesystem::path beside = {};
};

// Is beside the new databases, or in ConversionOptions::beside.
inline constexpr const char* kReportFile = "conversion-report.txt";

// Carries tallybook.mdb, tariffs.mdb and phonebook.mdb of `oldFolder` (names in any case; the last two may be missing
// and are made empty then) over into the new folder, which must not exist or be empty. The old files are only read. The
// new folder appears under its name when it is whole; until then the work is beside it under NAME.partial, which a
// later run clears away. `newFolder` may be the address of a server, which must not have the databases. Faults of
// single tables end the conversion unless `salvage` is set.
ConversionReport convertFolder(const std::filesystem::path& oldFolder, const std::filesystem::path& newFolder,
                               const ConversionOptions& options, platform::Operator& person);

}  // namespace convert
