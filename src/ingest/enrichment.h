#pragma once

#include "exchange/call_record.h"
#include "ingest/call_row.h"
#include "ingest/exchange_parts.h"
#include "jet/prepared_select.h"
#include "tariff/price.h"

namespace ingest {

// Adds to a row of `Calls` what the exchange does not report. Shared by recording and repricing.
class Enrichment {
 public:
  explicit Enrichment(const ExchangeParts& parts);

  // From now on a fault of the phonebook is logged again, once.
  void beginRun() { phonebookFault_.clear(); }
  [[nodiscard]] const std::string& phonebookFault() const { return phonebookFault_; }

  // `Name`, from the contacts or else the phonebook, of a number longer than 3 characters.
  void setName(CallRow& row, const exchange::CallRecord& record, const tariff::PricingContext& context);
  // `Price`, `Currency`, `Price_Ref`, `Area`, `Country`, `Profile`, `Provider`. May shorten the record
  // ("Seconds_not_charged"). False when the call is so short that it is ignored. `priceRef` takes the price in the
  // reference currency.
  bool setTariff(CallRow& row, exchange::CallRecord& record, tariff::PricingContext& context, double& priceRef);
  // `Department`, in the order of setting "Sursa_departament".
  void setDepartment(CallRow& row, const exchange::CallRecord& record);
  // `Owner` and `Folder` of the client that owns the call.
  void setOwner(CallRow& row, const exchange::CallRecord& record);

 private:
  [[nodiscard]] std::optional<std::string> nameOf(std::string_view normalisedNumber);
  [[nodiscard]] std::optional<std::string> nameInPhonebook(std::string_view normalisedNumber);

  ExchangeParts parts_;
  jet::PreparedSelect contactsByNumber_;
  std::string phonebookFault_;  // of this run; empty while there is none
};

}  // namespace ingest
