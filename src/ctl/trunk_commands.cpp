#include <limits>

#include "base/text.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/definition_edit.h"

namespace ctl {

namespace trunk_commands {

using exchange::tagTRUNKINFO;

constexpr std::int64_t kMostId = std::numeric_limits<std::int32_t>::max();

bool isFree(const tagTRUNKINFO& entry) {
  return entry.providerId <= 0;
}

std::string providerName(Context& context, std::int32_t id) {
  const exchange::ProviderDefinition* provider = context.parties().findProvider(id);
  return provider == nullptr ? std::string() : provider->name;
}

int listTrunks(const Invocation& call) {
  Table table({"Trunk", "Label", "Provider", "Name", "Profile", "Pulses", "Ignore zero pulses"});
  for (const tagTRUNKINFO& entry : call.context.parties().trunks) {
    if (isFree(entry) && !call.arguments.has("--all")) continue;
    table.add({entry.trunk, entry.label, std::int64_t{entry.providerId}, providerName(call.context, entry.providerId),
               entry.profile, std::int64_t{entry.pulses}, std::int64_t{entry.ignoreZeroPulses}});
  }
  call.print(table);
  return 0;
}

// The trunk's entry, else the first free one, which every trunk of the exchange may take.
tagTRUNKINFO& entryFor(std::vector<tagTRUNKINFO>& trunks, const std::string& number) {
  requireCode("The trunk", number);
  auto found = std::find_if(trunks.begin(), trunks.end(),
                            [&](const tagTRUNKINFO& e) { return e.trunk == number && !isFree(e); });
  if (found == trunks.end()) found = std::find_if(trunks.begin(), trunks.end(), isFree);
  if (found == trunks.end()) {
    throw Failure(base::format("All %d trunk entries are taken. Delete one first.", exchange::kTrunkEntries));
  }
  if (isFree(*found)) *found = tagTRUNKINFO{.label = "-", .trunk = number, .profile = {}};
  return *found;
}

jet::Database& tariffDatabase(Context& context) {
  tariff::TariffDatabase* tariffs = context.document().smdr().tariffs();
  if (tariffs == nullptr) throw Failure("There is no tariff database, which holds the providers.");
  return tariffs->database();
}

bool hasProfile(Context& context, std::int32_t providerId, const std::string& profile) {
  const jet::Snapshot names = tariffDatabase(context).openSnapshot(
      base::format("select distinct(profile_name) from profiles where provider_id = %d", providerId));
  for (std::size_t row = 0; row < names.rowCount(); ++row) {
    if (base::equalFoldAscii(names.at(row, 0).toText(), profile)) return true;
  }
  return false;
}

// What is stored as asked and yet prices no call. Calls carry their trunk as an integer, and no other text equals it.
void warnOfUnpricedCalls(Context& context, const tagTRUNKINFO& entry) {
  if (std::to_string(base::leadingInteger(entry.trunk)) != entry.trunk) {
    context.person().messageBox(
        base::format("No call will be found on trunk %s: calls carry a plain number, without letters, blanks or zeros "
                     "in front.",
                     entry.trunk));
  }
  if (!hasProfile(context, entry.providerId, entry.profile)) {
    context.person().messageBox(
        base::format("Provider %d has no profile \"%s\": calls on trunk %s cost nothing until it has one, or until the "
                     "trunk names another (--profile).",
                     entry.providerId, entry.profile, entry.trunk));
  }
}

int setTrunk(const Invocation& call) {
  const Arguments& arguments = call.arguments;
  DefinitionEdit edit(call.context);
  tagTRUNKINFO& entry = entryFor(edit.lists().trunks, arguments.text("TRUNK"));
  takeOver(arguments, "--label", entry.label);
  takeOver(arguments, "--profile", entry.profile);
  entry.providerId = static_cast<std::int32_t>(arguments.integer("--provider", entry.providerId, 1, kMostId));
  entry.pulses = static_cast<std::int32_t>(arguments.integer("--pulses", entry.pulses, 0, 1));
  entry.ignoreZeroPulses =
      static_cast<std::int32_t>(arguments.integer("--ignore-zero-pulses", entry.ignoreZeroPulses, 0, 1));
  if (isFree(entry)) throw WrongUsage("A new trunk needs a provider: give --provider ID.");
  if (call.context.parties().findProvider(entry.providerId) == nullptr) {
    throw Failure(base::format("There is no provider %d. See tallyctl provider list.", entry.providerId));
  }
  edit.save();
  warnOfUnpricedCalls(call.context, entry);
  return 0;
}

int deleteTrunk(const Invocation& call) {
  const std::string number = call.arguments.text("TRUNK");
  DefinitionEdit edit(call.context);
  bool found = false;
  for (tagTRUNKINFO& entry : edit.lists().trunks) {
    if (entry.trunk != number || isFree(entry)) continue;
    // Entries keep their places; a free one takes the next new trunk.
    entry = tagTRUNKINFO{.label = "-", .trunk = "", .providerId = -1, .profile = {}};
    found = true;
  }
  if (!found) throw Failure(base::format("There is no trunk %s.", number));
  edit.save();
  return 0;
}

int listProviders(const Invocation& call) {
  Table table({"ID", "Name", "Local prefixes", "Free seconds"});
  for (const exchange::ProviderDefinition& provider : call.context.parties().providers) {
    table.add({std::int64_t{provider.id}, provider.name, provider.localPrefixes, std::int64_t{provider.freeSeconds}});
  }
  call.print(table);
  return 0;
}

std::int32_t providerId(const Arguments& arguments) {
  return static_cast<std::int32_t>(arguments.integer("ID", 0, 1, kMostId));
}

// Adds the provider's row or writes its name.
void storeProvider(jet::Database& tariffs, std::int32_t id, const std::optional<std::string>& name) {
  const auto rows = tariffs.openRecordset("SELECT * FROM providers");
  rows->findFirst(base::format("provider_id = %d", id));
  if (rows->noMatch()) {
    if (!name) throw WrongUsage("A new provider needs a name: give --name.");
    rows->addNew();
    rows->set("provider_id", id);
  } else {
    rows->edit();
  }
  if (name) rows->set("provider_name", *name);
  rows->update();
}

int setProvider(const Invocation& call) {
  const Arguments& arguments = call.arguments;
  const std::int32_t id = providerId(arguments);
  Context& context = call.context;
  constexpr std::int64_t kMostFreeSeconds = 86400;
  const auto freeSeconds = static_cast<std::int32_t>(arguments.integer("--free-seconds", 0, 0, kMostFreeSeconds));
  storeProvider(tariffDatabase(context), id, arguments.find("--name"));
  bool written = true;
  if (const auto prefixes = arguments.find("--local-prefixes")) {
    written = context.config().WriteConfigString(*prefixes, foundation::keys::providers::PrefixeLocale.of(id));
  }
  if (arguments.has("--free-seconds")) {
    written = context.config().WriteConfigInt(freeSeconds, foundation::keys::providers::SecNetax.of(id)) && written;
  }
  if (!written) throw Failure("The database is open read-only; the settings were not written.");
  return 0;
}

int deleteProvider(const Invocation& call) {
  const std::int32_t id = providerId(call.arguments);
  for (const tagTRUNKINFO& trunk : call.context.parties().trunks) {
    if (trunk.providerId != id) continue;
    throw Failure(
        base::format("Trunk %s belongs to provider %d. Give it another one first: tallyctl trunk set %s "
                     "--provider ID",
                     trunk.trunk, id, trunk.trunk));
  }
  if (tariffDatabase(call.context).execute(base::format("delete from providers where provider_id = %d", id)) == 0) {
    throw Failure(base::format("There is no provider %d.", id));
  }
  return 0;
}

constexpr OptionSpec kTrunkList[] = {{.name = "--all", .takes = Takes::Nothing, .help = "The free entries too"}};
constexpr OptionSpec kTrunk[] = {{.name = "TRUNK", .help = "Number as the exchange reports it", .required = true}};
constexpr OptionSpec kTrunkFields[] = {
    kTrunk[0],
    {.name = "--label", .help = "The line's telephone number or name"},
    {.name = "--provider", .help = "Provider", .valueName = "ID"},
    {.name = "--profile", .help = "Tariff profile of the provider"},
    {.name = "--pulses", .help = "1: priced by pulses", .valueName = "0|1"},
    {.name = "--ignore-zero-pulses", .help = "1: calls without pulses are not priced", .valueName = "0|1"},
};
constexpr OptionSpec kProvider[] = {{.name = "ID", .help = "Number of the provider", .required = true}};
constexpr OptionSpec kProviderFields[] = {
    kProvider[0],
    {.name = "--name", .help = "Name of the provider"},
    {.name = "--local-prefixes", .help = "Prefixes of local numbers, separated by , ; or blank"},
    {.name = "--free-seconds", .help = "Seconds not charged at the start of a call", .valueName = "N"},
};

constexpr Command kTrunkCommands[] = {
    {"trunk list", "List the trunks", "tallyctl trunk list", kTrunkList, kViewSettings, listTrunks},
    {"trunk set", "Define a trunk or change it",
     "tallyctl trunk set 9 --label \"021 555 0109\" --provider 1 --profile Standard", kTrunkFields, kChangeSettings,
     setTrunk},
    {"trunk delete", "Free a trunk's entry", "tallyctl trunk delete 9", kTrunk, kChangeSettings, deleteTrunk},
};

constexpr Command kProviderCommands[] = {
    {"provider list", "List the providers", "tallyctl provider list", {}, kViewSettings, listProviders},
    {"provider set", "Add a provider or change it",
     "tallyctl provider set 4 --name \"Northline\" --local-prefixes 21,31 --free-seconds 3", kProviderFields,
     kChangeSettings, setProvider},
    {"provider delete", "Delete a provider that no trunk uses", "tallyctl provider delete 4", kProvider,
     kChangeSettings, deleteProvider},
};

}  // namespace trunk_commands

std::span<const Command> trunkCommands() {
  return trunk_commands::kTrunkCommands;
}
std::span<const Command> providerCommands() {
  return trunk_commands::kProviderCommands;
}

}  // namespace ctl
