#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database.h"

namespace ingest {

// A file that an import made to keep what did not become a call.
struct KeptFile {
  std::string file = {};     // absolute path; empty: none is in use
  std::int64_t bytes = 0;    // of its length, what counts; more was appended by an import that was killed
  std::int64_t earlier = 0;  // bytes in files before this one, which were taken away meanwhile

  bool operator==(const KeptFile&) const = default;
};

// How far one monitor file was taken into the database.
struct FileProgress {
  std::string file = {};  // absolute path; see setAside for files that moved
  std::int64_t records = 0;
  std::int64_t bytes = 0;
  std::string digest = {};         // of those bytes (ReadDigest)
  bool stoppedByOperator = false;  // left for importFile, not resumed by itself
  KeptFile refused = {};           // records that could not be stored
  KeptFile rest = {};              // what follows the last whole record
  bool elsewhere = false;          // a file of another machine, whose name is before the path; kept files not told

  // True when calls were stored: the bytes read are more than the refused ones.
  [[nodiscard]] bool hasStoredCalls() const { return bytes > refused.bytes + refused.earlier; }
};

// Names of files as rows keep them. Machines that share a database on a server may well have monitor folders of the
// same path: there a path has the name of its machine before it ("desk7:/srv/monitor/monitor.data.bk").
class StoredFileNames {
 public:
  explicit StoredFileNames(const jet::Database& main);

  [[nodiscard]] std::string stored(std::string_view file) const;
  [[nodiscard]] std::string shown(std::string_view stored) const;
  // Also under the path alone, as a row has it that came from a folder.
  [[nodiscard]] bool areEqual(std::string_view stored, std::string_view file) const;
  [[nodiscard]] bool isElsewhere(std::string_view stored) const;

 private:
  std::string machine_;  // with a colon; empty where one machine has the database to itself
};

// Tables `ImportProgress`, one row a file, and `ImportKept`, one row a kept file. Written in the transaction that
// writes the rows of the calls that they count. All calls throw jet::Error.
class ImportProgress {
 public:
  explicit ImportProgress(jet::Database& main) : main_(main), names_(main) {}

  // Of all machines.
  [[nodiscard]] std::vector<FileProgress> all();
  // Adds the row or replaces the one of that file.
  void store(const FileProgress& progress);
  void rename(std::string_view from, std::string_view to);
  // The file of that name is another one now. The row is kept under no name, for the case that its file was moved by
  // hand: importFile finds it by the digest.
  void setAside(std::string_view file);
  void forget(std::string_view file);

 private:
  jet::Database& main_;
  StoredFileNames names_;
};

}  // namespace ingest
