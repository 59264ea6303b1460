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

  // The row of `file` of this machine, settled; a new one when there is none. For records that came from no file it is
  // a name that no file has.
  [[nodiscard]] FileProgress rowOf(const std::string& file);

  // Appends a record that the import of `progress` could not store and counts it in `progress.refused`; the caller
  // stores that together with the position after the record.
  void refuse(FileProgress& progress, std::span<const unsigned char> record);
  // Keeps what follows the position of `progress` in the file that is read, once however often it is called.
  void keepRest(FileProgress& progress, const std::filesystem::path& file);

 private:
  [[nodiscard]] std::string freeName(const std::string& file, const char* kind);
  void settle(FileProgress row);

  void name(FileProgress& progress, KeptFile FileProgress::*kept, const char* kind, const char* entry);

  jet::Database& main_;
  security::AuditLog& log_;
  ImportProgress rows_;
};

}  // namespace ingest
