#pragma once

#include <filesystem>
#include <string>

#include "convert/old_table.h"

namespace convert {

struct JetReadOptions {
  int codepage = 0;        // of a Jet 3 file's texts; 0 = the one that the file names
  std::string onlyTable;   // empty: every table
  std::string afterTable;  // goes on after this table (after a crash in it); empty: from the first
};

// Reads every table of a Jet 3 or Jet 4 file through libmdb, which trusts its input: call it in a process of its own
// (reader_process.h). Throws std::runtime_error, with a sentence that names the file, when the file cannot be read.
void readJetFile(const std::filesystem::path& file, const JetReadOptions& options, OldFileSink& sink);

}  // namespace convert
