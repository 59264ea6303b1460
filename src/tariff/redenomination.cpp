#include "tariff/redenomination.h"

#include <optional>

#include "foundation/definition_change.h"

namespace tariff {

namespace {

constexpr const char* kOldCode = "ROL";
constexpr const char* kNewCode = "RON";
constexpr double kFactor = 10000;

constexpr const char* kDone =
    "Aplicatia a fost actualizata cu valuta RON (leu greu).\n"
    "Convorbirile costul exprimat in ROL al convorbirilor si tarifelor existente a fost convertit in RON.";

bool applies(const Currencies& currencies, foundation::ConfigManager& config) {
  return config.ReadConfigString(foundation::keys::CountryCode) == "40" && currencies.entries.size() > 1 &&
         currencies.findByName(kNewCode) < 0 && !config.DatabaseReadOnly();
}

// One unit becomes worth a ten-thousandth of what it was, in the new default currency.
void divideRate(CURRENCYDESC& currency) {
  currency.ratio = currency.reverse ? currency.ratio * kFactor : currency.ratio / kFactor;
}

// Adds RON. Where ROL was known, RON takes over its place as the currency that rates are quoted in; elsewhere its rate
// is not known until the operator enters it.
void addNewLeu(Currencies& currencies, int old, base::DateTime today) {
  CURRENCYDESC added{.name = kNewCode, .id = currencies.NextId(), .dateModify = today};
  if (old >= 0) {
    CURRENCYDESC& previous = currencies.entries[static_cast<std::size_t>(old)];
    added.ratio = 1;
    added.isDefault = previous.isDefault;
    previous.isDefault = false;
    for (CURRENCYDESC& other : currencies.entries) divideRate(other);
  }
  currencies.entries.push_back(std::move(added));
}

void convertCalls(jet::Database& main, bool oldKnown) {
  if (oldKnown) main.execute("UPDATE Calls SET Price_Ref = Price_Ref / 10000");
  main.execute("UPDATE Calls SET Price = Price / 10000 WHERE [Currency]='ROL'");
  main.execute("UPDATE Calls SET [Currency]='RON' WHERE [Currency]='ROL'");
}

void convertCharges(jet::Database& tariffs) {
  jet::Transaction transaction(tariffs);
  tariffs.execute(
      "UPDATE charges SET charge_value = charge_value / 10000, charge_pulse_value = charge_pulse_value / 10000 "
      "WHERE charge_currency = 'ROL'");
  tariffs.execute("UPDATE charges SET charge_currency = 'RON' WHERE charge_currency = 'ROL'");
  transaction.commit();
}

}  // namespace

bool redenominate(jet::Database& main, jet::Database* tariffs, Currencies& currencies,
                  foundation::ConfigManager& config, const platform::Clock& clock, platform::Operator& person) {
  if (!applies(currencies, config)) return false;
  std::vector<CURRENCYDESC> before = currencies.entries;
  bool oldKnown = false;
  try {
    foundation::DefinitionChange change(currencies, main);
    if (!applies(currencies, config)) return false;  // another copy was faster
    before = currencies.entries;
    const int old = currencies.findByName(kOldCode);
    oldKnown = old >= 0;
    addNewLeu(currencies, old, clock.now().midnight());
    convertCalls(main, oldKnown);
    // The tariffs become durable first: done twice, their conversion finds nothing more to convert; the calls' is
    // held off by the row of RON, which is committed with them.
    if (tariffs != nullptr) convertCharges(*tariffs);
    change.save();
  } catch (...) {
    currencies.entries = before;
    throw;
  }
  if (oldKnown) person.messageBox(kDone);
  return true;
}

}  // namespace tariff
