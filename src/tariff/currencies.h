#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/operator.h"

namespace tariff {

struct CURRENCYDESC {
  std::string name;  // code as in `charge_currency`, at most 7 characters
  std::int32_t id = 0;
  double ratio = 0;                          // see reverse; 0: not known, amounts convert to 0
  std::optional<base::DateTime> dateModify;  // of the rate; nothing when the stored value is no date
  bool isDefault = false;
  bool reverse = false;  // false: amount * ratio is in the default currency; true: amount / ratio

  bool operator==(const CURRENCYDESC&) const = default;
};

// The currencies and their rates against the default currency: table `Currency`, held whole in memory in table order.
class Currencies {
 public:
  Currencies(foundation::ConfigManager& config, const foundation::LanguageFile& language, platform::Operator& person)
      : config_(config), language_(language), person_(person) {}

  // Both throw jet::Error. Saving replaces the table's rows in one transaction: where other copies may have the
  // database open, part of a foundation::DefinitionChange.
  void load(jet::Database& main);
  void save(jet::Database& main);
  // Loads again when another copy may have changed the table; true when it did. Cheap when nothing changed.
  bool reloadIfChanged(jet::Database& main);
  // What is held counts as out of date.
  void forget() noexcept { loadedVersion_ = 0; }

  // Hands out the next currency id and counts setting "LastCurrencyID" on. Without that setting the operator is told.
  std::int32_t NextId();

  // The first entry marked as default; an empty entry (empty name) when none is.
  [[nodiscard]] const CURRENCYDESC& Default() const;
  // Index into entries; -1 when there is none.
  [[nodiscard]] int findById(std::int32_t id) const;
  [[nodiscard]] int findByName(std::string_view name) const;  // A-Z without regard to case
  // An amount of the named currency in the default currency; 0 when the currency or its rate is not known.
  [[nodiscard]] double Convert(double amount, std::string_view name) const;
  // Value of one unit of the named currency in the default currency.
  [[nodiscard]] double rate(std::string_view name) const { return Convert(1, name); }

  std::vector<CURRENCYDESC> entries;

 private:
  foundation::ConfigManager& config_;
  const foundation::LanguageFile& language_;
  platform::Operator& person_;
  std::uint64_t loadedVersion_ = 0;
};

}  // namespace tariff
