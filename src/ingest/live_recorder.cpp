#include "ingest/live_recorder.h"

#include <algorithm>
#include <utility>

#include "base/printf.h"

namespace ingest {

namespace {

constexpr const char* kException = "Exception while adding call (%s)";
// A fault may last for days; its first calls tell as much as all of them.
constexpr std::size_t kMostHeld = 200;

}  // namespace

std::int32_t LiveRecorder::record(std::span<const unsigned char> bytes) {
  if (bytes.size() != exchange::kNormalRecordSize && bytes.size() != exchange::kExtendedRecordSize) {
    return refuse(base::format("a message of %d bytes is no call record", bytes.size()));
  }
  exchange::RecordBuffer buffer{};
  std::copy(bytes.begin(), bytes.end(), buffer.begin());
  if (bytes.size() == exchange::kNormalRecordSize) exchange::fillTexts(buffer);
  exchange::CallRecord call = exchange::decodeRecord(buffer, recorder_.parts().language.codepage());
  try {
    if (!connected()) return refuse("the connection to the database is lost");
    if (unconfirmed_.takeStored(bytes)) return 1;
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
  if (recorder_.AddRecord(call) == Recording::Failed) return false;
  parts.tags.TouchCalls();
  unconfirmed_.add(bytes);
  transaction.commit();
  unconfirmed_.confirmLast();
  return true;
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
