#pragma once

#include "foundation/setting.h"

namespace foundation {

// The period of a filter whose period was never set.
inline constexpr std::string_view kDefaultPeriodStart = "12/31/1999 00:00:00";
inline constexpr std::string_view kDefaultPeriodEnd = "12/31/2002 23:59:59";
inline constexpr std::string_view kDescribedPeriodEnd = "12/31/1999 23:59:59";  // in the description of the filter

// Every setting, once: section, key, store, default and range or form. All code reads and writes settings through these
// keys (ConfigManager), and so do the settings pages, `tallyctl setting` and `tallyctl doctor` through the list of them
// (settings_catalogue.h). Those of section "general" are here, those of other sections in a namespace.
// Where a reader does without the setting in its own way, the key's comment says so.
namespace keys {

inline constexpr std::int32_t kMostDays = 100000;
inline constexpr std::int32_t kMostDecimals = 8;
inline constexpr std::int32_t kMostSeconds = 86400;
inline constexpr std::int32_t kMostEntries = 1000000;

constexpr NumberKey onOff(std::string_view section, std::string_view key, Store store, std::int32_t fallback = 0) {
  return {section, key, store, fallback, 0, 1};
}
constexpr NumberKey onOff(std::string_view key, Store store, std::int32_t fallback = 0) {
  return onOff(kGeneral, key, store, fallback);
}
constexpr TextKey folder(std::string_view key, std::string_view fallback = {}) {
  return {kGeneral, key, StoreMachine, fallback, SettingForm::Folder};
}

// The workstation: folders, language, login.
// Commands and doctor take "PathDatabase" as empty while it is not set.
inline constexpr TextKey PathDatabase = folder("PathDatabase", "---");
inline constexpr TextSeries PathDatabaseOfProfile{folder("PathDatabase_%s")};
inline constexpr TextKey Path = folder("Path");
inline constexpr TextSeries PathOfProfile{folder("Path_%s")};
inline constexpr TextKey PathMonitor = folder("PathMonitor");
inline constexpr TextSeries PathMonitorOfProfile{folder("PathMonitor_%s")};
inline constexpr TextKey MonitorSite{kGeneral, "MonitorSite", StoreMachine};
inline constexpr TextKey Lang{kGeneral, "Lang", StoreMachine};
inline constexpr TextKey Language{kGeneral, "Language", StoreMachine};
inline constexpr TextKey LastUser{kGeneral, "LastUser", StoreMachine};
inline constexpr TextKey PageSetup{kGeneral, "PageSetup", StoreMachine};
inline constexpr TextKey LastExportFolder = folder("LastExportFolder");
inline constexpr TextKey AutoLoginUser{kGeneral, "AutoLoginUser", StoreMachine};
inline constexpr TextKey AutoLoginPassword{kGeneral, "AutoLoginPassword", StoreMachine, {}, SettingForm::Secret};

// The exchange's place and the lines out.
inline constexpr TextKey CountryCode{kGeneral, "CountryCode", StoreMachine};
inline constexpr TextKey AreaCode{kGeneral, "AreaCode", StoreMachine};
inline constexpr TextKey COMOut{kGeneral, "COMOut", StoreMachine};
inline constexpr TextKey OutFile{kGeneral, "OutFile", StoreMachine};
// The device of a port that COMOut names; without it COM1 is the first serial line, COM2 the second.
inline constexpr TextSeries DeviceOfPort{{kGeneral, "Device_%s", StoreMachine}};
inline constexpr TextKey LiveSocket{kGeneral, "LiveSocket", StoreMachine};
inline constexpr TextKey MailProgram{kGeneral, "MailProgram", StoreMachine, "/usr/sbin/sendmail"};

// How this workstation sends mail.
namespace mail {
inline constexpr TextKey Server{"Mail", "Server", StoreMachine};
inline constexpr NumberKey Port{"Mail", "Port", StoreMachine, 587, 1, 65535};
inline constexpr TextKey Encryption{"Mail", "Encryption", StoreMachine, "starttls"};
inline constexpr TextKey Authorities{"Mail", "Authorities", StoreMachine};
inline constexpr TextKey User{"Mail", "User", StoreMachine};
inline constexpr TextKey Password{"Mail", "Password", StoreMachine, {}, SettingForm::Secret};
inline constexpr TextKey From{"Mail", "From", StoreMachine};
}  // namespace mail

// The desktop.
inline constexpr NumberKey iface_Toolbar = onOff("iface_Toolbar", StoreMachine);
inline constexpr NumberKey iface_Statusbar = onOff("iface_Statusbar", StoreMachine);
inline constexpr NumberKey iface_Grid = onOff("iface_Grid", StoreMachine);
inline constexpr NumberKey iface_Hover = onOff("iface_Hover", StoreMachine);
inline constexpr NumberKey iface_Autoselect = onOff("iface_Autoselect", StoreMachine);
inline constexpr NumberKey iface_searchmaxresults{kGeneral, "iface_searchmaxresults", StoreMachine, 100, 1, 100000};
inline constexpr NumberKey PreviewMode{kGeneral, "Preview mode", StoreMachine};
inline constexpr NumberKey UpperPane{kGeneral, "Upper pane %", StoreMachine, 70, 0, 100};
inline constexpr Setting WindowPlacement{kGeneral, "Window Placement", StoreMachine, SettingType::Binary, {}};
inline constexpr NumberKey SelFolder_Type{kGeneral, "SelFolder_Type", StoreMachine};
// The folder shown at last; without it the window opens on the calls, which have a number of their own.
inline constexpr NumberKey SelFolder_ID{kGeneral, "SelFolder_ID", StoreMachine};
inline constexpr TextKey Manual{kGeneral, "Manual", StoreMachine};
inline constexpr TextKey UrlSupport{kGeneral, "UrlSupport", StoreMachine};
inline constexpr TextKey UrlCheckUpdates{kGeneral, "UrlCheckUpdates", StoreMachine};
inline constexpr TextKey UrlCurrency{kGeneral, "UrlCurrency", StoreMachine};
inline constexpr NumberKey SearchAreaCode = onOff("SearchAreaCode", StoreMachine);
inline constexpr NumberKey ExtendedSearch = onOff("ExtendedSearch", StoreMachine);
inline constexpr NumberKey PhonebookSearchMethod = onOff("PhonebookSearchMethod", StoreMachine);

// The audit log: what the workstation shows of it, and how long everybody keeps it.
inline constexpr NumberKey LogFilt_Enabled = onOff("LogFilt_Enabled", StoreMachine);
// By rule the icon of the log's folder asks the other store, where nothing writes it. It is not in the list.
inline constexpr NumberKey LogFilt_EnabledForIcon = onOff("LogFilt_Enabled", StoreDatabase);
inline constexpr NumberKey LogFilt_Login = onOff("LogFilt_Login", StoreMachine);
inline constexpr NumberKey LogFilt_Security = onOff("LogFilt_Security", StoreMachine);
inline constexpr NumberKey LogFilt_Add = onOff("LogFilt_Add", StoreMachine);
inline constexpr NumberKey LogFilt_Edit = onOff("LogFilt_Edit", StoreMachine);
inline constexpr NumberKey LogFilt_Del = onOff("LogFilt_Del", StoreMachine);
inline constexpr NumberKey LogFilt_Print = onOff("LogFilt_Print", StoreMachine);
inline constexpr NumberKey LogFilt_Folder = onOff("LogFilt_Folder", StoreMachine);
inline constexpr NumberKey LogFilt_Tranz = onOff("LogFilt_Tranz", StoreMachine);
inline constexpr NumberKey LogFilt_Err = onOff("LogFilt_Err", StoreMachine);
inline constexpr NumberKey LogFilt_UserEnabled = onOff("LogFilt_UserEnabled", StoreMachine);
inline constexpr TextKey LogFilt_User{kGeneral, "LogFilt_User", StoreMachine};
inline constexpr NumberKey LogFilt_IntervalEnabled = onOff("LogFilt_IntervalEnabled", StoreMachine);
// As "%m/%d/%Y"; the dates that were never chosen are today's for the condition and the dialog.
inline constexpr TextKey LogFilt_IntervalStart{kGeneral, "LogFilt_IntervalStart", StoreMachine};
inline constexpr TextKey LogFilt_IntervalEnd{kGeneral, "LogFilt_IntervalEnd", StoreMachine};
inline constexpr NumberKey Log_Login{kGeneral, "Log_Login", StoreMachine};
inline constexpr NumberKey Log_Security{kGeneral, "Log_Security", StoreMachine};
inline constexpr NumberKey Log_Add{kGeneral, "Log_Add", StoreMachine};
inline constexpr NumberKey Log_Edit{kGeneral, "Log_Edit", StoreMachine};
inline constexpr NumberKey Log_Del{kGeneral, "Log_Del", StoreMachine};
inline constexpr NumberKey Log_Print{kGeneral, "Log_Print", StoreMachine};
inline constexpr NumberKey Log_Folder{kGeneral, "Log_Folder", StoreMachine};
inline constexpr NumberKey Log_Tranz{kGeneral, "Log_Tranz", StoreMachine};
inline constexpr NumberKey Log_Err{kGeneral, "Log_Err", StoreMachine};
inline constexpr NumberKey Log_DeleteEnabled = onOff("Log_DeleteEnabled", StoreDatabase);
inline constexpr NumberKey Log_DeleteAfter{kGeneral, "Log_DeleteAfter", StoreDatabase, 0, 0, kMostDays};
inline constexpr NumberKey Log_CallViews = onOff("Log_CallViews", StoreDatabase);
inline constexpr NumberKey Alarm_DeleteAfter{kGeneral, "Alarm_DeleteAfter", StoreDatabase, 0, 0, kMostDays};

// The organisation and the database.
inline constexpr NumberKey DbVersion{kGeneral, "DbVersion", StoreDatabase};
inline constexpr NumberKey OrganizationTVA{kGeneral, "OrganizationTVA", StoreDatabase, 0, 0, 100};
inline constexpr TextKey OrganizationTAXE{kGeneral, "OrganizationTAXE", StoreDatabase, {}, SettingForm::Decimal};
inline constexpr TextKey OrganizationAddress{kGeneral, "OrganizationAddress", StoreDatabase};
inline constexpr TextKey OrganizationOras{kGeneral, "OrganizationOras", StoreDatabase};
inline constexpr TextKey OrganizationTel{kGeneral, "OrganizationTel", StoreDatabase};
inline constexpr TextKey OrganizationFax{kGeneral, "OrganizationFax", StoreDatabase};
inline constexpr TextKey OrganizationEmail{kGeneral, "OrganizationEmail", StoreDatabase};
inline constexpr TextKey OrganizationWeb{kGeneral, "OrganizationWeb", StoreDatabase};
inline constexpr TextKey OrganizationCF{kGeneral, "OrganizationCF", StoreDatabase};
inline constexpr TextKey OrganizationCont{kGeneral, "OrganizationCont", StoreDatabase};
inline constexpr TextKey OrganizationBanca{kGeneral, "OrganizationBanca", StoreDatabase};
inline constexpr TextKey OrganizationPrefix{kGeneral, "OrganizationPrefix", StoreDatabase};
inline constexpr NumberKey DisplayDecimals{kGeneral, "DisplayDecimals", StoreDatabase, 2, 0, kMostDecimals};
inline constexpr NumberKey DisplayDecimalsDefault{kGeneral,     "DisplayDecimalsDefault", StoreDatabase, 0, 0,
                                                  kMostDecimals};
inline constexpr NumberKey DisplayDecimalsValue{kGeneral, "DisplayDecimalsValue", StoreDatabase, 100, 0, 1000000000};
inline constexpr NumberKey LastCurrencyID{kGeneral, "LastCurrencyID", StoreDatabase, -1};
inline constexpr NumberKey TemplateHotel = onOff("TemplateHotel", StoreDatabase);
inline constexpr TextKey ResellerName{kGeneral, "ResellerName", StoreDatabase};
inline constexpr NumberKey ExternalPhonebook = onOff("ExternalPhonebook", StoreDatabase, 1);
inline constexpr TextKey LastBackup{kGeneral, "LastBackup", StoreDatabase};

namespace contacts {
inline constexpr NumberKey NextRecID{"Contacts", "Next RecID", StoreDatabase, -1};
}  // namespace contacts

// Recording and pricing.
namespace calls {
inline constexpr NumberKey Sterge{"Calls", "Sterge", StoreDatabase, -1, -1, kMostDays};
inline constexpr NumberKey Sursa_departament = onOff("Calls", "Sursa_departament", StoreDatabase);
inline constexpr NumberKey Ignore_short_calls{"Calls", "Ignore_short_calls", StoreDatabase, -1, -1, kMostSeconds};
inline constexpr NumberKey Seconds_not_charged{"Calls", "Seconds_not_charged", StoreDatabase};
inline constexpr NumberKey ExternalPhonebook = onOff("Calls", "ExternalPhonebook", StoreDatabase, 1);
// The day before which numbers were cut, as it is stored, and the day before which that cannot be taken back.
inline constexpr TextKey AnonymisedBefore{"Calls", "AnonymisedBefore", StoreDatabase};
inline constexpr TextKey AnonymisedConfirmed{"Calls", "AnonymisedConfirmed", StoreDatabase};
inline constexpr TextKey WorkingHours{"Calls", "WorkingHours", StoreDatabase, "Mon-Fri 08:00-18:00"};
inline constexpr NumberKey ExtCount{"Calls", "ExtCount", StoreDatabase, 0, 0, kMostEntries};
inline constexpr NumberKey ConturiCount{"Calls", "ConturiCount", StoreDatabase, 0, 0, kMostEntries};
inline constexpr NumberKey LiniiCount{"Calls", "LiniiCount", StoreDatabase, 0, 0, kMostEntries};
inline constexpr TextSeries ExtDef{{"Tariffs\\Extensions", "ExtDef%d", StoreDatabase, "!!!"}};
inline constexpr TextSeries ConturiDef{{"Tariffs\\Accounts", "ConturiDef%d", StoreDatabase, "!!!"}};
inline constexpr TextSeries LiniiDef{{"Tariffs\\Trunks", "LiniiDef%d", StoreDatabase, "!!!"}};
}  // namespace calls

namespace providers {
inline constexpr TextSeries PrefixeLocale{{"Provider_%d", "PrefixeLocale", StoreDatabase}};
inline constexpr NumberSeries SecNetax{{"Provider_%d", "SecNetax", StoreDatabase}};
}  // namespace providers

// The call filter of this workstation.
namespace filter {
inline constexpr NumberKey Number_Filter_Enabled{"Calls", "Number_Filter_Enabled", StoreMachine};
inline constexpr NumberKey OnFilter{"Calls", "OnFilter", StoreMachine};
inline constexpr NumberKey Hidden{"Calls", "Hidden", StoreMachine};
inline constexpr NumberKey OnIncoming{"Calls", "OnIncoming", StoreMachine};
inline constexpr NumberKey OnOutgoing{"Calls", "OnOutgoing", StoreMachine};
inline constexpr NumberKey OnExtension{"Calls", "OnExtension", StoreMachine};
inline constexpr NumberKey Extension{"Calls", "Extension", StoreMachine};
inline constexpr TextKey ExtensionStr{"Calls", "ExtensionStr", StoreMachine};
inline constexpr NumberKey OnTrunk{"Calls", "OnTrunk", StoreMachine};
inline constexpr NumberKey Trunk{"Calls", "Trunk", StoreMachine};
inline constexpr NumberKey OnAccount{"Calls", "OnAccount", StoreMachine};
inline constexpr TextKey Cont{"Calls", "Cont", StoreMachine};
inline constexpr TextKey ContName{"Calls", "ContName", StoreMachine};
inline constexpr NumberKey OnDepartment{"Calls", "OnDepartment", StoreMachine};
inline constexpr TextKey Department{"Calls", "Department", StoreMachine};
inline constexpr NumberKey OnName{"Calls", "OnName", StoreMachine};
inline constexpr TextKey Name{"Calls", "Name", StoreMachine};
inline constexpr NumberKey OnClient{"Calls", "OnClient", StoreMachine};
inline constexpr TextKey Client{"Calls", "Client", StoreMachine};
inline constexpr NumberKey OnFolder{"Calls", "OnFolder", StoreMachine};
inline constexpr TextKey Folder{"Calls", "Folder", StoreMachine};
inline constexpr NumberKey OnArea{"Calls", "OnArea", StoreMachine};
inline constexpr TextKey Area{"Calls", "Area", StoreMachine};
inline constexpr NumberKey OnPeriod{"Calls", "OnPeriod", StoreMachine};
// As "%m/%d/%Y %H:%M:%S". The dialog shows 1/1/2001 for a start that was never set, and the description of the filter
// kDescribedPeriodEnd for such an end.
inline constexpr TextKey IntervalStart{"Calls", "IntervalStart", StoreMachine, kDefaultPeriodStart};
inline constexpr TextKey IntervalEnd{"Calls", "IntervalEnd", StoreMachine, kDefaultPeriodEnd};
inline constexpr TextKey NumberPrefix{"Calls", "NumberPrefix", StoreMachine};
inline constexpr TextKey Number{"Calls", "Number", StoreMachine};
inline constexpr TextKey Country{"Calls", "Country", StoreMachine};
inline constexpr TextKey Provider{"Calls", "Provider", StoreMachine};
inline constexpr NumberKey OnMinDuration{"Calls", "OnMinDuration", StoreMachine};
inline constexpr NumberKey MinDuration{"Calls", "MinDuration", StoreMachine};
}  // namespace filter

namespace names {
// The names under which the filter's dialog showed what was chosen; without one, the filter's own value.
inline constexpr TextKey Interior{"Denumire", "Interior", StoreMachine};
inline constexpr TextKey Client{"Denumire", "Client", StoreMachine};
inline constexpr TextKey Folder{"Denumire", "Folder", StoreMachine};
inline constexpr TextKey Depart{"Denumire", "Depart", StoreMachine};
}  // namespace names

// Column layouts, in a section of each list's own.
namespace columns {
inline constexpr TextSeries VisibleColumns{{"%s", "VisibleColumns%d", StoreMachine}};
inline constexpr TextSeries ColumnWidths{{"%s", "ColumnWidths%d", StoreMachine}};
}  // namespace columns

// What the user calls these parties: it heads their columns in printed lists; without it the column's own caption does.
namespace captions {
inline constexpr TextKey Interior{"Interior", "Denumire", StoreMachine};
inline constexpr TextKey Depart{"Depart", "Denumire", StoreMachine};
inline constexpr TextKey Client{"Client", "Denumire", StoreMachine};
inline constexpr TextKey Folder{"Folder", "Denumire", StoreMachine};
}  // namespace captions

}  // namespace keys

}  // namespace foundation
