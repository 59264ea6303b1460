#include "sample/company.h"

#include <string>

namespace sample {

namespace {

using Names = std::string_view;

constexpr Names kManagement[] = {"Radu Ionescu", "Ioana Dumitrescu", "Mihai Stănescu"};
constexpr Names kReception[] = {"Recepție", "Secretariat"};
constexpr Names kSales[] = {"Andrei Popescu",   "Elena Marinescu", "Bogdan Țăranu", "Cristina Vasilescu",
                            "Ștefan Georgescu", "Alina Munteanu",  "Dragoș Nistor", "Raluca Ciobanu",
                            "Vlad Șerban",      "Monica Tudor"};
constexpr Names kMarketing[] = {"Diana Păun", "Cătălin Rusu", "Oana Lungu", "Sorin Bălan"};
constexpr Names kAccounting[] = {"Maria Constantinescu", "Gabriela Neagu", "Florin Șandru", "Lucia Mocanu",
                                 "Daniel Oprea"};
constexpr Names kPeople[] = {"Anca Preda", "Simona Bucur", "Silviu Dănilă"};
constexpr Names kInformatics[] = {"Tudor Ene", "Răzvan Iordache", "Laura Cozma", "Ciprian Mănescu", "Sala servere"};
constexpr Names kLegal[] = {"Corina Zamfir", "Liviu Grigore"};
constexpr Names kPurchasing[] = {"Paul Ardelean", "Irina Săvulescu", "Marius Crețu", "Teodora Luca"};
constexpr Names kLogistics[] = {"Ovidiu Barbu", "Nicoleta Ștefănescu", "Gheorghe Matei", "Depozit Chitila",
                                "Dispecerat"};
constexpr Names kProduction[] = {"Ion Câmpeanu", "Vasile Pârvu", "Atelier 1", "Atelier 2", "Adrian Toma", "Mentenanță"};
constexpr Names kQuality[] = {"Carmen Voicu", "Eugen Dinu", "Laborator"};
constexpr Names kSupport[] = {"Suport 1", "Suport 2", "Suport 3", "Suport 4", "Roxana Filip", "Claudiu Manea"};
constexpr Names kRooms[] = {"Sala de ședințe", "Fax"};

constexpr Department kDepartments[] = {
    {"Conducere", 201, kManagement},
    {"Recepție", 205, kReception},
    {"Vânzări", 210, kSales},
    {"Marketing", 221, kMarketing},
    {"Contabilitate", 226, kAccounting},
    {"Resurse umane", 232, kPeople},
    {"Informatică", 236, kInformatics},
    {"Juridic", 242, kLegal},
    {"Achiziții", 245, kPurchasing},
    {"Logistică", 250, kLogistics},
    {"Producție", 256, kProduction},
    {"Calitate", 263, kQuality},
    {"Suport clienți", 267, kSupport},
    {"Săli comune", 274, kRooms},
};

constexpr Provider kProviders[] = {
    {1, "Dunărea Telecom", "21,31", 0, "Standard"},
    {2, "Orizont Mobil", "21,31", 3, "Flotă"},
    {3, "Metroline", "21;31", 0, "Impulsuri"},
};

constexpr Trunk kTrunks[] = {
    {1, "021 555 0101", 1, false, false, 26}, {2, "021 555 0102", 1, false, false, 19},
    {3, "021 555 0103", 1, false, false, 11}, {4, "021 555 0104", 1, false, false, 6},
    {5, "0755 550 105", 2, false, false, 15}, {6, "0755 550 106", 2, false, false, 9},
    {7, "031 555 0107", 3, true, false, 9},   {8, "031 555 0108", 3, true, true, 5},
};

constexpr Account kAccounts[] = {
    {"1???", "Proiecte de construcții", "Producție"},
    {"2???", "Contracte de service", "Suport clienți"},
    {"30??", "Licitații", "Vânzări"},
    {"31??", "Export", "Vânzări"},
    {"4001", "Administrativ", "Conducere"},
    {"4002", "Litigii", "Juridic"},
    {"50??", "Aprovizionare", "Achiziții"},
    {"9999", "Convorbiri personale", "Personal"},
};

// The first match wins, so the exact codes are before the patterns that hold them.
constexpr Client kClients[] = {
    {"1001", "Primăria Sectorului 7", "Instituții"},    {"10??", "Construct Mureș SA", "Construcții"},
    {"11??", "Zidăria Apuseni SRL", "Construcții"},     {"12??", "Drumuri și Poduri Vest SA", "Construcții"},
    {"2001", "Spitalul Județean Câmpia", "Instituții"}, {"20??", "Hotel Panorama Predeal", "Turism"},
    {"21??", "Pensiunea La Moară", "Turism"},           {"22??", "Rețeaua de farmacii Salvia", "Sănătate"},
    {"30??", "Ministerul Apelor", "Instituții"},        {"310?", "Bergmann Anlagenbau GmbH", "Export"},
    {"31??", "Officine Lombarde SpA", "Export"},        {"50??", "Oțelăria Hunedoara Nouă SA", "Furnizori"},
};

constexpr OrganizationText kOrganization[] = {
    {foundation::keys::OrganizationTAXE, "0"},
    {foundation::keys::OrganizationAddress, "Str. Morii nr. 12"},
    {foundation::keys::OrganizationOras, "București"},
    {foundation::keys::OrganizationTel, "021 555 0100"},
    {foundation::keys::OrganizationFax, "021 555 0199"},
    {foundation::keys::OrganizationEmail, "office@atelierele-carpati.example"},
    {foundation::keys::OrganizationWeb, "www.atelierele-carpati.example"},
    {foundation::keys::OrganizationCF, "RO 12345678"},
    {foundation::keys::OrganizationCont, "RO00 BNKX 0000 0000 0000 0001"},
    {foundation::keys::OrganizationBanca, "Banca Meșteșugarilor"},
    {foundation::keys::OrganizationPrefix, "021"},
    {foundation::keys::ResellerName, "Atelierele Carpați SRL"},
};

constexpr CurrencyRow kCurrencies[] = {{1, "RON", 1.0, true}, {2, "EUR", 4.97, false}, {3, "USD", 4.58, false}};

constexpr std::string_view kHiddenNumbers[] = {"0722000111", "0744000222", "0213100333", "0264400444", "0040213100333"};

}  // namespace

std::span<const Department> departments() {
  return kDepartments;
}
std::span<const Provider> providers() {
  return kProviders;
}
std::span<const Trunk> trunks() {
  return kTrunks;
}
std::span<const Account> accounts() {
  return kAccounts;
}
std::span<const Client> clients() {
  return kClients;
}
std::span<const OrganizationText> organization() {
  return kOrganization;
}
std::span<const CurrencyRow> currencies() {
  return kCurrencies;
}
std::span<const std::string_view> hiddenNumbers() {
  return kHiddenNumbers;
}

void fillDefinitions(exchange::PartyDefinitions& definitions) {
  definitions.extensions.clear();
  for (const Department& department : kDepartments) {
    int extension = department.firstExtension;
    for (const std::string_view person : department.people) {
      definitions.extensions.push_back(
          {std::to_string(extension++), std::string(person), std::string(department.name)});
    }
  }
  definitions.accounts.clear();
  for (const Account& account : kAccounts) {
    definitions.accounts.push_back(
        {std::string(account.code), std::string(account.description), std::string(account.department)});
  }
  definitions.clients.clear();
  for (const Client& client : kClients) {
    definitions.clients.push_back({std::string(client.account), std::string(client.name), std::string(client.folder)});
  }
  definitions.providers.clear();
  for (const Provider& provider : kProviders) {
    definitions.providers.push_back(
        {provider.id, std::string(provider.name), std::string(provider.localPrefixes), "", provider.freeSeconds});
  }
  definitions.trunks.clear();
  for (const Trunk& trunk : kTrunks) {
    const Provider& provider = kProviders[static_cast<std::size_t>(trunk.provider) - 1];
    definitions.trunks.push_back({std::string(trunk.label), std::to_string(trunk.number), trunk.provider,
                                  std::string(provider.profile), trunk.pulses ? 1 : 0, trunk.ignoreZeroPulses ? 1 : 0});
  }
}

}  // namespace sample
