#include "server/tariff_trial.h"

#include "base/printf.h"

namespace server {

namespace {

base::DateTime monthBefore(base::DateTime now) {
  const base::DateTime::Parts parts = now.plusDays(-now.parts().day).parts();
  return *base::DateTime::fromParts(parts.year, parts.month, 1);
}

// The new profile holds from the month's first day, and none of that name after it.
void moveStart(jet::Database& tariffs, std::int32_t profileId, std::int32_t providerId, const std::string& profile,
               base::DateTime from) {
  tariffs.execute(
      base::format("delete from profiles where provider_id = %d and profile_name = '%s' and profile_id <> %d and "
                   "profile_start_date >= %s",
                   providerId, profile, profileId, from.format(jet::kDateLiteral)));
  tariffs.execute(base::format("update profiles set profile_start_date = %s where profile_id = %d",
                               from.format(jet::kDateLiteral), profileId));
}

exchange::CallRecord recordOf(const std::vector<jet::Value>& row) {
  exchange::CallRecord record;
  record.setStart(*row[0].toDateTime());
  record.dialledNumber = row[1].toText();
  record.trunk = static_cast<std::int32_t>(row[2].toLong());
  record.setDuration(row[3].toLong());
  record.pulses = static_cast<std::int32_t>(row[4].toLong());
  return record;
}

void addCall(CServerDoc& document, const std::vector<jet::Value>& row, TariffTrial& trial) {
  exchange::CallRecord record = recordOf(row);
  tariff::PricingContext output;
  tariff::PriceTrace trace;  // an enquiry: a gap is not logged
  std::int32_t ignored = 0;
  if (record.dialledNumber.find('\'') != std::string::npos) return;  // breaks the statement; no such call is stored
  document.smdr().prices().CalcPrice(record, output, ignored, &trace);
  ++trial.calls;
  trial.before += row[5].toDouble();
  trial.after += document.currencies().Convert(output.price, output.currency);
}

}  // namespace

TariffTrial tryOnLastMonth(CServerDoc& document, tariff::PriceListImport& plan,
                           const exchange::ProviderDefinition& provider, const std::string& profile) {
  tariff::TariffDatabase& tariffs = *document.smdr().tariffs();
  TariffTrial trial{.from = monthBefore(document.app().surroundings().clock.now())};
  const base::DateTime end = monthBefore(trial.from.plusDays(62));  // the first of the month after
  {
    jet::Transaction undone(tariffs.database());
    moveStart(tariffs.database(), plan.apply(), provider.id, profile, trial.from);
    document.database().forEachRow(
        base::format("select [DateTime], DialNumber, Trunk, TotalTime, Pulses, Price_Ref from Calls where Incoming = 0 "
                     "and [DateTime] >= %s and [DateTime] < %s and Provider = '%s' and Profile = '%s'",
                     trial.from.format(jet::kDateLiteral), end.format(jet::kDateLiteral), provider.name, profile),
        [&](const std::vector<jet::Value>& row) {
          addCall(document, row, trial);
          return true;
        });
  }
  tariffs.detectDayEncoding();
  return trial;
}

}  // namespace server
