#include "ingest/import_run.h"

#include <utility>

#include "ingest/call_error.h"
#include "ingest/call_views.h"
#include "ingest/progress_window.h"

namespace ingest {

namespace {

constexpr std::int64_t kRecordsForProgressWindow = 10;
constexpr std::int64_t kRecordsPerProgressStep = 10;

}  // namespace

ImportRun::ImportRun(Recorder& recorder, const ImportOptions& options, RecordReader& reader, FileProgress progress)
    : recorder_(recorder),
      options_(options),
      reader_(reader),
      rows_(recorder.parts().main),
      kept_(recorder.parts()),
      progress_(std::move(progress)),
      position_(reader.position()),
      firstRecord_(progress_.records) {
  recorder_.beginRun();
}

ImportResult::Outcome ImportRun::readAll(std::int64_t expected) {
  windowShown_ = expected >= kRecordsForProgressWindow;
  if (!windowShown_) return readBatches();
  const platform::Progress window = showUpdate(recorder_.parts(), expected);
  return readBatches();
}

ImportResult::Outcome ImportRun::readBatches() {
  using Outcome = ImportResult::Outcome;
  while (true) {
    switch (readBatch()) {
      case BatchEnd::Full:
        break;
      case BatchEnd::EndOfFile:
        return reader_.failed() ? Outcome::Failed : Outcome::Done;
      case BatchEnd::Interrupted:
        return Outcome::Interrupted;
      case BatchEnd::CallFailed:
        // Asked between two transactions: the question may wait for hours.
        if (!operatorGoesOn()) return Outcome::StoppedByOperator;
        refuse(BatchEnd::CallFailed);
        break;
      case BatchEnd::CallRejected:
        refuse(BatchEnd::CallRejected);
        break;
    }
  }
}

ImportRun::BatchEnd ImportRun::readBatch() {
  const ExchangeParts& parts = recorder_.parts();
  jet::Transaction transaction(parts.main);
  recorder_.refreshDefinitions();
  const CallViews views(parts);
  std::int64_t records = progress_.records;
  ReadPosition position = position_;
  const BatchEnd end = recordUntilFull(records, position);
  // Moved with the rows, so that a kill cannot leave other copies unaware of them.
  if (end == BatchEnd::EndOfFile || end == BatchEnd::Interrupted) parts.tags.TouchCalls();
  rows_.store(progressAt(records, position));
  transaction.commit();
  progress_ = progressAt(records, position);
  position_ = position;
  return end;
}

ImportRun::BatchEnd ImportRun::recordUntilFull(std::int64_t& records, ReadPosition& position) {
  const auto deadline = std::chrono::steady_clock::now() + options_.timePerBatch;
  const std::int64_t lastRecord = records + options_.recordsPerBatch;
  exchange::CallRecord record;
  do {
    if (options_.shouldStop && options_.shouldStop()) return BatchEnd::Interrupted;
    if (!reader_.next(record)) return BatchEnd::EndOfFile;
    if (!showProgress(records)) return BatchEnd::Interrupted;
    const Recording recorded = recordOne(record);
    if (recorded == Recording::Failed) return BatchEnd::CallFailed;
    if (recorded == Recording::Rejected) return BatchEnd::CallRejected;
    ++records;
    position = reader_.position();
  } while (records < lastRecord && std::chrono::steady_clock::now() < deadline);
  return BatchEnd::Full;
}

bool ImportRun::showProgress(std::int64_t record) {
  if (!windowShown_ || record % kRecordsPerProgressStep != 0) return true;
  return recorder_.parts().person.progressStep(record);
}

// A fault that the next call would meet too is passed on.
Recording ImportRun::recordOne(exchange::CallRecord& record) {
  failedNumber_ = record.dialledNumber;
  try {
    return recorder_.AddRecord(record);
  } catch (const jet::Error& error) {
    if (!isFaultOfCall(error, record)) throw;
    if (refusedReason_.empty()) refusedReason_ = error.what();
    return Recording::Failed;
  }
}

bool ImportRun::operatorGoesOn() {
  const ExchangeParts& parts = recorder_.parts();
  if (parts.person.askYesNo("Error adding call to the database. Do you want to continue?",
                            platform::Operator::Unattended::Yes)) {
    return true;
  }
  jet::Transaction transaction(parts.main);
  logFailedRecord();
  progress_.stoppedByOperator = true;
  rows_.store(progress_);
  parts.tags.TouchCalls();
  transaction.commit();
  return false;
}

// The reader is past the record. The entry in the log is committed with the decision, so that a record that is
// tried again after a kill is not told of twice. That of a rejected one was written as it was rejected.
void ImportRun::refuse(BatchEnd why) {
  kept_.prepare(progress_);
  const ReadPosition& after = reader_.position();
  jet::Transaction transaction(recorder_.parts().main);
  FileProgress next = progressAt(progress_.records + 1, after);
  kept_.refuse(next, reader_.recordBytes());
  if (why == BatchEnd::CallFailed) logFailedRecord();
  rows_.store(next);
  transaction.commit();
  progress_ = std::move(next);
  position_ = after;
  ++refused_;
}

void ImportRun::logFailedRecord() {
  recorder_.parts().log.WriteLog(security::LogError, "Exception while adding call (%s)", failedNumber_);
}

FileProgress ImportRun::progressAt(std::int64_t records, const ReadPosition& position) const {
  FileProgress result = progress_;
  result.records = records;
  result.bytes = position.bytes;
  result.digest = position.digest.text();
  result.stoppedByOperator = false;
  return result;
}

}  // namespace ingest
