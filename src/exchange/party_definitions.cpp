#include "exchange/party_definitions.h"

#include <algorithm>
#include <optional>

#include "base/printf.h"
#include "base/text.h"

namespace exchange {

using foundation::ConfigManager;
using foundation::NumberKey;
using foundation::TextKey;
namespace keys = foundation::keys;

namespace {

constexpr std::string_view kMissing = keys::calls::ExtDef.pattern.fallback;  // the same of accounts and trunks
constexpr std::string_view kNoLabel = "-";
constexpr std::int32_t kMostEntries = 100000;  // a damaged count must not keep the start busy for hours

const std::string kNoText;

// Extensions and accounts share one form: "code;description;department".
struct CodeEntry {
  std::string code;
  std::string description;
  std::string department;
};

// Empty fields are skipped, so that what follows them moves forward. Nothing when there is no field at all.
std::optional<CodeEntry> parseCodeEntry(std::string_view value) {
  if (value == kMissing) return std::nullopt;
  std::vector<std::string> fields = base::split(value, ";");
  if (fields.empty()) return std::nullopt;
  fields.resize(std::max<std::size_t>(fields.size(), 3));
  return CodeEntry{fields[0], fields[1], fields[2]};
}

std::vector<CodeEntry> loadCodeEntries(ConfigManager& config, const NumberKey& counter,
                                       const foundation::TextSeries& definitions) {
  std::vector<CodeEntry> entries;
  const std::int32_t count = std::min(config.ReadConfigInt(counter), kMostEntries);
  for (std::int32_t i = 0; i < count; ++i) {
    if (auto entry = parseCodeEntry(config.ReadConfigString(definitions.of(i)))) entries.push_back(std::move(*entry));
  }
  return entries;
}

// The five fields after a trunk's label.
std::vector<std::string> splitTrunkFields(std::string_view value) {
  constexpr std::ptrdiff_t kSeparators = 4;
  // A value as it is saved has all its separators, and then an empty field keeps its place: the splitter's skipping
  // would make the "0" of the switches the profile name of a trunk that has none. Shorter values are split with empty
  // fields skipped, as everywhere else.
  const bool complete = std::count(value.begin(), value.end(), ';') == kSeparators;
  std::vector<std::string> fields = base::split(value, ";", complete);
  fields.resize(std::max<std::size_t>(fields.size(), 5));
  return fields;
}

// The entry of a value; without a value a free entry.
tagTRUNKINFO parseTrunk(std::string_view value, std::size_t index) {
  tagTRUNKINFO trunk;
  trunk.trunk = base::format("%d", index + 1);
  if (value == kMissing) return trunk;
  // Before the first separator is the label, which older values leave empty.
  const std::size_t labelEnd = std::min(value.find(';'), value.size());
  trunk.label = labelEnd == 0 ? kNoLabel : value.substr(0, labelEnd);
  value.remove_prefix(std::min(labelEnd + 1, value.size()));
  const std::vector<std::string> fields = splitTrunkFields(value);
  trunk.providerId = base::leadingInteger(fields[0]);
  if (!fields[1].empty()) trunk.trunk = fields[1];
  trunk.profile = fields[2];
  trunk.pulses = base::leadingInteger(fields[3]);
  trunk.ignoreZeroPulses = base::leadingInteger(fields[4]);
  return trunk;
}

std::string withoutSeparators(const std::string& text) {
  return base::replaceAll(text, ";", ",");
}

std::string trunkValue(const tagTRUNKINFO& entry) {
  const bool nameless = entry.trunk.empty();
  return base::format("%s;%d;%s;%s;%d;%d", entry.label.empty() ? std::string(kNoLabel) : withoutSeparators(entry.label),
                      nameless ? -1 : entry.providerId, withoutSeparators(entry.trunk),
                      nameless ? std::string() : entry.profile, entry.pulses, entry.ignoreZeroPulses);
}

std::int32_t countOf(std::size_t size) {
  return static_cast<std::int32_t>(size);
}

// What is stored already is not written again: an unchanged save must not make other copies load everything anew.
void store(ConfigManager& config, const TextKey& key, const std::string& value) {
  const bool same = config.ReadConfigString(key) == value && config.LastFound();
  if (!same) config.WriteConfigString(value, key);
}

void store(ConfigManager& config, const NumberKey& key, std::int32_t value) {
  const bool same = config.ReadConfigInt(key) == value && config.LastFound();
  if (!same) config.WriteConfigInt(value, key);
}

void saveExtensions(ConfigManager& config, const std::vector<tagEXTINFO>& extensions) {
  store(config, keys::calls::ExtCount, countOf(extensions.size()));
  for (std::size_t i = 0; i < extensions.size(); ++i) {
    const tagEXTINFO& entry = extensions[i];
    store(config, keys::calls::ExtDef.of(i),
          base::format("%s;%s;%s", entry.extension, withoutSeparators(entry.description),
                       withoutSeparators(entry.department)));
  }
}

void saveTrunks(ConfigManager& config, const std::vector<tagTRUNKINFO>& trunks) {
  store(config, keys::calls::LiniiCount, countOf(trunks.size()));
  for (std::size_t i = 0; i < trunks.size(); ++i) {
    store(config, keys::calls::LiniiDef.of(i), trunkValue(trunks[i]));
  }
}

void saveAccounts(ConfigManager& config, const std::vector<tagCONTINFO>& accounts) {
  store(config, keys::calls::ConturiCount, countOf(accounts.size()));
  for (std::size_t i = 0; i < accounts.size(); ++i) {
    const tagCONTINFO& entry = accounts[i];
    store(config, keys::calls::ConturiDef.of(i),
          base::format("%s;%s;%s", withoutSeparators(entry.account), withoutSeparators(entry.description),
                       withoutSeparators(entry.department)));
  }
}

std::vector<ClientDefinition> loadClients(jet::Database& main) {
  std::vector<ClientDefinition> clients;
  const jet::Snapshot rows = main.openSnapshot("SELECT * from Clients");
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    clients.push_back(
        {rows.at(row, "Account").toText(), rows.at(row, "Name").toText(), rows.at(row, "Folder").toText()});
  }
  return clients;
}

void saveClients(jet::Database& main, const std::vector<ClientDefinition>& clients) {
  if (loadClients(main) == clients) return;
  main.execute("delete from Clients");
  for (const ClientDefinition& client : clients) {
    main.execute(base::format("insert into Clients (Name, Account, Folder) values ('%s', '%s', '%s')", client.name,
                              client.account, client.folder));
  }
}

void saveProviderSettings(ConfigManager& config, const std::vector<ProviderDefinition>& providers) {
  for (const ProviderDefinition& provider : providers) {
    store(config, keys::providers::PrefixeLocale.of(provider.id), provider.localPrefixes);
    store(config, keys::providers::SecNetax.of(provider.id), provider.freeSeconds);
  }
}

std::vector<PREFIX> loadPrefixes(jet::Database& tariffs) {
  std::vector<PREFIX> prefixes;
  const jet::Snapshot rows = tariffs.openSnapshot("SELECT * from prefixes2 order by prefix_id desc");
  if (rows.empty()) return prefixes;
  const std::size_t id = rows.column("prefix_id");
  const std::size_t name = rows.column("prefix_name");
  const std::size_t country = rows.column("prefix_ctry");
  prefixes.reserve(rows.rowCount());
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    prefixes.push_back({rows.at(row, id).toText(), rows.at(row, name).toText(), rows.at(row, country).toText()});
  }
  return prefixes;
}

std::vector<ProviderDefinition> loadProviders(jet::Database& tariffs, ConfigManager& config) {
  std::vector<ProviderDefinition> providers;
  const jet::Snapshot rows = tariffs.openSnapshot("SELECT * from providers");
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    ProviderDefinition provider;
    provider.id = static_cast<std::int32_t>(rows.at(row, "provider_id").toLong());
    const jet::Value& name = rows.at(row, "provider_name");
    if (name.type() == jet::Type::Text) provider.name = name.text();
    provider.localPrefixes = config.ReadConfigString(keys::providers::PrefixeLocale.of(provider.id));
    provider.freeSeconds = config.ReadConfigInt(keys::providers::SecNetax.of(provider.id));
    providers.push_back(std::move(provider));
  }
  return providers;
}

// Settings and clients, whose versions are counted apart from those of the reference tables.
std::uint64_t partiesVersion(jet::Database& main) {
  return main.tableVersion("Config") + main.tableVersion("Clients");
}

std::uint64_t referencesVersion(jet::Database* tariffs) {
  return tariffs == nullptr ? 0 : tariffs->tableVersion("providers") + tariffs->tableVersion("prefixes2");
}

template <typename Entries, typename Key>
TextIndex firstOfEach(const Entries& entries, Key key) {
  TextIndex index;
  for (std::size_t i = 0; i < entries.size(); ++i) index.emplace(key(entries[i]), i);
  return index;
}

AccountIndex accountIndexOf(const auto& entries) {
  AccountIndex index;
  for (std::size_t i = 0; i < entries.size(); ++i) index.add(entries[i].account, i);
  return index;
}

}  // namespace

void PartyDefinitions::load(jet::Database& main, jet::Database* tariffs) {
  const jet::TableDef calls = main.tableDef("Calls");
  const jet::FieldDef* extension = calls.find("Extension");
  extensionIsText = extension != nullptr && extension->type == jet::Type::Text;
  loadReferences(tariffs);
  loadParties(main);
  reindex();
}

void PartyDefinitions::loadReferences(jet::Database* tariffs) {
  referencesVersion_ = referencesVersion(tariffs);
  prefixes = tariffs == nullptr ? std::vector<PREFIX>() : loadPrefixes(*tariffs);
  providers = tariffs == nullptr ? std::vector<ProviderDefinition>() : loadProviders(*tariffs, config_);
}

void PartyDefinitions::loadParties(jet::Database& main) {
  partiesVersion_ = partiesVersion(main);
  extensions.clear();
  for (auto& [code, description, department] : loadCodeEntries(config_, keys::calls::ExtCount, keys::calls::ExtDef)) {
    extensions.push_back({std::move(code), std::move(description), std::move(department)});
  }
  accounts.clear();
  for (auto& [code, description, department] :
       loadCodeEntries(config_, keys::calls::ConturiCount, keys::calls::ConturiDef)) {
    accounts.push_back({std::move(code), std::move(description), std::move(department)});
  }
  // All entries whatever "LiniiCount" holds, so that new trunks find free ones.
  trunks.clear();
  for (std::size_t i = 0; i < kTrunkEntries; ++i) {
    trunks.push_back(parseTrunk(config_.ReadConfigString(keys::calls::LiniiDef.of(i)), i));
  }
  clients = loadClients(main);
  countryCode = config_.ReadConfigString(foundation::keys::CountryCode);
  areaCode = config_.ReadConfigString(foundation::keys::AreaCode);
}

void PartyDefinitions::save(jet::Database& main) {
  reindex();
  if (config_.DatabaseReadOnly()) return;
  jet::Transaction transaction(main);
  saveExtensions(config_, extensions);
  saveTrunks(config_, trunks);
  saveAccounts(config_, accounts);
  saveClients(main, clients);
  saveProviderSettings(config_, providers);
  transaction.commit();
  partiesVersion_ = partiesVersion(main);
}

bool PartyDefinitions::changed(jet::Database& main, jet::Database* tariffs) {
  return partiesVersion(main) != partiesVersion_ || referencesVersion(tariffs) != referencesVersion_;
}

bool PartyDefinitions::reloadIfChanged(jet::Database& main, jet::Database* tariffs) {
  const bool parties = partiesVersion(main) != partiesVersion_;
  const bool references = referencesVersion(tariffs) != referencesVersion_;
  if (references) loadReferences(tariffs);
  if (parties) {
    // The providers' settings are beside the parties'.
    if (tariffs != nullptr && !references) providers = loadProviders(*tariffs, config_);
    loadParties(main);
  }
  if (parties || references) reindex();
  return parties || references;
}

void PartyDefinitions::reindex() {
  extensionIndex_.clear();
  for (std::size_t i = 0; i < extensions.size(); ++i) extensionIndex_.insert_or_assign(extensions[i].extension, i);
  extensionNameIndex_ = firstOfEach(extensions, [](const auto& entry) { return base::foldAscii(entry.extension); });
  trunkIndex_ = firstOfEach(trunks, [](const auto& entry) { return entry.trunk; });
  accountIndex_ = accountIndexOf(accounts);
  clientIndex_ = accountIndexOf(clients);
  prefixIndex_.clear();
  for (std::size_t i = 0; i < prefixes.size(); ++i) prefixIndex_.add(prefixes[i].id, i);
}

const tagTRUNKINFO* PartyDefinitions::findTrunk(std::string_view number) const {
  const auto found = trunkIndex_.find(number);
  return found == trunkIndex_.end() ? nullptr : &trunks[found->second];
}

const ProviderDefinition* PartyDefinitions::findProvider(std::int32_t id) const {
  const auto found =
      std::find_if(providers.begin(), providers.end(), [id](const auto& provider) { return provider.id == id; });
  return found == providers.end() ? nullptr : &*found;
}

const std::string& PartyDefinitions::departmentOfExtension(std::string_view extension) const {
  const auto found = extensionIndex_.find(extension);
  return found == extensionIndex_.end() ? kNoText : extensions[found->second].department;
}

const std::string& PartyDefinitions::departmentOfAccount(std::string_view account) const {
  const auto found = accountIndex_.find(account);
  return found ? accounts[*found].department : kNoText;
}

const ClientDefinition* PartyDefinitions::findClient(std::string_view account) const {
  const auto found = clientIndex_.find(account);
  return found ? &clients[*found] : nullptr;
}

const PREFIX* PartyDefinitions::findPrefix(std::string_view normalisedNumber) const {
  const auto found = prefixIndex_.find(normalisedNumber);
  return found ? &prefixes[*found] : nullptr;
}

const std::string& PartyDefinitions::descriptionOfExtension(std::string_view extension) const {
  const auto found = extensionNameIndex_.find(base::foldAscii(extension));
  return found == extensionNameIndex_.end() ? kNoText : extensions[found->second].description;
}

}  // namespace exchange
