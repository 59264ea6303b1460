#include "ingest/live_recorder.h"

#include <algorithm>
#include <utility>

#include "base/path.h"
#include "base/printf.h"
#include "ingest/kept_files.h"

namespace ingest {

namespace {

// Stands for the file that live calls do not have: those that are rejected are kept in "live.refused.1".
constexpr const char* kLiveRecords = "live";
constexpr const char* kException = "Exception while adding call (%s)";
// A fault may last for days; its first calls tell as much as all of them.
constexpr std::size_t kMostHeld = 200;

}  // namespace

std::int32_t LiveRecorder::record(std::span<const unsigned char> bytes) {
  if (bytes.size() != exchange::kNormalRecordSize && bytes.size() != exchange::kExtendedRecordSize) {
    return refuse(base::format("a message of %d bytes is no call record", bytes.size()));
  }
  keptIn_.clear();
  exchange::RecordBuffer buffer{};
  std::copy(bytes.begin(), bytes.end(), buffer.begin());
  if (bytes.size() == exchange::kNormalRecordSize) exchange::fillTexts(buffer);
  exchange::CallRecord call = exchange::decodeRecord(buffer, recorder_.parts().language.codepage());
  try {
    if (!connected()) return refuse("the connection to the database is lost");
    const std::optional<std::int64_t> stored = unconfirmed_.takeStored(bytes);
    if (stored && recorder_.isStoredAs(*stored, call)) return 1;
    return store(call, bytes) ? 1 : refuse("the calls are not open");
  } catch (const std::exception& fault) {
    // Without a connection the log takes nothing either.
    if (recorder_.parts().main.connected()) logException(call);
    return refuse(fault.what());
  }
}

std::int32_t LiveRecorder::refuse(std::string why) {
  refusal_ = std::move(why);
  return 0;
}

bool LiveRecorder::connected() const {
  const ExchangeParts& parts = recorder_.parts();
  return parts.main.connected() && (parts.tariffs == nullptr || parts.tariffs->database().connected()) &&
         (parts.phonebook == nullptr || parts.phonebook->database().connected());
}

bool LiveRecorder::store(exchange::CallRecord& call, std::span<const unsigned char> bytes) {
  const ExchangeParts& parts = recorder_.parts();
  jet::Transaction transaction(parts.main);
  recorder_.refreshDefinitions();
  const Recording recorded = recorder_.AddRecord(call);
  if (recorded == Recording::Failed) return false;
  parts.tags.TouchCalls();
  if (recorded == Recording::Rejected) {
    transaction.commit();
    keepRejected(bytes);
    return true;
  }
  unconfirmed_.add(bytes, recorder_.lastKey());
  transaction.commit();
  unconfirmed_.confirmLast();
  return true;
}

// The sender is told that it is done, so the record must be as durable as a call. A fault after its bytes are written
// leaves them uncounted: the record comes again and takes their place.
void LiveRecorder::keepRejected(std::span<const unsigned char> bytes) {
  const ExchangeParts& parts = recorder_.parts();
  const std::string folder = parts.config.ReadConfigString(foundation::keys::PathMonitor);
  if (folder.empty()) return;
  KeptFiles kept(parts);
  FileProgress progress = kept.rowOf((base::systemPath(folder) / kLiveRecords).string());
  kept.refuse(progress, bytes);
  jet::Transaction transaction(parts.main);
  ImportProgress(parts.main).store(progress);
  transaction.commit();
  keptIn_ = progress.refused.file;
}

void LiveRecorder::logException(const exchange::CallRecord& call) {
  try {
    recorder_.parts().log.WriteLog(security::LogError, kException, call.dialledNumber);
  } catch (const std::exception&) {
    // The database takes no entry either.
    hold(call.dialledNumber);
  }
}

void LiveRecorder::hold(const std::string& number) {
  if (heldNumbers_.size() < kMostHeld) {
    heldNumbers_.push_back(number);
  } else {
    ++heldBeyond_;
  }
}

void LiveRecorder::writeHeldEntries() {
  if (heldNumbers_.empty()) return;
  const ExchangeParts& parts = recorder_.parts();
  jet::Transaction transaction(parts.main);
  for (const std::string& number : heldNumbers_) parts.log.WriteLog(security::LogError, kException, number);
  if (heldBeyond_ > 0) {
    parts.log.WriteLog(security::LogError, kException, base::format("%d more", heldBeyond_));
  }
  transaction.commit();
  heldNumbers_.clear();
  heldBeyond_ = 0;
}

}  // namespace ingest
