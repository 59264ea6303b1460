#pragma once

#include <chrono>
#include <cstdint>

#include "ingest/import.h"
#include "ingest/import_progress.h"
#include "ingest/record_reader.h"
#include "ingest/recorder.h"

namespace ingest {

// The reading of one file from a position to its end, in batches.
class ImportRun {
 public:
  // `progress` is where the reader stands; it is kept up in the database with each batch.
  ImportRun(Recorder& recorder, const ImportOptions& options, RecordReader& reader, FileProgress progress);

  // Shows the progress window when `expected` records are enough for one. Throws jet::Error for a fault of the
  // database; what was committed before it stands, and the position with it.
  ImportResult::Outcome readAll(std::int64_t expected);

  [[nodiscard]] std::int64_t recordsRead() const { return progress_.records - firstRecord_; }
  [[nodiscard]] const std::string& file() const { return progress_.file; }

 private:
  enum class BatchEnd { Full, EndOfFile, CallFailed, Interrupted };

  ImportResult::Outcome readBatches();
  BatchEnd readBatch();
  BatchEnd recordUntilFull(std::int64_t& records, ReadPosition& position);
  bool showProgress(std::int64_t record);
  bool recordOne(exchange::CallRecord& record);
  bool operatorGoesOn();
  void skipFailedRecord();
  [[nodiscard]] FileProgress progressAt(std::int64_t records, const ReadPosition& position) const;

  Recorder& recorder_;
  const ImportOptions& options_;
  RecordReader& reader_;
  ImportProgress rows_;
  FileProgress progress_;  // as committed, and one failed record further after skipFailedRecord
  ReadPosition position_;  // the place in the file that progress_ tells of
  std::int64_t firstRecord_;
  bool windowShown_ = false;
};

}  // namespace ingest
