#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database.h"

namespace ingest {

// How far one monitor file was taken into the database.
struct FileProgress {
  std::string file = {};  // absolute path; see setAside for files that moved
  std::int64_t records = 0;
  std::int64_t bytes = 0;
  std::string digest = {};         // of those bytes (ReadDigest)
  bool stoppedByOperator = false;  // left for importFile, not resumed by itself
};

// Table `ImportProgress`, one row a file. Written in the transaction that writes the rows of the calls it counts. All
// calls throw jet::Error.
class ImportProgress {
 public:
  explicit ImportProgress(jet::Database& main) : main_(main) {}

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
};

}  // namespace ingest
