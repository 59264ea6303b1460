#include <memory>

#include "base/printf.h"
#include "exchange/call_record.h"
#include "ingest/call_row.h"
#include "ingest/call_views.h"
#include "ingest/enrichment.h"
#include "ingest/maintenance.h"
#include "ingest/progress_window.h"
#include "ingest/trunk_check.h"

namespace ingest {

namespace {

constexpr std::int64_t kRowsPerProgressStep = 100;
constexpr std::int64_t kRowsPerTransaction = 1000;

std::string recalcQuery(const RecalcOptions& options) {
  const base::DateTime::Parts first = options.firstDay.parts();
  const base::DateTime::Parts last = options.lastDay.parts();
  std::string query =
      base::format("select * from Calls where DateTime >= #%d/%d/%d 00:00:00# and DateTime <= #%d/%d/%d 23:59:59#",
                   first.month, first.day, first.year, last.month, last.day, last.year);
  if (!options.provider.empty()) query += base::format(" and provider='%s'", options.provider);
  return query;
}

std::int32_t asInteger(const jet::Value& value) {
  return static_cast<std::int32_t>(value.toLong());
}

// The repricing of the rows of one recordset.
class Recalculation {
 public:
  Recalculation(const ExchangeParts& parts, const RecalcOptions& options, jet::Recordset& calls)
      : parts_(parts), options_(options), trunks_(parts), enrichment_(parts), calls_(calls), fields_(calls) {}

  // True when the current row was written.
  bool recalcRow();

 private:
  exchange::CallRecord recordOfRow();
  bool apply(CallRow& row, exchange::CallRecord& record, tariff::PricingContext& context);
  void reconvert(CallRow& row);
  jet::Value field(std::size_t CallFields::*name) { return calls_.get(fields_.*name); }

  const ExchangeParts& parts_;
  const RecalcOptions& options_;
  TrunkCheck trunks_;
  Enrichment enrichment_;
  jet::Recordset& calls_;
  CallFields fields_;
};

// What the exchange reported, as far as the row still tells it: the texts of extension and trunk come from their
// integers, as in a normal record.
exchange::CallRecord Recalculation::recordOfRow() {
  exchange::CallRecord record;
  if (const auto start = field(&CallFields::DateTime).toDateTime()) record.setStart(*start);
  record.extension = asInteger(field(&CallFields::Extension));
  record.trunk = asInteger(field(&CallFields::Trunk));
  record.extensionText = std::to_string(record.extension);
  record.trunkText = std::to_string(record.trunk);
  record.incoming = asInteger(field(&CallFields::Incoming));
  record.accountCode = field(&CallFields::AccountCode).toText();
  record.dialledNumber = field(&CallFields::DialNumber).toText();
  record.pulses = asInteger(field(&CallFields::Pulses));
  record.setDuration(field(&CallFields::TotalTime).toLong() + options_.addSeconds);
  return record;
}

bool Recalculation::recalcRow() {
  exchange::CallRecord record = recordOfRow();
  tariff::PricingContext context;
  if (!trunks_.accept(record, context)) return false;
  CallRow row(calls_, fields_, CallRow::Begin::Edit);
  if (!apply(row, record, context)) return false;
  row.write();
  return true;
}

// False when the call is so short that it is ignored: the row stays as it was.
bool Recalculation::apply(CallRow& row, exchange::CallRecord& record, tariff::PricingContext& context) {
  if (options_.reprice || options_.addSeconds != 0) {
    double priceRef = 0;
    if (!enrichment_.setTariff(row, record, context, priceRef)) return false;
  }
  if (options_.reconvert && record.incoming == 0) reconvert(row);
  if (options_.department) enrichment_.setDepartment(row, record);
  if (options_.owner) enrichment_.setOwner(row, record);
  if (options_.names) enrichment_.setName(row, record, context);
  if (options_.addSeconds != 0) row.set(&CallFields::TotalTime, record.durationInSeconds());
  return true;
}

void Recalculation::reconvert(CallRow& row) {
  const double price = row.get(&CallFields::Price).toDouble();
  const std::string currency = row.get(&CallFields::Currency).toText();
  row.set(&CallFields::Price_Ref, parts_.currencies.Convert(price, currency));
}

// Goes through the rows in transactions of its own. False when the operator stopped it.
bool recalcRows(Recalculation& recalculation, jet::Recordset& calls, const ExchangeParts& parts, RecalcResult& result) {
  while (!calls.eof()) {
    jet::Transaction transaction(parts.main);
    const CallViews views(parts);
    bool goOn = true;
    try {
      for (std::int64_t i = 0; goOn && i < kRowsPerTransaction && !calls.eof(); ++i) {
        goOn = result.rows % kRowsPerProgressStep != 0 || parts.person.progressStep(result.rows / kRowsPerProgressStep);
        if (!goOn) break;
        if (recalculation.recalcRow()) ++result.changed;
        ++result.rows;
        calls.moveNext();
      }
    } catch (const jet::Error&) {
      transaction.commit();  // the work done before the fault stays
      throw;
    }
    transaction.commit();
    if (!goOn) return false;
  }
  return true;
}

void recalcPeriod(const ExchangeParts& parts, const RecalcOptions& options, RecalcResult& result) {
  const auto calls = parts.main.openRecordset(recalcQuery(options));
  const bool empty = calls->bof() && calls->eof();
  if (!empty) calls->moveLast();
  const platform::Progress window = showUpdate(parts, empty ? 0 : calls->recordCount() / kRowsPerProgressStep);
  if (empty) return;
  calls->moveFirst();
  Recalculation recalculation(parts, options, *calls);
  result.cancelled = !recalcRows(recalculation, *calls, parts, result);
}

}  // namespace

RecalcResult Recalc(const ExchangeParts& parts, const RecalcOptions& options) {
  RecalcResult result;
  if (endsQuotes(options.provider)) {
    // It would choose other calls than the provider's.
    result.error = base::format(
        "The apostrophe in the provider's name %s breaks the query; nothing was changed. Write "
        "each apostrophe twice.",
        options.provider);
    return result;
  }
  try {
    recalcPeriod(parts, options, result);
  } catch (const jet::Error& error) {
    result.error = error.description();
    try {
      parts.log.WriteLog(security::LogError, "Recalc: %s", result.error);
    } catch (const jet::Error&) {
      // The database takes no entry either; the result has the text.
    }
  }
  return result;
}

}  // namespace ingest
