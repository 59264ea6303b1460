#include "sample/sample_exchange.h"

#include <string>

#include "base/printf.h"
#include "exchange/party_definitions.h"
#include "sample/company.h"
#include "sample/directory.h"
#include "sample/row_writer.h"
#include "schema/schema.h"

namespace sample {

namespace {

void addCurrencies(jet::Database& main, foundation::ConfigManager& config) {
  // The new database holds the default currency alone; the list is written whole.
  main.execute("delete from Currency");
  RowWriter rows(main, "Currency", {"CurrencyID", "Name", "Ratio", "DateModify", "Default", "Reverse"});
  const auto modified = base::DateTime::fromParts(2026, 1, 1);
  for (const CurrencyRow& currency : currencies()) {
    rows.add({currency.id, currency.name, currency.ratio, *modified, currency.isDefault ? 1 : 0, 0});
  }
  config.WriteConfigInt(static_cast<std::int32_t>(currencies().size()) + 1, foundation::keys::LastCurrencyID);
}

void addContacts(jet::Database& main, foundation::ConfigManager& config) {
  RowWriter rows(main, "Contacts",
                 {"RecordID", "Name", "Organization", "Contact", "Note", "Tip", "Address", "Web", "Email", "Tel_View",
                  "Tel_String", "Tel"});
  for (int i = 0; i < kContacts; ++i) {
    const Contact entry = contact(i);
    rows.add({i + 1, entry.name, entry.organization, entry.display, "", entry.type, entry.address, entry.web,
              entry.email, entry.number, normalised(entry.number), entry.number});
  }
  config.WriteConfigInt(kContacts + 1, foundation::keys::contacts::NextRecID);
}

void addOrganization(foundation::ConfigManager& config) {
  for (const OrganizationText& text : organization()) {
    config.WriteConfigString(text.value, text.key);
  }
  config.WriteConfigInt(kVatPercent, foundation::keys::OrganizationTVA);
  config.WriteConfigString(kCountryCode, foundation::keys::CountryCode);
  config.WriteConfigString(kAreaCode, foundation::keys::AreaCode);
}

}  // namespace

void fillMain(jet::Database& main, foundation::ConfigManager& config) {
  jet::Transaction transaction(main);
  addOrganization(config);
  addCurrencies(main, config);
  addContacts(main, config);
  RowWriter hidden(main, "FilteredNumbers", {"number"});
  for (const std::string_view number : hiddenNumbers()) hidden.add({number});
  exchange::PartyDefinitions definitions(config);
  fillDefinitions(definitions);
  definitions.save(main);
  transaction.commit();
}

void fillPhonebook(jet::Database& phonebook) {
  for (const PhonebookTable& table : phonebookTables()) {
    phonebook.createTable(schema::phonebookTable(std::string(table.name)));
  }
  jet::Transaction transaction(phonebook);
  // The first row whose prefix begins a number wins, so the bare own area code, which begins every national number of
  // this exchange, is last.
  RowWriter map(phonebook, "map", {"Prefix", "Name", "Table"});
  for (const PhonebookTable& table : phonebookTables()) {
    map.add({normalised(base::format("0%s", table.areaCode)), table.title, table.name});
    map.add({base::format("00%s%s", kCountryCode, table.areaCode), table.title, table.name});
  }
  for (const PhonebookTable& table : phonebookTables()) {
    RowWriter rows(phonebook, table.name, {"Lastname", "Firstname", "Address", "Tel"});
    for (int i = 0; i < kSubscribersPerTable; ++i) {
      const Subscriber person = subscriber(table, i);
      rows.add({person.lastName, person.firstName, person.address, person.number});
    }
  }
  transaction.commit();
}

}  // namespace sample
