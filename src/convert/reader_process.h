#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "convert/jet_file_reader.h"
#include "convert/old_table.h"

namespace convert {

// What the reading process may use. A file that makes it ask for more is damaged or hostile.
struct ReaderLimits {
  std::chrono::seconds silence{20};         // without a byte from it
  std::chrono::seconds processorTime{600};  // of one file
  std::uint64_t memory = 2ULL << 30;        // bytes of address space
};

struct ReaderResult {
  bool complete = false;
  std::string fault;  // a sentence naming file and table, empty when complete
  std::string table;  // the table during whose reading the process ended; empty when it was between tables
};

// Reads an old file in a process of its own and hands its content to the sink: a file that crashes or hangs the reading
// ends as a fault, not as the end of this program. An exception of the sink ends the reading and goes on to the caller.
ReaderResult readJetFileApart(const std::filesystem::path& file, const JetReadOptions& options,
                              const ReaderLimits& limits, OldFileSink& sink);

}  // namespace convert
