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
    if (wasStored(call, bytes)) return 1;
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
  confirm(transaction, bytes, {UnconfirmedCalls::Place::Kind::Row, recorder_.lastKey()});
  return true;
}

void LiveRecorder::confirm(jet::Transaction& transaction, std::span<const unsigned char> bytes,
                           UnconfirmedCalls::Place place) {
  constexpr std::chrono::seconds kBetweenSyncs{1};
  unconfirmed_.add(bytes, place);
  transaction.commit();
  unconfirmed_.confirmLast();
  unsynced_ = true;
  if (std::chrono::steady_clock::now() - lastSync_ < kBetweenSyncs) return;
  try {
    makeDurable();
  } catch (const jet::Error&) {
    // It is stored, and would be again if its sender were told otherwise. The next look says what is wrong.
  }
}

void LiveRecorder::makeDurable() {
  if (!unsynced_) return;
  recorder_.parts().main.makeDurable();
  lastSync_ = std::chrono::steady_clock::now();
  unsynced_ = false;
}

bool LiveRecorder::wasStored(const exchange::CallRecord& call, std::span<const unsigned char> bytes) {
  const std::optional<UnconfirmedCalls::Place> place = unconfirmed_.takeStored(bytes);
  if (!place) return false;
  if (place->kind == UnconfirmedCalls::Place::Kind::Row) return recorder_.isStoredAs(place->number, call);
  const FileProgress progress = KeptFiles(recorder_.parts()).rowOf(keptUnder());
  if (!KeptFiles::isKept(progress, place->number, bytes)) return false;
  keptIn_ = progress.refused.file;
  return true;
}

// The sender is told that it is done, so the record must be as durable as a call. A fault after its bytes are written
// leaves them uncounted: the record comes again and takes their place.
void LiveRecorder::keepRejected(std::span<const unsigned char> bytes) {
  const std::string name = keptUnder();
  if (name.empty()) return;
  const ExchangeParts& parts = recorder_.parts();
  KeptFiles kept(parts);
  FileProgress progress = kept.rowOf(name);
  kept.prepare(progress);
  jet::Transaction transaction(parts.main);
  progress = kept.rowOf(name);
  kept.refuse(progress, bytes);
  ImportProgress(parts.main).store(progress);
  confirm(transaction, bytes,
          {UnconfirmedCalls::Place::Kind::KeptFile, progress.refused.earlier + progress.refused.bytes});
  keptIn_ = progress.refused.file;
}

// The file that live calls do not have, in the monitor's folder; empty without one.
std::string LiveRecorder::keptUnder() const {
  const std::string folder = recorder_.parts().config.ReadConfigString(foundation::keys::PathMonitor);
  return folder.empty() ? folder : (base::systemPath(folder) / kLiveRecords).string();
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
