#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "ingest/recorder.h"
#include "ingest/unconfirmed_calls.h"

namespace ingest {

// Records the single calls that the capture program hands over as messages.
class LiveRecorder {
 public:
  // `unconfirmed` is the file of UnconfirmedCalls.
  explicit LiveRecorder(Recorder& recorder, std::filesystem::path unconfirmed = {})
      : recorder_(recorder), unconfirmed_(recorder.parts().main, std::move(unconfirmed)) {}

  // A record of 156 or 220 bytes, stored in a transaction of its own. 1 when it was recorded or deliberately skipped; 0
  // (one whose trunk is not defined, with no entry left for it, is kept beside the monitor's file for importFile); 0
  // for another size, while the calls are not open, while the connection to the database is lost, and for a fault,
  // which is written to the audit log. Never throws. A record whose storing the connection was lost in is answered 0;
  // when it comes again and turns out to be stored already, it is answered 1 and not stored twice.
  std::int32_t record(std::span<const unsigned char> bytes);
  // Why the last record that was answered 0 was, in English.
  [[nodiscard]] const std::string& refusal() const { return refusal_; }
  // The file that keeps the last record because its trunk is not defined; empty when it became a call.
  [[nodiscard]] const std::string& keptIn() const { return keptIn_; }

  // Sees that the calls answered with 1 are on the disk, and not in the system's memory alone. To be called every few
  // seconds: a call waits for the disk itself only when none did for a second, so that calls in quick succession stay
  // quick. Cheap when there is none. Throws jet::Error.
  void makeDurable();

  // Entries that the audit log refused as well (a full disk, a locked database), to be written now. Cheap when there
  // are none. Throws jet::Error when it still refuses; they are kept then.
  void writeHeldEntries();

 private:
  bool store(exchange::CallRecord& call, std::span<const unsigned char> bytes);
  void confirm(jet::Transaction& transaction, std::span<const unsigned char> bytes, UnconfirmedCalls::Place place);
  bool wasStored(const exchange::CallRecord& call, std::span<const unsigned char> bytes);
  void keepRejected(std::span<const unsigned char> bytes);
  [[nodiscard]] std::string keptUnder() const;
  std::int32_t refuse(std::string why);
  [[nodiscard]] bool connected() const;
  void logException(const exchange::CallRecord& call);
  void hold(const std::string& number);

  Recorder& recorder_;
  std::string refusal_;
  std::string keptIn_;
  UnconfirmedCalls unconfirmed_;
  bool unsynced_ = false;
  std::chrono::steady_clock::time_point lastSync_;
  std::vector<std::string> heldNumbers_;
  std::int64_t heldBeyond_ = 0;  // calls more than the list takes
};

}  // namespace ingest
