#include "sample/romania.h"

namespace sample {

namespace {

// Every county has the same two digits after 2 and after 3.
constexpr Area kLandlineAreas[] = {
    // clang-format off
    {"21", "București"},
    {"31", "București"},
    {"230", "Suceava"},
    {"231", "Botoșani"},
    {"232", "Iași"},
    {"233", "Neamț"},
    {"234", "Bacău"},
    {"235", "Vaslui"},
    {"236", "Galați"},
    {"237", "Vrancea"},
    {"238", "Buzău"},
    {"239", "Brăila"},
    {"240", "Tulcea"},
    {"241", "Constanța"},
    {"242", "Călărași"},
    {"243", "Ialomița"},
    {"244", "Prahova"},
    {"245", "Dâmbovița"},
    {"246", "Giurgiu"},
    {"247", "Teleorman"},
    {"248", "Argeș"},
    {"249", "Olt"},
    {"250", "Vâlcea"},
    {"251", "Dolj"},
    {"252", "Mehedinți"},
    {"253", "Gorj"},
    {"254", "Hunedoara"},
    {"255", "Caraș-Severin"},
    {"256", "Timiș"},
    {"257", "Arad"},
    {"258", "Alba"},
    {"259", "Bihor"},
    {"260", "Sălaj"},
    {"261", "Satu Mare"},
    {"262", "Maramureș"},
    {"263", "Bistrița-Năsăud"},
    {"264", "Cluj"},
    {"265", "Mureș"},
    {"266", "Harghita"},
    {"267", "Covasna"},
    {"268", "Brașov"},
    {"269", "Sibiu"},
    {"330", "Suceava"},
    {"331", "Botoșani"},
    {"332", "Iași"},
    {"333", "Neamț"},
    {"334", "Bacău"},
    {"335", "Vaslui"},
    {"336", "Galați"},
    {"337", "Vrancea"},
    {"338", "Buzău"},
    {"339", "Brăila"},
    {"340", "Tulcea"},
    {"341", "Constanța"},
    {"342", "Călărași"},
    {"343", "Ialomița"},
    {"344", "Prahova"},
    {"345", "Dâmbovița"},
    {"346", "Giurgiu"},
    {"347", "Teleorman"},
    {"348", "Argeș"},
    {"349", "Olt"},
    {"350", "Vâlcea"},
    {"351", "Dolj"},
    {"352", "Mehedinți"},
    {"353", "Gorj"},
    {"354", "Hunedoara"},
    {"355", "Caraș-Severin"},
    {"356", "Timiș"},
    {"357", "Arad"},
    {"358", "Alba"},
    {"359", "Bihor"},
    {"360", "Sălaj"},
    {"361", "Satu Mare"},
    {"362", "Maramureș"},
    {"363", "Bistrița-Năsăud"},
    {"364", "Cluj"},
    {"365", "Mureș"},
    {"366", "Harghita"},
    {"367", "Covasna"},
    {"368", "Brașov"},
    {"369", "Sibiu"},
    // clang-format on
};

constexpr Area kMobileNetworks[] = {
    // clang-format off
    {"70", "Mobil 070"},
    {"71", "Mobil 071"},
    {"72", "Mobil 072"},
    {"73", "Mobil 073"},
    {"74", "Mobil 074"},
    {"75", "Mobil 075"},
    {"76", "Mobil 076"},
    {"77", "Mobil 077"},
    {"78", "Mobil 078"},
    {"79", "Mobil 079"},
    // clang-format on
};

constexpr Area kFreeNumbers[] = {{"800", "Apel gratuit"}, {"801", "Cost împărțit"}};
constexpr Area kPremiumNumbers[] = {
    {"900", "Valoare adăugată"}, {"903", "Valoare adăugată"}, {"906", "Valoare adăugată"}};

// 9xx are the extensions of the branch, reached over the tie line.
constexpr Area kShortNumbers[] = {{"112", "Urgențe"},
                                  {"116", "Servicii sociale"},
                                  {"1195", "Ora exactă"},
                                  {"118", "Informații telefonice"},
                                  {"9", "Filială"}};

}  // namespace

std::span<const Area> landlineAreas() {
  return kLandlineAreas;
}
std::span<const Area> mobileNetworks() {
  return kMobileNetworks;
}
std::span<const Area> freeNumbers() {
  return kFreeNumbers;
}
std::span<const Area> premiumNumbers() {
  return kPremiumNumbers;
}
std::span<const Area> shortNumbers() {
  return kShortNumbers;
}

}  // namespace sample
