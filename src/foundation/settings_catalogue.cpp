#include "foundation/settings_catalogue.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "jet/stored_database.h"

namespace foundation {

namespace {

constexpr Store M = StoreMachine;
constexpr Store D = StoreDatabase;
constexpr SettingType I = SettingType::Integer;
constexpr SettingType S = SettingType::String;
constexpr SettingType B = SettingType::Binary;

// A text, of a folder or a decimal number.
constexpr Setting formed(std::string_view section, std::string_view key, Store store, std::string_view fallback,
                         SettingForm form) {
  return {section, key, store, S, fallback, form};
}
constexpr Setting folder(std::string_view key, std::string_view fallback) {
  return formed("general", key, M, fallback, SettingForm::Folder);
}
constexpr Setting ranged(std::string_view section, std::string_view key, Store store, std::string_view fallback,
                         std::int32_t least, std::int32_t most) {
  return {section, key, store, I, fallback, SettingForm::Any, least, most};
}
constexpr Setting onOff(std::string_view section, std::string_view key, Store store, std::string_view fallback) {
  return ranged(section, key, store, fallback, 0, 1);
}

constexpr std::int32_t kMostDays = 100000;
constexpr std::int32_t kMostDecimals = 8;
constexpr std::int32_t kMostSeconds = 86400;
constexpr std::int32_t kMostEntries = 1000000;

// Names match in this order: the entry with an open section is last.
constexpr Setting kSettings[] = {
    // The workstation: folders, language, login.
    folder("PathDatabase", "---"),
    folder("PathDatabase_%s", ""),
    folder("Path", ""),
    folder("Path_%s", ""),
    folder("PathMonitor", ""),
    folder("PathMonitor_%s", ""),
    {"general", "MonitorSite", M, S, ""},
    {"general", "Lang", M, S, ""},
    {"general", "Language", M, S, ""},
    {"general", "LastUser", M, S, ""},
    {"general", "PageSetup", M, S, ""},
    folder("LastExportFolder", ""),
    {"general", "AutoLoginUser", M, S, ""},
    formed("general", "AutoLoginPassword", M, "", SettingForm::Secret),
    // The exchange's place and the lines out.
    {"general", "CountryCode", M, S, ""},
    {"general", "AreaCode", M, S, ""},
    {"general", "COMOut", M, S, ""},
    {"general", "OutFile", M, S, ""},
    {"general", "LiveSocket", M, S, ""},
    {"general", "MailProgram", M, S, "/usr/sbin/sendmail"},
    // How this workstation sends mail.
    {"Mail", "Server", M, S, ""},
    ranged("Mail", "Port", M, "587", 1, 65535),
    {"Mail", "Encryption", M, S, "starttls"},
    {"Mail", "Authorities", M, S, ""},
    {"Mail", "User", M, S, ""},
    formed("Mail", "Password", M, "", SettingForm::Secret),
    {"Mail", "From", M, S, ""},
    // The desktop.
    onOff("general", "iface_Toolbar", M, "0"),
    onOff("general", "iface_Statusbar", M, "0"),
    onOff("general", "iface_Grid", M, "0"),
    onOff("general", "iface_Hover", M, "0"),
    onOff("general", "iface_Autoselect", M, "0"),
    ranged("general", "iface_searchmaxresults", M, "100", 1, 100000),
    {"general", "Preview mode", M, I, ""},
    ranged("general", "Upper pane %", M, "70", 0, 100),
    {"general", "Window Placement", M, B, ""},
    {"general", "SelFolder_Type", M, I, ""},
    {"general", "SelFolder_ID", M, I, ""},
    {"general", "Manual", M, S, ""},
    {"general", "UrlSupport", M, S, ""},
    {"general", "UrlCheckUpdates", M, S, ""},
    {"general", "UrlCurrency", M, S, ""},
    onOff("general", "SearchAreaCode", M, "0"),
    onOff("general", "ExtendedSearch", M, "0"),
    onOff("general", "PhonebookSearchMethod", M, "0"),
    // The audit log: what the workstation shows of it, and how long everybody keeps it.
    onOff("general", "LogFilt_Enabled", M, "0"),
    onOff("general", "LogFilt_Login", M, "0"),
    onOff("general", "LogFilt_Security", M, "0"),
    onOff("general", "LogFilt_Add", M, "0"),
    onOff("general", "LogFilt_Edit", M, "0"),
    onOff("general", "LogFilt_Del", M, "0"),
    onOff("general", "LogFilt_Print", M, "0"),
    onOff("general", "LogFilt_Folder", M, "0"),
    onOff("general", "LogFilt_Tranz", M, "0"),
    onOff("general", "LogFilt_Err", M, "0"),
    onOff("general", "LogFilt_UserEnabled", M, "0"),
    {"general", "LogFilt_User", M, S, ""},
    onOff("general", "LogFilt_IntervalEnabled", M, "0"),
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
    onOff("general", "Log_DeleteEnabled", D, "0"),
    ranged("general", "Log_DeleteAfter", D, "0", 0, kMostDays),
    onOff("general", "Log_CallViews", D, "0"),
    ranged("general", "Alarm_DeleteAfter", D, "0", 0, kMostDays),
    // The organisation and the database.
    {"general", "DbVersion", D, I, "0"},
    ranged("general", "OrganizationTVA", D, "0", 0, 100),
    formed("general", "OrganizationTAXE", D, "", SettingForm::Decimal),
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
    ranged("general", "DisplayDecimals", D, "2", 0, kMostDecimals),
    ranged("general", "DisplayDecimalsDefault", D, "0", 0, kMostDecimals),
    ranged("general", "DisplayDecimalsValue", D, "100", 0, 1000000000),
    {"general", "LastCurrencyID", D, I, "-1"},
    onOff("general", "TemplateHotel", D, "0"),
    {"general", "ResellerName", D, S, ""},
    onOff("general", "ExternalPhonebook", D, "1"),
    {"general", "LastBackup", D, S, ""},
    {"Contacts", "Next RecID", D, I, "-1"},
    // Recording and pricing.
    ranged("Calls", "Sterge", D, "-1", -1, kMostDays),
    onOff("Calls", "Sursa_departament", D, "0"),
    ranged("Calls", "Ignore_short_calls", D, "-1", -1, kMostSeconds),
    {"Calls", "Seconds_not_charged", D, I, "0"},
    onOff("Calls", "ExternalPhonebook", D, "1"),
    {"Calls", "AnonymisedBefore", D, S, ""},
    {"Calls", "AnonymisedConfirmed", D, S, ""},
    {"Calls", "WorkingHours", D, S, "Mon-Fri 08:00-18:00"},
    ranged("Calls", "ExtCount", D, "0", 0, kMostEntries),
    ranged("Calls", "ConturiCount", D, "0", 0, kMostEntries),
    ranged("Calls", "LiniiCount", D, "0", 0, kMostEntries),
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
    {"Calls", "IntervalStart", M, S, kDefaultPeriodStart},
    {"Calls", "IntervalEnd", M, S, kDefaultPeriodEnd},
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

std::optional<std::int32_t> wholeNumber(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

bool isDecimal(std::string_view text) {
  text = base::trim(text);
  if (text.empty()) return true;
  if (text.front() == '-') text.remove_prefix(1);
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  if (whole.empty() || !isDigits(whole)) return false;
  if (point == std::string_view::npos) return true;
  const std::string_view fraction = text.substr(point + 1);
  return !fraction.empty() && isDigits(fraction);
}

// Of the databases.
static std::string storableAddress(std::string_view typed) {
  try {
    return jet::storableAddress(typed);
  } catch (const jet::Error& error) {
    const std::string reason = error.description();
    throw std::invalid_argument(reason.ends_with('.') ? reason.substr(0, reason.size() - 1) : reason);
  }
}

std::string storableValue(const Setting& setting, std::string_view typed) {
  const std::string_view value = base::trim(typed);
  if (setting.type == SettingType::Binary) {
    throw std::invalid_argument(base::format("%s is kept by the program and cannot be typed", setting.key));
  }
  if (setting.type == SettingType::Integer) {
    const auto number = wholeNumber(value);
    if (!number || *number < setting.least || *number > setting.most) {
      throw std::invalid_argument(base::format("%s takes a whole number from %d to %d, not \"%s\"", setting.key,
                                               setting.least, setting.most, typed));
    }
    return std::to_string(*number);
  }
  if (setting.form == SettingForm::Decimal && !isDecimal(value)) {
    throw std::invalid_argument(
        base::format("%s takes a number such as 7.5, with a point, not \"%s\"", setting.key, typed));
  }
  if (setting.form == SettingForm::Folder && jet::isServerAddress(value)) return storableAddress(value);
  if (setting.form == SettingForm::Folder && value != "---") return base::withSeparator(value);
  const bool asTyped = setting.form == SettingForm::Any || setting.form == SettingForm::Secret;
  return std::string(asTyped ? typed : value);
}

std::optional<Store> storeOf(std::string_view section, std::string_view key) {
  const Setting* setting = findSetting(section, key);
  return setting == nullptr ? std::nullopt : std::optional(setting->store);
}

}  // namespace foundation
