#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exchange/call_record.h"
#include "exchange/party_definitions.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/column_places.h"
#include "jet/prepared_select.h"
#include "platform/operator.h"
#include "security/audit_log.h"
#include "tariff/charge_bands.h"
#include "tariff/price_trace.h"
#include "tariff/tariff_database.h"

namespace tariff {

// What recording hands to the price calculation and gets back from it.
struct PricingContext {
  std::string number;    // normalised for the trunk's provider; filled by recording, not touched by CalcPrice
  std::string profile;   // of the trunk; replaced by CalcPrice when it finds the trunk
  std::string provider;  // likewise
  std::string area = "???";
  double price = 0;      // in `currency`
  std::string currency;  // code of the charge band, empty when there was none
};

// Prices calls against the tariff database. Keeps references to everything it is given; all must outlive it.
class PriceCalculator {
 public:
  // `tariffs` may be null: every call then costs 0 and is reported as without a tariff rule.
  PriceCalculator(foundation::ConfigManager& config, const exchange::PartyDefinitions& parties, TariffDatabase* tariffs,
                  security::AuditLog& log, const foundation::LanguageFile& language, platform::Operator& person);

  // Prices one call. Fills the output block, sets `ignore` to 1 for a call at or under "Ignore_short_calls" (else 0),
  // and shortens the record's seconds when "Seconds_not_charged" says so. The result tells why a call has no price.
  // Tariff gaps are logged and signalled, never thrown; database faults are: jet::Error, also for a number that breaks
  // a statement (an apostrophe in it).
  //
  // With a trace the call is an enquiry: each step is noted in it, and a gap is neither logged nor signalled.
  PriceOutcome CalcPrice(exchange::CallRecord& record, PricingContext& output, std::int32_t& ignore,
                         PriceTrace* trace = nullptr);

  // The number in the international form that a provider's calls are looked up by.
  [[nodiscard]] std::string normalise(std::string_view number, const exchange::ProviderDefinition& provider) const;

 private:
  struct Call;

  [[nodiscard]] bool isIgnoredAsShort(Call& call) const;
  void findTrunk(Call& call, PricingContext& output) const;
  void findProvider(Call& call, PricingContext& output) const;
  bool findProfile(Call& call);
  void takeFreeSecondsOff(Call& call) const;
  [[nodiscard]] bool isLocal(const Call& call) const;
  bool findDestination(Call& call);
  PriceOutcome priceByPulses(const Call& call, PricingContext& output);
  PriceOutcome priceByTime(const Call& call, PricingContext& output);
  jet::Snapshot openTimeCharges(const Call& call, DayEncoding encoding, const ChargedInterval& interval);
  PriceOutcome reportNoRule(const Call& call, PriceOutcome outcome);

  // The profile that was in force on a day, valid while the table has that version: calls of one trunk and day follow
  // each other.
  struct KnownProfile {
    std::uint64_t version = 0;
    base::DateTime day;
    std::int32_t providerId = 0;
    std::string name;
    std::int64_t id = 0;
    std::int64_t freeMinutes = 0;
  };
  KnownProfile& rememberedProfile(const Call& call);

  // The settings that every price asks for, as of their version.
  struct KnownSettings {
    std::uint64_t version = 0;
    std::int32_t ignoredUpTo = 0;  // seconds, "Ignore_short_calls"; -1: none is ignored
    bool secondsNotCharged = false;
  };
  void readSettings();

  foundation::ConfigManager& config_;
  const exchange::PartyDefinitions& parties_;
  TariffDatabase* tariffs_;
  security::AuditLog& log_;
  const foundation::LanguageFile& language_;
  platform::Operator& person_;
  KnownSettings settings_;
  std::array<KnownProfile, 32> profiles_;
  jet::PreparedSelect dialledDestination_;
  jet::PreparedSelect localDestination_;
  jet::PreparedSelect normalisedDestination_;
  jet::PreparedSelect pulseCharge_;
  // By encoding and number of days in the condition.
  std::array<std::array<std::optional<jet::PreparedSelect>, kMostDaysInCondition>, 2> timeCharges_;
  std::vector<base::FormatArgument> chargeValues_;  // kept for its memory
  jet::ColumnPlaces<8> chargeColumns_;
  bool destinationBeeped_ = false;  // the missing destination is heard once a run only
};

}  // namespace tariff
