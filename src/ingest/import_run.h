#pragma once

#include <chrono>
#include <cstdint>

#include "ingest/import.h"
#include "ingest/import_progress.h"
#include "ingest/kept_files.h"
#include "ingest/record_reader.h"
#include "ingest/recorder.h"

namespace ingest {

// The reading of one file from a position to its end, in batches.
class ImportRun {
 public:
  // `progress` is how far the reader is; it is kept up in the database with each batch.
  ImportRun(Recorder& recorder, const ImportOptions& options, RecordReader& reader, FileProgress progress);

  // Shows the progress window when `expected` records are enough for one. Throws jet::Error for a fault of the
  // database, std::filesystem::filesystem_error when a refused record cannot be kept; what was committed before it
  // is kept, and the position with it.
  ImportResult::Outcome readAll(std::int64_t expected);

  // Of this run, as committed; refused records count as read.
  [[nodiscard]] std::int64_t recordsRead() const { return progress_.records - firstRecord_; }
  [[nodiscard]] std::int64_t recordsRefused() const { return refused_; }
  // Why the first of them could not be stored; empty when none was refused by a fault.
  [[nodiscard]] const std::string& refusedReason() const { return refusedReason_; }
  [[nodiscard]] const FileProgress& progress() const { return progress_; }

 private:
  enum class BatchEnd { Full, EndOfFile, CallFailed, CallRejected, Interrupted };

  ImportResult::Outcome readBatches();
  BatchEnd readBatch();
  BatchEnd recordUntilFull(std::int64_t& records, ReadPosition& position);
  bool showProgress(std::int64_t record);
  Recording recordOne(exchange::CallRecord& record);
  bool operatorGoesOn();
  void refuse(BatchEnd why);
  void logFailedRecord();
  [[nodiscard]] FileProgress progressAt(std::int64_t records, const ReadPosition& position) const;

  Recorder& recorder_;
  const ImportOptions& options_;
  RecordReader& reader_;
  ImportProgress rows_;
  KeptFiles kept_;
  FileProgress progress_;  // as committed
  ReadPosition position_;  // the place in the file that progress_ tells of
  std::int64_t firstRecord_;
  std::int64_t refused_ = 0;
  std::string failedNumber_;  // dialled number of the record that could not be stored last
  std::string refusedReason_;
  bool windowShown_ = false;
};

}  // namespace ingest
