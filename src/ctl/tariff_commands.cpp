#include <algorithm>
#include <ostream>

#include "base/text.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/definition_edit.h"
#include "ctl/json_text.h"
#include "security/restriction.h"
#include "server/tariff_trial.h"
#include "tariff/price_list_file.h"
#include "tariff/price_list_import.h"

namespace ctl {

namespace tariff_commands {

using tariff::PriceChange;
using tariff::PriceChangeKind;

struct KindWord {
  PriceChangeKind kind;
  const char* word;
};
constexpr KindWord kKindWords[] = {{PriceChangeKind::Added, "added"},     {PriceChangeKind::Dearer, "dearer"},
                                   {PriceChangeKind::Cheaper, "cheaper"}, {PriceChangeKind::Gone, "gone"},
                                   {PriceChangeKind::Same, "same"},       {PriceChangeKind::Kept, "kept"}};

const char* wordOf(PriceChangeKind kind) {
  return std::ranges::find(kKindWords, kind, &KindWord::kind)->word;
}

bool isWorthShowing(const PriceChange& change) {
  return change.kind != PriceChangeKind::Same && change.kind != PriceChangeKind::Kept;
}

tariff::PriceList readList(const Invocation& call) {
  const Arguments& arguments = call.arguments;
  Context& context = call.context;
  tariff::PriceListOptions options{
      .countryCode = context.parties().countryCode,
      .columns = tariff::readColumnHeadings(arguments.text("--columns")),
      .currency = arguments.text("--currency", context.currencies().Default().name),
      .codepage = static_cast<int>(arguments.integer("--codepage", context.language().codepage(), 1, 65'535))};
  if (const auto increment = arguments.find("--increment")) {
    tariff::readIncrement(*increment, options.firstSeconds, options.nextSeconds);
  }
  return tariff::readPriceListFile(arguments.text("FILE"), options, context.currencies());
}

// By number or by name.
const exchange::ProviderDefinition& providerOf(const Invocation& call) {
  const std::string wanted = call.arguments.text("--provider");
  const auto& providers = call.context.parties().providers;
  const auto found = std::ranges::find_if(providers, [&](const exchange::ProviderDefinition& provider) {
    return std::to_string(provider.id) == wanted || base::equalFold(provider.name, wanted);
  });
  if (found == providers.end()) {
    throw Failure(base::format("There is no provider %s. See tallyctl provider list.", wanted));
  }
  return *found;
}

void warnWhereNoTrunkUses(const Invocation& call, const exchange::ProviderDefinition& provider,
                          const std::string& profile) {
  const bool used = std::ranges::any_of(call.context.parties().trunks, [&](const exchange::tagTRUNKINFO& trunk) {
    return trunk.providerId == provider.id && base::equalFold(trunk.profile, profile);
  });
  if (used) return;
  call.context.person().messageBox(
      base::format("No trunk of %s has the profile \"%s\": these prices hold for no call until one has it (tallyctl "
                   "trunk set TRUNK --profile).",
                   provider.name, profile));
}

nlohmann::ordered_json amount(const std::optional<double>& value) {
  return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

std::string textOf(const tariff::PriceListNote& note) {
  return (note.leftOut ? "left out, " : "") + note.what.english();
}

void printJson(std::ostream& out, const tariff::PriceListImport& plan, const tariff::PriceList& list,
               const std::optional<server::TariffTrial>& trial) {
  nlohmann::ordered_json page = {{"dry_run", trial.has_value()}, {"rows", list.rows}};
  for (const KindWord& kind : kKindWords) page[kind.word] = plan.count(kind.kind);
  if (trial) {
    page["last_month"] = {{"from", trial->from.stored().substr(0, 10)},
                          {"calls", trial->calls},
                          {"before", trial->before},
                          {"after", trial->after}};
  }
  auto changes = nlohmann::ordered_json::array();
  for (const PriceChange& change : plan.changes()) {
    if (!isWorthShowing(change)) continue;
    changes.push_back({{"change", wordOf(change.kind)},
                       {"prefix", change.prefix},
                       {"name", change.name},
                       {"before", amount(change.before)},
                       {"after", amount(change.after)},
                       {"percent", amount(change.percent())}});
  }
  page["changes"] = std::move(changes);
  auto notes = nlohmann::ordered_json::array();
  for (const tariff::PriceListNote& note : list.notes) notes.push_back({{"line", note.line}, {"text", textOf(note)}});
  page["notes"] = std::move(notes);
  out << jsonText(page) << '\n';
}

std::string priceText(const std::optional<double>& price) {
  return price ? base::format("%.4f", *price) : std::string("-");
}

void printText(const Invocation& call, const tariff::PriceListImport& plan, const tariff::PriceList& list,
               const std::optional<server::TariffTrial>& trial) {
  const std::string& currency = call.context.currencies().Default().name;
  if (trial) {
    Table table({"Change", "Prefix", "Destination", "Before", "After", "Percent"});
    for (const PriceChange& change : plan.changes()) {
      if (!isWorthShowing(change)) continue;
      const auto percent = change.percent();
      table.add({std::string(wordOf(change.kind)), change.prefix, change.name, priceText(change.before),
                 priceText(change.after), percent ? base::format("%+.1f%%", *percent) : std::string("-")});
    }
    call.print(table);
  }
  if (call.global.format == TableFormat::Csv) return;
  for (const tariff::PriceListNote& note : list.notes)
    call.out << base::format("line %d: %s\n", note.line, textOf(note));
  if (list.notesInAll > static_cast<std::int64_t>(list.notes.size())) {
    call.out << base::format("... %d such lines in all\n", list.notesInAll);
  }
  call.out << base::format("%d rows:", list.rows);
  const char* separator = " ";
  for (const KindWord& kind : kKindWords) {
    call.out << separator << base::format("%d %s", plan.count(kind.kind), kind.word);
    separator = ", ";
  }
  call.out << '\n';
  if (!trial) return;
  const auto change = trial->before == 0 ? 0 : (trial->after - trial->before) / trial->before * 100;
  call.out << base::format("The %d calls of %s cost %.2f %s; under this list they would have cost %.2f (%+.1f%%).\n",
                           trial->calls, trial->from.format("%m.%Y"), trial->before, currency, trial->after, change);
  call.out << "Nothing was changed. Without --dry-run the list is taken over.\n";
}

int importList(const Invocation& call) {
  Context& context = call.context;
  const exchange::ProviderDefinition& provider = providerOf(call);
  const std::string profile = call.arguments.text("--profile");
  requirePlain("--profile", profile);
  tariff::TariffDatabase* tariffs = context.document().smdr().tariffs();
  if (tariffs == nullptr) throw Failure("There is no tariff database to import into.");
  const bool dryRun = call.arguments.has("--dry-run");
  // The trial prices the calls of a month.
  if (dryRun) security::requireAllCalls(context.document().user(), context.language());
  if (!dryRun && tariffs->database().readOnly())
    throw Failure("The tariff database is open read-only; nothing was changed.");
  const tariff::PriceList list = readList(call);
  tariff::PriceListImport plan(
      *tariffs,
      {provider.id, profile, call.arguments.date("--from")->midnight(), context.parties().countryCode,
       context.parties().areaCode, provider.localPrefixes},
      list, [&](double value, std::string_view currency) { return context.currencies().Convert(value, currency); });
  std::optional<server::TariffTrial> trial;
  if (dryRun) {
    trial = server::tryOnLastMonth(context.document(), plan, provider, profile);
  } else {
    plan.apply();
    context.log().WriteLog(security::LogEdit, context.language().Translate("IDS_LOG_PRICE_LIST"), provider.name,
                           profile);
  }
  if (call.global.format == TableFormat::Json) {
    printJson(call.out, plan, list, trial);
  } else {
    printText(call, plan, list, trial);
  }
  warnWhereNoTrunkUses(call, provider, profile);
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "FILE",
     .help = "Price list: prefix;name;price per minute[;connection;increment;currency]",
     .required = true},
    {.name = "--provider", .help = "Provider, by number or name", .required = true, .valueName = "P"},
    {.name = "--profile", .help = "Tariff profile that the prices are of", .required = true, .valueName = "NAME"},
    {.name = "--from", .help = "First day on which they hold", .required = true, .valueName = "YYYY-MM-DD"},
    {.name = "--dry-run", .takes = Takes::Nothing, .help = "Show what would change, and last month's calls under it"},
    {.name = "--columns", .help = "Headings of columns that are not found", .valueName = "prefix=Code,price=Rate"},
    {.name = "--currency", .help = "Of rows without one (default: the default currency)", .valueName = "CODE"},
    {.name = "--increment",
     .help = "Seconds charged first and then, of rows without (default 1/1)",
     .valueName = "60/1"},
    {.name = "--codepage", .help = "Of a file that is no UTF-8 (default: of the language)", .valueName = "N"},
};

constexpr Command kCommands[] = {
    {"tariff import", "Take over a provider's price list",
     "tallyctl tariff import prices.csv --provider 1 --profile Standard --from 2026-12-01 --dry-run\n"
     "tallyctl tariff import prices.csv --provider Northline --profile Standard --from 2026-12-01 --increment 60/1",
     kOptions, kChangeSettings, importList},
};

}  // namespace tariff_commands

std::span<const Command> tariffCommands() {
  return tariff_commands::kCommands;
}

}  // namespace ctl
