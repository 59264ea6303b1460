#pragma once

#include <memory>
#include <optional>

#include "exchange/call_record.h"
#include "ingest/call_row.h"
#include "ingest/enrichment.h"
#include "ingest/exchange_parts.h"
#include "ingest/trunk_check.h"

namespace ingest {

enum class Recording {
  Failed,    // the calls are not open
  Skipped,   // deliberately not stored: under "Ignore_short_calls"
  Rejected,  // not stored: no entry or no provider is left for its trunk; can be recorded when one is
  Recorded,  // one row more
};

// Turns call records into rows of `Calls`.
class Recorder {
 public:
  explicit Recorder(const ExchangeParts& parts) : parts_(parts), trunks_(parts), enrichment_(parts) {}

  // Opens the recordset that rows are appended through. Throws jet::Error.
  void open();
  void close();
  [[nodiscard]] bool isOpen() const { return calls_ != nullptr; }

  // A new run of an import: faults of the phonebook are told of once in each.
  void beginRun() { enrichment_.beginRun(); }
  // What was wrong with the phonebook in this run; empty while names could be looked up.
  [[nodiscard]] const std::string& phonebookFault() const { return enrichment_.phonebookFault(); }

  // Takes over what other copies changed in the definitions and currencies. Cheap when nothing did; asked before each
  // live call and each batch of an import.
  void refreshDefinitions();

  // Records one call. The record comes back shortened where "Seconds_not_charged" says so. Throws jet::Error for faults
  // of the database, and for texts that break a statement (a quotation mark in the number); no row is stored then.
  Recording AddRecord(exchange::CallRecord& record);
  // `RecordID` of the row that was added last.
  [[nodiscard]] std::int64_t lastKey() const { return calls_->lastAddedKey(); }
  // Whether the row of that key is this call, by what recording stores of it as it came. Throws jet::Error.
  [[nodiscard]] bool isStoredAs(std::int64_t key, const exchange::CallRecord& record) const;

  [[nodiscard]] const ExchangeParts& parts() const { return parts_; }

 private:
  void setRawFields(CallRow& row, const exchange::CallRecord& record) const;
  void setHidden(CallRow& row, const exchange::CallRecord& record, const jet::Snapshot& filteredNumbers) const;
  [[nodiscard]] RecordedCall recordedCall(CallRow& row, const exchange::CallRecord& record,
                                          const tariff::PricingContext& context, base::DateTime start,
                                          double priceRef) const;
  void forward(const exchange::CallRecord& record, const tariff::PricingContext& context, double priceRef);

  ExchangeParts parts_;
  TrunkCheck trunks_;
  Enrichment enrichment_;
  std::unique_ptr<jet::Recordset> calls_;
  std::optional<CallFields> fields_;
};

// The line that tells other devices of an outgoing call; its texts are in it byte for byte. `taxPercent` is added to
// the last figure.
std::string forwardingLine(const exchange::CallRecord& record, double price, std::string_view referenceCurrency,
                           double priceRef, int taxPercent);

}  // namespace ingest
