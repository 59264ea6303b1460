#include "ingest/enrichment.h"

#include "base/characters.h"
#include "base/printf.h"
#include "schema/missing.h"

namespace ingest {

namespace {
// Shorter ones are internal: no one's entry in a phonebook.
constexpr std::size_t kLongestUnnamedNumber = 3;

// The number as a pattern that matches it alone: what the exchange sends may hold the dialect's wildcards.
std::string withoutWildcards(std::string_view number) {
  std::string pattern;
  for (const char c : number) {
    if (c == '*' || c == '?' || c == '#' || c == '[') {
      pattern += {'[', c, ']'};
    } else {
      pattern += c;
    }
  }
  return pattern;
}

}  // namespace

Enrichment::Enrichment(const ExchangeParts& parts)
    : parts_(parts),
      contactsByNumber_(base::format("SELECT * FROM %s WHERE %s LIKE \"*%s*\"", "Contacts", "Tel_String")) {}

void Enrichment::setName(CallRow& row, const exchange::CallRecord& record, const tariff::PricingContext& context) {
  // Without a known provider there is no normalised number to look for, and an empty one would match everybody.
  if (base::characterCount(record.dialledNumber) <= kLongestUnnamedNumber || context.number.empty()) return;
  if (auto name = nameOf(context.number)) row.set(&CallFields::Name, std::move(*name));
}

std::optional<std::string> Enrichment::nameOf(std::string_view normalisedNumber) {
  const jet::Snapshot contacts = contactsByNumber_.open(parts_.main, withoutWildcards(normalisedNumber));
  if (!contacts.empty()) return contacts.at(0, "Contact").toText();
  if (parts_.phonebook == nullptr) return std::nullopt;
  if (parts_.config.ReadConfigInt(foundation::keys::calls::ExternalPhonebook) == 0) return std::nullopt;
  return nameInPhonebook(normalisedNumber);
}

// The phonebook is optional: without it calls have no name, and that is all.
std::optional<std::string> Enrichment::nameInPhonebook(std::string_view normalisedNumber) {
  try {
    return parts_.phonebook->nameOf(normalisedNumber);
  } catch (const jet::Error& error) {
    if (!phonebookFault_.empty()) return std::nullopt;
    const std::string missing = schema::missingFrom(schema::Which::Phonebook, parts_.phonebook->database());
    phonebookFault_ =
        base::format("Names are not looked up in the phonebook: %s", missing.empty() ? error.description() : missing);
    parts_.log.WriteLog(security::LogError, "%s", phonebookFault_);
    return std::nullopt;
  }
}

bool Enrichment::setTariff(CallRow& row, exchange::CallRecord& record, tariff::PricingContext& context,
                           double& priceRef) {
  context.price = 0;
  context.currency.clear();
  priceRef = 0;
  if (record.incoming == 0) {
    std::int32_t ignored = 0;
    parts_.prices.CalcPrice(record, context, ignored);
    if (ignored != 0) return false;
    priceRef = parts_.currencies.Convert(context.price, context.currency);
  }
  row.set(&CallFields::Price, context.price);
  row.set(&CallFields::Currency, context.currency);
  row.set(&CallFields::Price_Ref, priceRef);
  if (const exchange::PREFIX* prefix = parts_.parties.findPrefix(context.number)) {
    row.set(&CallFields::Area, prefix->name);
    row.set(&CallFields::Country, prefix->country);
  }
  row.set(&CallFields::Profile, context.profile);
  row.set(&CallFields::Provider, context.provider);
  return true;
}

void Enrichment::setDepartment(CallRow& row, const exchange::CallRecord& record) {
  const std::string& ofExtension = parts_.parties.departmentOfExtension(record.extensionText);
  const std::string& ofAccount = parts_.parties.departmentOfAccount(record.accountCode);
  const bool extensionFirst = parts_.config.ReadConfigInt(foundation::keys::calls::Sursa_departament) == 0;
  const std::string& first = extensionFirst ? ofExtension : ofAccount;
  const std::string& second = extensionFirst ? ofAccount : ofExtension;
  row.set(&CallFields::Department, first.empty() ? second : first);
}

void Enrichment::setOwner(CallRow& row, const exchange::CallRecord& record) {
  const exchange::ClientDefinition* client = parts_.parties.findClient(record.accountCode);
  if (client == nullptr) return;
  row.set(&CallFields::Owner, client->name);
  row.set(&CallFields::Folder, client->folder);
}

}  // namespace ingest
