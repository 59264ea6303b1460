#include "base/characters.h"
#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "foundation/definition_change.h"

namespace ctl {

namespace currency_commands {

using tariff::Currencies;
using tariff::CURRENCYDESC;

constexpr std::size_t kMostNameCharacters = 7;

int list(const Invocation& call) {
  Table table({"Name", "Rate", "Reverse", "Changed", "Default"});
  for (const CURRENCYDESC& currency : call.context.currencies().entries) {
    table.add({currency.name, currency.ratio, std::string(currency.reverse ? "yes" : "no"),
               currency.dateModify ? currency.dateModify->format("%d.%m.%Y") : std::string(),
               std::string(currency.isDefault ? "yes" : "no")});
  }
  call.print(table);
  return 0;
}

std::size_t indexOf(const Currencies& currencies, const std::string& name) {
  const int index = currencies.findByName(name);
  if (index < 0) throw Failure(base::format("There is no currency %s. See tallyctl currency list.", name));
  return static_cast<std::size_t>(index);
}

CURRENCYDESC& findOrAdd(Currencies& currencies, const std::string& name) {
  const int index = currencies.findByName(name);
  if (index >= 0) return currencies.entries[static_cast<std::size_t>(index)];
  if (name.empty() || base::characterCount(name) > kMostNameCharacters) {
    throw WrongUsage(base::format("A currency's name has 1 to %d letters.", kMostNameCharacters));
  }
  const std::int32_t id = currencies.NextId();
  return currencies.entries.emplace_back(CURRENCYDESC{.name = name, .id = id, .dateModify = {}});
}

int set(const Invocation& call) {
  const double rate = call.arguments.number("--rate", 0);
  if (!(rate > 0)) throw WrongUsage("--rate takes a number above 0.");
  call.context.requireWritable();
  Currencies& currencies = call.context.currencies();
  foundation::DefinitionChange change(currencies, call.context.main());
  CURRENCYDESC& currency = findOrAdd(currencies, call.arguments.text("NAME"));
  if (currency.isDefault && rate != 1) {
    throw Failure(
        base::format("%s is the default currency, whose rate is 1. Make another one the default first: "
                     "tallyctl currency default NAME",
                     currency.name));
  }
  currency.ratio = rate;
  currency.reverse = call.arguments.has("--reverse");
  currency.dateModify = call.context.clock().now();
  change.save();
  return 0;
}

// Rates are against the default currency; they stay as they are and have to be set again.
int setDefault(const Invocation& call) {
  call.context.requireWritable();
  Currencies& currencies = call.context.currencies();
  foundation::DefinitionChange change(currencies, call.context.main());
  const std::size_t chosen = indexOf(currencies, call.arguments.text("NAME"));
  for (std::size_t i = 0; i < currencies.entries.size(); ++i) currencies.entries[i].isDefault = i == chosen;
  CURRENCYDESC& currency = currencies.entries[chosen];
  currency.ratio = 1;
  currency.reverse = false;
  change.save();
  if (currencies.entries.size() > 1) {
    call.context.person().messageBox(
        base::format("Set the rates of the other currencies against %s now, and recalculate the stored calls "
                     "(tallyctl recalc --reconvert).",
                     currency.name));
  }
  return 0;
}

int remove(const Invocation& call) {
  call.context.requireWritable();
  Currencies& currencies = call.context.currencies();
  foundation::DefinitionChange change(currencies, call.context.main());
  const std::size_t chosen = indexOf(currencies, call.arguments.text("NAME"));
  if (currencies.entries[chosen].isDefault) {
    throw Failure("The default currency cannot be deleted. Make another one the default first.");
  }
  currencies.entries.erase(currencies.entries.begin() + static_cast<std::ptrdiff_t>(chosen));
  change.save();
  return 0;
}

constexpr OptionSpec kName[] = {{.name = "NAME", .help = "Code of the currency, as in the tariffs", .required = true}};
constexpr OptionSpec kFields[] = {
    kName[0],
    {.name = "--rate", .help = "Value of one unit in the default currency", .required = true, .valueName = "R"},
    {.name = "--reverse", .takes = Takes::Nothing, .help = "The rate is units for one of the default currency"},
};

constexpr Command kCommands[] = {
    {"currency list", "List the currencies", "tallyctl currency list", {}, kViewSettings, list},
    {"currency set", "Add a currency or change its rate", "tallyctl currency set EUR --rate 4.97", kFields,
     kChangeSettings, set},
    {"currency default", "Make a currency the one that prices are totalled in", "tallyctl currency default RON", kName,
     kChangeSettings, setDefault},
    {"currency delete", "Delete a currency", "tallyctl currency delete USD", kName, kChangeSettings, remove},
};

}  // namespace currency_commands

std::span<const Command> currencyCommands() {
  return currency_commands::kCommands;
}

}  // namespace ctl
