#include "sample/directory.h"

#include <array>
#include <cstddef>

#include "base/printf.h"
#include "base/text.h"
#include "sample/company.h"

namespace sample {

namespace {

using base::format;

constexpr std::array kFirstNames = {"Ana",      "Mircea",  "Ștefania", "George", "Ileana",   "Cosmin",
                                    "Mădălina", "Petru",   "Lavinia",  "Iulian", "Sânziana", "Emil",
                                    "Veronica", "Nicolae", "Ruxandra", "Traian", "Aurelia",  "Victor",
                                    "Denisa",   "Horia",   "Adina",    "Marcel", "Bianca"};

constexpr std::array kLastNames = {
    "Albu",    "Brătianu",  "Codreanu",  "Dobre",    "Enescu",   "Florea",   "Ghiță",  "Hanganu",   "Iacob",    "Jianu",
    "Kovács",  "Lăzărescu", "Mureșan",   "Negruzzi", "Olteanu",  "Pătrașcu", "Roșu",   "Slavici",   "Țepeneag", "Ursu",
    "Vlahuță", "Zaharia",   "Bălănescu", "Ciucă",    "Drăghici", "Farcaș",   "Grozav", "Măgureanu", "Stoica"};

struct Company {
  const char* name;
  const char* domain;
};
constexpr std::array<Company, 20> kCompanies = {{{"Brutăria Spicul de Aur SRL", "spicul-de-aur"},
                                                 {"Transport Făgăraș SA", "transport-fagaras"},
                                                 {"Tipografia Litera Veche", "litera-veche"},
                                                 {"Mobilă Bucovina SRL", "mobila-bucovina"},
                                                 {"Asigurări Delta SA", "asigurari-delta"},
                                                 {"Cabinet avocat Ghiță", "avocat-ghita"},
                                                 {"Cristal Medgidia SA", "cristal-medgidia"},
                                                 {"Utilaje Făurei SRL", "utilaje-faurei"},
                                                 {"Vinuri de Dealu Mare SA", "dealu-mare"},
                                                 {"Confecții Țesătoarea SRL", "tesatoarea"},
                                                 {"Electrica Sud-Vest SA", "electrica-sv"},
                                                 {"Apele Siretului SA", "apa-siret"},
                                                 {"Pompe Bârlad SA", "pompe-barlad"},
                                                 {"Studioul de arhitectură Prispa", "prispa"},
                                                 {"Curier Șoimul SRL", "soimul"},
                                                 {"Sonde Câmpina SRL", "sonde-campina"},
                                                 {"Farmacia Mușețel", "musetel"},
                                                 {"Școala de șoferi Volan", "volan"},
                                                 {"Hârtia Letea SA", "hartia-letea"},
                                                 {"Editura Nufărul", "nufarul"}}};

constexpr std::array kStreets = {"Str. Teilor",         "Bd. Unirii",     "Str. Păcii",
                                 "Calea Victoriei",     "Str. Gării",     "Aleea Rozelor",
                                 "Str. Mihai Viteazul", "Piața Sfatului", "Str. Fântânii"};
constexpr std::array kTowns = {"București", "Cluj-Napoca", "Timișoara", "Iași",
                               "Brașov",    "Constanța",   "Ploiești",  "Sibiu"};
constexpr std::array kLandlines = {"021", "0264", "0256", "0232", "0268", "0241", "0244", "0269"};  // of kTowns
constexpr std::array kMobiles = {"072", "073", "074", "075", "076", "078"};
constexpr std::array kAbroad = {"004930", "00331", "003902", "004420", "00361", "00431", "0037322", "001212"};

template <typename List>
auto pick(const List& list, int index) {
  return list[static_cast<std::size_t>(index) % list.size()];
}

// Six digits that look drawn by lot but do not repeat below a million.
int scattered(int index) {
  return static_cast<int>((static_cast<long long>(index) * 387'421 + 250'007) % 900'000) + 100'000;
}

}  // namespace

std::string contactNumber(int index) {
  const int digits = scattered(index);
  switch (index % 5) {
    case 0:
    case 1:
      return format("%s%07d", pick(kMobiles, index / 5), digits * 7 % 9'000'000 + 1'000'000);
    case 2:
      return format("%d%d", 3 + index % 3, digits);  // a local number of seven digits
    case 3: {
      const std::string area = pick(kLandlines, index / 5);
      return area == "021" ? format("%s3%d", area, digits) : format("%s%d", area, digits);
    }
    default:
      return index % 10 == 4 ? format("%s%d", pick(kAbroad, index / 10), digits)
                             : format("%s%07d", pick(kMobiles, index), digits * 3 % 9'000'000 + 1'000'000);
  }
}

Contact contact(int index) {
  Contact result;
  const bool isCompany = index % 4 == 3;
  const Company& company = kCompanies[static_cast<std::size_t>(index / 3) % kCompanies.size()];
  if (!isCompany)
    result.name = format("%s %s", pick(kFirstNames, index * 5), pick(kLastNames, index * 11 + index / 29));
  if (isCompany || index % 2 == 0) result.organization = company.name;
  result.display = isCompany ? result.organization : result.name;
  result.address = format("%s nr. %d, %s", pick(kStreets, index), index * 7 % 120 + 1, pick(kTowns, index / 5));
  if (!result.organization.empty()) {
    result.web = format("www.%s.example", company.domain);
    result.email = format("contact%d@%s.example", index + 1, company.domain);
  }
  result.type = index % 6;
  result.number = contactNumber(index);
  return result;
}

const std::vector<PhonebookTable>& phonebookTables() {
  static const std::vector<PhonebookTable> tables = {
      {"cluj", "Cluj", "264"},     {"timis", "Timiș", "256"},         {"iasi", "Iași", "232"},
      {"brasov", "Brașov", "268"}, {"constanta", "Constanța", "241"}, {"bucuresti", "București", "21"},
  };
  return tables;
}

Subscriber subscriber(const PhonebookTable& table, int index) {
  const int town = static_cast<int>(table.areaCode[1]) * 13 + static_cast<int>(table.areaCode.back());
  const int person = index * 3 + town;
  const int digits = scattered(index * 17 + town);
  return {.lastName = pick(kLastNames, person * 7),
          .firstName = pick(kFirstNames, person),
          .address = format("%s nr. %d, %s", pick(kStreets, person), index + 1, table.title),
          .number = table.areaCode == kAreaCode ? 2'000'000 + digits : digits};
}

std::string normalised(std::string_view dialled) {
  if (dialled.starts_with("00")) return std::string(dialled);
  // A number in national form counts as local too: the area code goes in front of its 0.
  return format("00%s%s%s", kCountryCode, kAreaCode, dialled);
}

}  // namespace sample
