#include "ingest/live_recorder.h"

#include <algorithm>

namespace ingest {

std::int32_t LiveRecorder::record(std::span<const unsigned char> bytes) {
  if (bytes.size() != exchange::kNormalRecordSize && bytes.size() != exchange::kExtendedRecordSize) return 0;
  exchange::RecordBuffer buffer{};
  std::copy(bytes.begin(), bytes.end(), buffer.begin());
  if (bytes.size() == exchange::kNormalRecordSize) exchange::fillTexts(buffer);
  exchange::CallRecord call = exchange::decodeRecord(buffer, recorder_.parts().language.codepage());
  try {
    return store(call) ? 1 : 0;
  } catch (const std::exception&) {
    logException(call);
    return 0;
  }
}

bool LiveRecorder::store(exchange::CallRecord& call) {
  const ExchangeParts& parts = recorder_.parts();
  jet::Transaction transaction(parts.main);
  recorder_.refreshDefinitions();
  if (recorder_.AddRecord(call) == Recording::Failed) return false;
  parts.tags.TouchCalls();
  transaction.commit();
  return true;
}

void LiveRecorder::logException(const exchange::CallRecord& call) {
  try {
    recorder_.parts().log.WriteLog(security::LogError, "Exception while adding call (%s)", call.dialledNumber);
  } catch (const std::exception&) {
    // The database takes no entry either; the result tells the sender.
  }
}

}  // namespace ingest
