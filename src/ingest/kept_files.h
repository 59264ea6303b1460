#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "ingest/exchange_parts.h"
#include "ingest/import_progress.h"

namespace ingest {

// The files beside a monitor file in which an import keeps what did not become a call:
//   FILE.refused.N  whole records that could not be stored, one after the other: importFile takes them again
//   FILE.rest.N     what follows the last whole record, for a person to look at
// A kept file is named in the database before it is made, and its length is committed with the position in FILE, so
// that a kill between any two steps keeps every record once: see docs/storage.md. The audit log tells of each file.
// Failures to write throw std::filesystem::filesystem_error or jet::Error; nothing has advanced then.
class KeptFiles {
 public:
  explicit KeptFiles(const ExchangeParts& parts) : main_(parts.main), log_(parts.log), rows_(parts.main) {}

  // True for FILE.refused.N.
  static bool isRefusedName(const std::filesystem::path& file);

  // Cuts off what killed imports appended without committing it. To be called before any file is read.
  void settle();

  // The row of `file` of this machine; a new one when there is none. For records that came from no file it is a name
  // that no file has.
  [[nodiscard]] FileProgress rowOf(const std::string& file);

  // Before the transaction of refuse(): sees to it that there is a kept file that holds what it counts, or none yet.
  void prepare(FileProgress& progress);
  // Within the transaction that stores `progress`, so that no other program takes the record for one that a kill left:
  // appends a record that could not be stored and counts it in `progress.refused`.
  void refuse(FileProgress& progress, std::span<const unsigned char> record);
  // Whether the record was kept as the last of the first `bytes` that `progress` ever counted in kept files. Of a file
  // that was taken away since, the count alone tells.
  [[nodiscard]] static bool isKept(const FileProgress& progress, std::int64_t bytes,
                                   std::span<const unsigned char> record);
  // Keeps what follows the position of `progress` in the file that is read, once however often it is called.
  void keepRest(FileProgress& progress, const std::filesystem::path& file);

 private:
  [[nodiscard]] std::string freeName(const std::string& file, const char* kind);
  // True when the row may have changed.
  bool settle(const FileProgress& seen);
  void settleAlone(FileProgress& row);
  void name(FileProgress& progress, KeptFile FileProgress::*kept, const char* kind, const char* entry);

  jet::Database& main_;
  security::AuditLog& log_;
  ImportProgress rows_;
};

}  // namespace ingest
