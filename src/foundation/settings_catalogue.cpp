#include "foundation/settings_catalogue.h"

#include <algorithm>

#include "base/text.h"

namespace foundation {

namespace {

constexpr Store M = StoreMachine;
constexpr Store D = StoreDatabase;
constexpr SettingType I = SettingType::Integer;
constexpr SettingType S = SettingType::String;
constexpr SettingType B = SettingType::Binary;

// Names match in this order: the entry with an open section stands last.
constexpr Setting kSettings[] = {
    // The workstation: folders, language, login.
    {"general", "PathDatabase", M, S, "---"},
    {"general", "PathDatabase_%s", M, S, ""},
    {"general", "Path", M, S, ""},
    {"general", "Path_%s", M, S, ""},
    {"general", "PathMonitor", M, S, ""},
    {"general", "PathMonitor_%s", M, S, ""},
    {"general", "Lang", M, S, ""},
    {"general", "Language", M, S, ""},
    {"general", "LastUser", M, S, ""},
    {"general", "AutoLoginUser", M, S, ""},
    {"general", "AutoLoginPassword", M, S, ""},
    // The exchange's place and the lines out.
    {"general", "CountryCode", M, S, ""},
    {"general", "AreaCode", M, S, ""},
    {"general", "COMOut", M, S, ""},
    {"general", "OutFile", M, S, ""},
    {"general", "LiveSocket", M, S, ""},
    // The desktop.
    {"general", "iface_Toolbar", M, I, "0"},
    {"general", "iface_Statusbar", M, I, "0"},
    {"general", "iface_Grid", M, I, "0"},
    {"general", "iface_Hover", M, I, "0"},
    {"general", "iface_Autoselect", M, I, "0"},
    {"general", "iface_searchmaxresults", M, I, "100"},
    {"general", "Preview mode", M, I, ""},
    {"general", "Upper pane %", M, I, "70"},
    {"general", "Window Placement", M, B, ""},
    {"general", "SelFolder_Type", M, I, ""},
    {"general", "SelFolder_ID", M, I, ""},
    {"general", "Manual", M, S, ""},
    {"general", "UrlSupport", M, S, ""},
    {"general", "UrlCheckUpdates", M, S, ""},
    {"general", "UrlCurrency", M, S, ""},
    {"general", "SearchAreaCode", M, I, "0"},
    {"general", "ExtendedSearch", M, I, "0"},
    {"general", "PhonebookSearchMethod", M, I, "0"},
    // The audit log: what the workstation shows of it, and how long everybody keeps it.
    {"general", "LogFilt_Enabled", M, I, "0"},
    {"general", "LogFilt_Login", M, I, "0"},
    {"general", "LogFilt_Security", M, I, "0"},
    {"general", "LogFilt_Add", M, I, "0"},
    {"general", "LogFilt_Edit", M, I, "0"},
    {"general", "LogFilt_Del", M, I, "0"},
    {"general", "LogFilt_Print", M, I, "0"},
    {"general", "LogFilt_Folder", M, I, "0"},
    {"general", "LogFilt_Tranz", M, I, "0"},
    {"general", "LogFilt_Err", M, I, "0"},
    {"general", "LogFilt_UserEnabled", M, I, "0"},
    {"general", "LogFilt_User", M, S, ""},
    {"general", "LogFilt_IntervalEnabled", M, I, "0"},
    {"general", "LogFilt_IntervalStart", M, S, ""},
    {"general", "LogFilt_IntervalEnd", M, S, ""},
    {"general", "Log_Login", M, I, "0"},
    {"general", "Log_Security", M, I, "0"},
    {"general", "Log_Add", M, I, "0"},
    {"general", "Log_Edit", M, I, "0"},
    {"general", "Log_Del", M, I, "0"},
    {"general", "Log_Print", M, I, "0"},
    {"general", "Log_Folder", M, I, "0"},
    {"general", "Log_Tranz", M, I, "0"},
    {"general", "Log_Err", M, I, "0"},
    {"general", "Log_DeleteEnabled", D, I, "0"},
    {"general", "Log_DeleteAfter", D, I, "0"},
    // The organisation and the database.
    {"general", "DbVersion", D, I, "0"},
    {"general", "OrganizationTVA", D, I, "0"},
    {"general", "OrganizationTAXE", D, S, ""},
    {"general", "OrganizationAddress", D, S, ""},
    {"general", "OrganizationOras", D, S, ""},
    {"general", "OrganizationTel", D, S, ""},
    {"general", "OrganizationFax", D, S, ""},
    {"general", "OrganizationEmail", D, S, ""},
    {"general", "OrganizationWeb", D, S, ""},
    {"general", "OrganizationCF", D, S, ""},
    {"general", "OrganizationCont", D, S, ""},
    {"general", "OrganizationBanca", D, S, ""},
    {"general", "OrganizationPrefix", D, S, ""},
    {"general", "DisplayDecimals", D, I, "2"},
    {"general", "DisplayDecimalsDefault", D, I, "0"},
    {"general", "DisplayDecimalsValue", D, I, "100"},
    {"general", "LastCurrencyID", D, I, "-1"},
    {"general", "TemplateHotel", D, I, "0"},
    {"general", "ResellerName", D, S, ""},
    {"general", "ExternalPhonebook", D, I, "1"},
    {"Contacts", "Next RecID", D, I, "-1"},
    // Recording and pricing.
    {"Calls", "Sterge", D, I, "-1"},
    {"Calls", "Sursa_departament", D, I, "0"},
    {"Calls", "Ignore_short_calls", D, I, "-1"},
    {"Calls", "Seconds_not_charged", D, I, "0"},
    {"Calls", "ExternalPhonebook", D, I, "1"},
    {"Calls", "WorkingHours", D, S, "Mon-Fri 08:00-18:00"},
    {"Calls", "ExtCount", D, I, "0"},
    {"Calls", "ConturiCount", D, I, "0"},
    {"Calls", "LiniiCount", D, I, "0"},
    {"Tariffs\\Extensions", "ExtDef%d", D, S, "!!!"},
    {"Tariffs\\Accounts", "ConturiDef%d", D, S, "!!!"},
    {"Tariffs\\Trunks", "LiniiDef%d", D, S, "!!!"},
    {"Provider_%d", "PrefixeLocale", D, S, ""},
    {"Provider_%d", "SecNetax", D, I, "0"},
    // The call filter of this workstation.
    {"Calls", "Number_Filter_Enabled", M, I, "0"},
    {"Calls", "OnFilter", M, I, "0"},
    {"Calls", "Hidden", M, I, "0"},
    {"Calls", "OnIncoming", M, I, "0"},
    {"Calls", "OnOutgoing", M, I, "0"},
    {"Calls", "OnExtension", M, I, "0"},
    {"Calls", "Extension", M, I, "0"},
    {"Calls", "ExtensionStr", M, S, ""},
    {"Calls", "OnTrunk", M, I, "0"},
    {"Calls", "Trunk", M, I, "0"},
    {"Calls", "OnAccount", M, I, "0"},
    {"Calls", "Cont", M, S, ""},
    {"Calls", "ContName", M, S, ""},
    {"Calls", "OnDepartment", M, I, "0"},
    {"Calls", "Department", M, S, ""},
    {"Calls", "OnName", M, I, "0"},
    {"Calls", "Name", M, S, ""},
    {"Calls", "OnClient", M, I, "0"},
    {"Calls", "Client", M, S, ""},
    {"Calls", "OnFolder", M, I, "0"},
    {"Calls", "Folder", M, S, ""},
    {"Calls", "OnArea", M, I, "0"},
    {"Calls", "Area", M, S, ""},
    {"Calls", "OnPeriod", M, I, "0"},
    {"Calls", "IntervalStart", M, S, "12/31/1999 00:00:00"},
    {"Calls", "IntervalEnd", M, S, "12/31/2002 23:59:59"},
    {"Calls", "NumberPrefix", M, S, ""},
    {"Calls", "Number", M, S, ""},
    {"Calls", "Country", M, S, ""},
    {"Calls", "Provider", M, S, ""},
    {"Calls", "OnMinDuration", M, I, "0"},
    {"Calls", "MinDuration", M, I, "0"},
    {"Denumire", "Interior", M, S, ""},
    {"Denumire", "Client", M, S, ""},
    {"Denumire", "Folder", M, S, ""},
    {"Denumire", "Depart", M, S, ""},
    // Column layouts, in a section of each list's own.
    {"%s", "VisibleColumns%d", M, S, ""},
    {"%s", "ColumnWidths%d", M, S, ""},
};

bool isDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A placeholder at the end of a known name stands for a number (%d) or any text (%s), at least one character long.
bool matches(std::string_view known, std::string_view name) {
  const bool number = known.ends_with("%d");
  if (!number && !known.ends_with("%s")) return base::equalFoldAscii(known, name);
  known.remove_suffix(2);
  return name.size() > known.size() && base::equalFoldAscii(known, name.substr(0, known.size())) &&
         (!number || isDigits(name.substr(known.size())));
}

}  // namespace

std::span<const Setting> knownSettings() {
  return kSettings;
}

const Setting* findSetting(std::string_view section, std::string_view key) {
  const auto found = std::find_if(std::begin(kSettings), std::end(kSettings), [&](const Setting& setting) {
    return matches(setting.section, section) && matches(setting.key, key);
  });
  return found == std::end(kSettings) ? nullptr : found;
}

std::optional<Store> storeOf(std::string_view section, std::string_view key) {
  const Setting* setting = findSetting(section, key);
  return setting == nullptr ? std::nullopt : std::optional(setting->store);
}

}  // namespace foundation
