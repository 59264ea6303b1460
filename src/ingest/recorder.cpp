#include "ingest/recorder.h"

#include "base/codepage.h"
#include "base/debug_output.h"
#include "base/printf.h"
#include "base/text.h"
#include "ingest/call_views.h"

namespace ingest {

void Recorder::open() {
  const jet::AsStored stored(parts_.main);
  calls_ = parts_.main.openRecordset("SELECT * FROM Calls");
  fields_.emplace(*calls_);
}

void Recorder::close() {
  calls_.reset();
}

void Recorder::refreshDefinitions() {
  parts_.parties.reloadIfChanged(parts_.main, parts_.tariffs != nullptr ? &parts_.tariffs->database() : nullptr);
  parts_.currencies.reloadIfChanged(parts_.main);
}

Recording Recorder::AddRecord(exchange::CallRecord& record) {
  if (!isOpen()) return Recording::Failed;
  const CallViews views(parts_);
  const jet::AsStored stored(parts_.main);
  // The blank after each number and after the one that is looked for keeps "123" from being found as "1234".
  const jet::Snapshot filteredNumbers = parts_.main.openSnapshot("select [number] & ' ' as n from FilteredNumbers");
  tariff::PricingContext context;
  if (!trunks_.accept(record, context)) return Recording::Rejected;

  CallRow row(*calls_, *fields_, CallRow::Begin::New);
  row.set(&CallFields::DialNumber, record.dialledNumber);
  const std::optional<base::DateTime> start = record.start();
  enrichment_.setName(row, record, context);
  double priceRef = 0;
  if (!enrichment_.setTariff(row, record, context, priceRef)) return Recording::Skipped;
  if (start) row.set(&CallFields::DateTime, *start);
  setRawFields(row, record);
  enrichment_.setDepartment(row, record);
  enrichment_.setOwner(row, record);
  setHidden(row, record, filteredNumbers);
  std::optional<RecordedCall> told;
  if (start && parts_.listener != nullptr && parts_.listener->listens()) {
    told = recordedCall(row, record, context, *start, priceRef);
  }
  row.write();

  if (told) {
    told->recordId = lastKey();
    parts_.listener->recorded(*told);
  }
  forward(record, context, priceRef);
  return Recording::Recorded;
}

bool Recorder::isStoredAs(std::int64_t key, const exchange::CallRecord& record) const {
  const jet::AsStored stored(parts_.main);
  const jet::Snapshot row = parts_.main.openSnapshot(
      base::format("select [DateTime], DialNumber, Extension, Trunk, Pulses, AccountCode, Ring, Incoming from Calls "
                   "where RecordID = %d",
                   key));
  if (row.empty()) return false;
  const bool texts = parts_.parties.extensionIsText;
  const std::optional<base::DateTime> start = record.start();
  return (!start || row.at(0, "DateTime") == jet::Value(*start)) &&
         row.at(0, "DialNumber").toText() == record.dialledNumber &&
         row.at(0, "Extension").toText() == (texts ? record.extensionText : std::to_string(record.extension)) &&
         row.at(0, "Trunk").toText() == (texts ? record.trunkText : std::to_string(record.trunk)) &&
         row.at(0, "Pulses").toLong() == record.pulses && row.at(0, "AccountCode").toText() == record.accountCode &&
         row.at(0, "Ring").toLong() == record.ring && row.at(0, "Incoming").toLong() == record.incoming;
}

void Recorder::setRawFields(CallRow& row, const exchange::CallRecord& record) const {
  if (parts_.parties.extensionIsText) {
    row.set(&CallFields::Extension, record.extensionText);
    row.set(&CallFields::Trunk, record.trunkText);
  } else {
    row.set(&CallFields::Extension, record.extension);
    row.set(&CallFields::Trunk, record.trunk);
  }
  row.set(&CallFields::TotalTime, record.durationInSeconds());
  row.set(&CallFields::Pulses, record.pulses);
  row.set(&CallFields::AccountCode, record.accountCode);
  row.set(&CallFields::Redirected, record.redirected);
  row.set(&CallFields::Incoming, record.incoming);
  row.set(&CallFields::Ring, record.ring);
  row.set(&CallFields::CD, record.cd);
}

// The row's texts can be read until it is written.
RecordedCall Recorder::recordedCall(CallRow& row, const exchange::CallRecord& record,
                                    const tariff::PricingContext& context, base::DateTime start,
                                    double priceRef) const {
  return {.at = start,
          .number = record.dialledNumber,
          .extension = row.get(&CallFields::Extension).toText(),
          .trunk = row.get(&CallFields::Trunk).toText(),
          .account = record.accountCode,
          .department = row.get(&CallFields::Department).toText(),
          .owner = row.get(&CallFields::Owner).toText(),
          .provider = context.provider,
          .country = row.get(&CallFields::Country).toText(),
          .seconds = record.durationInSeconds(),
          .incoming = record.incoming != 0,
          .cost = priceRef};
}

void Recorder::setHidden(CallRow& row, const exchange::CallRecord& record, const jet::Snapshot& filteredNumbers) const {
  row.set(&CallFields::Hidden, filteredNumbers.findFirst(base::format("n=\"%s \"", record.dialledNumber)).has_value());
}

void Recorder::forward(const exchange::CallRecord& record, const tariff::PricingContext& context, double priceRef) {
  if (parts_.output == nullptr || !parts_.output->isOpen() || record.incoming != 0) return;
  const std::string tax = parts_.config.ReadConfigString(foundation::keys::OrganizationTAXE);
  // In single bytes, like the record that it came from: the columns of the line are counted so.
  const int codepage = parts_.language.codepage();
  exchange::CallRecord sent = record;
  sent.dialledNumber = base::encode(record.dialledNumber, codepage);
  const std::string line = forwardingLine(sent, context.price, base::encode(parts_.currencies.Default().name, codepage),
                                          priceRef, base::leadingInteger(tax));
  base::debugOutput(base::decode(line, codepage));
  parts_.output->SendLine(line);
}

// Trunk and extension are the integer fields even where the columns are texts: receivers read figures there.
std::string forwardingLine(const exchange::CallRecord& record, double price, std::string_view referenceCurrency,
                           double priceRef, int taxPercent) {
  return base::format("%-30s %02d/%02d/%04d %02d:%02d:%02d %6d %6d %6d %c %c %10.2f %-5s %7.2f %7.2f\r\n",
                      record.dialledNumber, record.day, record.month, record.year, record.hour24(), record.minute,
                      record.second, record.durationInSeconds(), record.trunk, record.extension,
                      record.incoming != 0 ? 'I' : ' ', record.redirected > 0 ? 'R' : ' ', price, referenceCurrency,
                      priceRef, (taxPercent + 100) / 100.0 * priceRef);
}

}  // namespace ingest
