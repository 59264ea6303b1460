#include "folders/catalogue.h"

#include "base/characters.h"
#include "folders/numbers.h"

namespace folders {

namespace {

constexpr std::size_t kCaptionLength = 31;  // characters

constexpr unsigned kKeyFlags = ColumnShown | ColumnKey;

constexpr ColumnDefinition field(int kind, const char* caption, const char* name) {
  return {kind, caption, {name, nullptr}, name};
}
constexpr ColumnDefinition column(int kind, const char* caption, const char* select, const char* sort,
                                  unsigned flags = ColumnShown) {
  return {kind, caption, {select, nullptr}, sort, flags};
}

constexpr std::array kUsers = {
    column(KindKey, "IDS_NULL", "Name", "Name", kKeyFlags),
    field(KindUserAccount, "IDS_ACCOUNT", "Name"),
    field(KindUserName, "IDS_USERNAME_TEXT", "Fullname"),
    field(KindLastAccess, "IDS_DATE_ACCESS", "LastAccessDate"),
    field(KindPasswordDate, "IDS_PASSWORD_DATE", "PasswordDate"),
    column(KindUserFlags, "Flags_Invizibil", "Flags", "Flags", 0),
};

constexpr std::array kGroups = {
    column(KindKey, "IDS_NULL", "Name", "Name", kKeyFlags),
    field(KindGroupName, "IDS_GROUP_NAME_TEXT", "Name"),
    column(KindGroupDescription, "IDS_DESCRIPTION", "Desc", nullptr),
};

constexpr std::array kLog = {
    column(KindKey, "IDS_NULL", "RecordID", "RecordID", kKeyFlags),
    field(KindLogUser, "IDS_USER", "UserName"),
    column(KindLogText, "IDS_DESCRIPTION", "Desc", nullptr),
    field(KindLogTime, "IDS_DATE_HOUR", "DateTime"),
};

constexpr std::array kCalls = {
    ColumnDefinition{KindKey, "IDS_NULL", {"RecordID", "Hidden"}, "RecordID", kKeyFlags},
    field(KindNumber, "IDS_NUMBER", "DialNumber"),
    field(KindName, "IDS_NAME", "Name"),
    field(KindArea, "IDS_AREA", "Area"),
    field(KindTime, "IDS_DATE_HOUR", "DateTime"),
    field(KindExtension, "IDS_EXTENSION", "Extension"),
    field(KindTrunk, "IDS_TRUNK", "Trunk"),
    field(KindDuration, "IDS_DURATION", "TotalTime"),
    field(KindAccount, "IDS_ACCOUNT", "AccountCode"),
    field(KindCostReference, "IDS_COST_REF", "Price_Ref"),
    ColumnDefinition{KindCost, "IDS_COST", {"Price", "Currency"}, "Price_Ref"},
    column(KindPrice, "IDS_PRICE", "Price_Ref * %ADD% as padaos", "Price_Ref"),
    field(KindRedirected, "IDS_REDIRECTED", "Redirected"),
    field(KindDepartment, "IDS_DEPARTMENT", "Department"),
    field(KindCode, "IDS_CODE", "CD"),
    field(KindDirection, "IDS_TYPE", "Incoming"),
    field(KindRing, "IDS_RING", "Ring"),
    field(KindClient, "IDS_CLIENT", "Owner"),
    field(KindFile, "IDS_FOLDER", "Folder"),
    field(KindProvider, "IDS_PROVIDER", "Provider"),
    field(KindCountry, "IDS_COUNTRY", "Country"),
    field(KindPulses, "IDS_PULSES", "Pulses"),
};

// Unlike the other statistics, sorting by the count of calls sorts by the duration, and the average price is of the
// amounts in the calls' own currencies.
constexpr std::array kExtensions = {
    column(KindKey, "IDS_NULL", "Extension AS RecordID", "1", kKeyFlags),
    column(KindExtension, "IDS_EXTENSION", "Extension", "2"),
    column(KindDuration, "IDS_DURATION", "SUM(TotalTime) AS SUM_TotalTime", "3"),
    column(KindCount, "IDS_CALLS_COUNT", "count(*) as cnt", "3"),
    column(KindCostSum, "IDS_COST", "SUM(Price_Ref) AS SUM_Cost", "5"),
    column(KindPriceSum, "IDS_PRICE", "SUM(Price_Ref * %ADD% ) AS SUM_Price", "6"),
    column(KindRing, "IDS_RING", "SUM(Ring) AS SUM_Ring", "7"),
    column(KindCostAverage, "IDS_COST_AVG", "AVG(Price_Ref) AS AVG_Cost", "8"),
    column(KindPriceAverage, "IDS_PRICE_AVG", "AVG(Price * %ADD%) AS AVG_Price", "9"),
    column(KindRingAverage, "IDS_RING_AVG", "AVG(Ring) AS AVG_Ring", "10"),
};

constexpr std::array kTop = {
    column(KindKey, "IDS_NULL", "DialNumber AS RecordID", "1", kKeyFlags),
    column(KindNumber, "IDS_NUMBER", "DialNumber", "2"),
    column(KindExtension, "IDS_EXTENSION", "First(Extension) as MaxExt", "3"),
    column(KindName, "IDS_NAME", "First(Name) as Numele", "  4"),
    column(KindDuration, "IDS_DURATION", "SUM(TotalTime) AS SUM_TotalTime", "5"),
    column(KindCount, "IDS_CALLS_COUNT", "count(*) as cnt", "6"),
    column(KindCostSum, "IDS_COST", "SUM(Price_Ref) AS SUM_Cost", "7"),
    column(KindPriceSum, "IDS_PRICE", "SUM(Price_Ref * %ADD%) AS SUM_Price", "8"),
    column(KindRing, "IDS_RING", "SUM(Ring) AS SUM_Ring", "9"),
    column(KindCostAverage, "IDS_COST_AVG", "AVG(Price_Ref) AS AVG_Cost", "10"),
    column(KindPriceAverage, "IDS_PRICE_AVG", "AVG(Price_Ref * %ADD%) AS AVG_Price", "11"),
    column(KindRingAverage, "IDS_RING_AVG", "AVG(Ring) AS AVG_Ring", "12"),
};

// The ten columns of a statistic; the second one shows the grouped value.
constexpr std::array<ColumnDefinition, 10> statistic(const char* key, int kind, const char* caption,
                                                     const char* select) {
  return {
      column(KindKey, "IDS_NULL", key, "1", kKeyFlags),
      column(kind, caption, select, "2"),
      column(KindDuration, "IDS_DURATION", "SUM(TotalTime) AS SUM_TotalTime", "3"),
      column(KindCount, "IDS_CALLS_COUNT", "count(*) as cnt", "4"),
      column(KindCostSum, "IDS_COST", "SUM(Price_Ref) AS SUM_Cost", "5"),
      column(KindPriceSum, "IDS_PRICE", "SUM(Price_Ref * %ADD%) AS SUM_Price", "6"),
      column(KindRing, "IDS_RING", "SUM(Ring) AS SUM_Ring", "7"),
      column(KindCostAverage, "IDS_COST_AVG", "AVG(Price_Ref) AS AVG_Cost", "8"),
      column(KindPriceAverage, "IDS_PRICE_AVG", "AVG(Price_Ref * %ADD%) AS AVG_Price", "9"),
      column(KindRingAverage, "IDS_RING_AVG", "AVG(Ring) AS AVG_Ring", "10"),
  };
}

// Kinds are shared on purpose: an area shows as a number does, a name as a client, a country as a provider.
constexpr auto kAreas = statistic("Area AS RecordID", KindNumber, "IDS_AREA", "Area");
constexpr auto kTrunks = statistic("Trunk AS RecordID", KindTrunk, "IDS_TRUNK", "Trunk");
constexpr auto kDepartments = statistic("Department AS RecordID", KindDepartment, "IDS_DEPARTMENT", "Department");
constexpr auto kClients = statistic("Owner AS RecordID", KindClient, "IDS_CLIENT", "Owner");
constexpr auto kFolders = statistic("Folder AS RecordID", KindFile, "IDS_FOLDER", "Folder");
constexpr auto kAccounts = statistic("AccountCode AS RecordID", KindAccount, "IDS_ACCOUNT", "AccountCode");
constexpr auto kNames = statistic("Name AS RecordID", KindClient, "IDS_NAME", "Name");
constexpr auto kCountries = statistic("Country AS RecordID", KindProvider, "IDS_COUNTRY", "Country");
constexpr auto kProviders = statistic("Provider AS RecordID", KindProvider, "IDS_PROVIDER", "Provider");
constexpr auto kWeekdays =
    statistic("Weekday(DateTime) AS RecordID", KindWeekday, "IDS_WEEKDAY", "Weekday(DateTime) AS WD");
constexpr auto kDays = statistic("Day(DateTime) AS RecordID", KindDay, "IDS_DAYOFMONTH", "Day(DateTime) AS MD");
constexpr auto kMonths = statistic("Month(DateTime) AS RecordID", KindMonth, "IDS_MONTH", "Month(DateTime) AS MON");
constexpr auto kHours = statistic("Hour(DateTime) AS RecordID", KindHour, "IDS_HOUR", "Hour(DateTime) AS HR");

constexpr FolderDefinition list(int id, const char* caption, const char* table,
                                std::span<const ColumnDefinition> columns) {
  return {id, caption, table, "", columns, FolderStandard, ConditionSource::None};
}
constexpr FolderDefinition calls(int id, const char* caption, const char* grouping,
                                 std::span<const ColumnDefinition> columns) {
  return {id, caption, "Calls", grouping, columns, FolderStandard | FolderConditional, ConditionSource::CallFilter};
}

constexpr std::array kStandardFolders = {
    list(FolderUsers, "IDS_FOLDER_USERS", "Users", kUsers),
    list(FolderGroups, "IDS_FOLDER_GROUPS", "Groups", kGroups),
    FolderDefinition{FolderLog, "IDS_FOLDER_LOG", "Log", "", kLog, FolderStandard | FolderConditional,
                     ConditionSource::LogFilter},
    calls(FolderCalls, "IDS_FOLDER_CALLS", "", kCalls),
    calls(FolderExtensions, "IDS_EXTENSIONS", "Extension", kExtensions),
    calls(FolderTop, "IDS_TOP", "DialNumber", kTop),
    calls(FolderAreas, "IDS_AREAS", "Area", kAreas),
    calls(FolderTrunks, "IDS_TRUNKS", "Trunk", kTrunks),
    calls(FolderDepartments, "IDS_DEPARTMENT", "Department", kDepartments),
    calls(FolderClients, "IDS_CLIENTS", "Owner", kClients),
    calls(FolderFiles, "IDS_FILES", "Folder", kFolders),
    calls(FolderAccounts, "IDS_ACCOUNTS", "AccountCode", kAccounts),
    calls(FolderNames, "IDS_NAME", "Name", kNames),
    calls(FolderCountries, "IDS_COUNTRY", "Country", kCountries),
    calls(FolderProviders, "IDS_PROVIDER", "Provider", kProviders),
    calls(FolderWeekdays, "IDS_WEEKDAY", "Weekday(DateTime)", kWeekdays),
    calls(FolderDays, "IDS_DAYOFMONTH", "Day(DateTime)", kDays),
    calls(FolderMonths, "IDS_MONTH", "Month(DateTime)", kMonths),
    calls(FolderHours, "IDS_HOUR", "Hour(DateTime)", kHours),
};

constexpr std::array kContacts = {
    ColumnDefinition{KindKey, "IDS_NULL", {nullptr, nullptr}, "Name", kKeyFlags},
    field(KindContactName, "IDS_NAME", "Name"),
    field(KindOrganization, "IDS_ORGANIZATION", "Organization"),
    field(KindContactPerson, "IDS_CONTACT", "Contact"),
    column(KindNote, "IDS_NOTE", "Note", nullptr),
    field(KindRelationship, "IDS_RELATIONSHIP", "Tip"),
    column(KindAddress, "IDS_ADDRESS", "Address", nullptr),
    field(KindWeb, "IDS_WEB", "Web"),
    field(KindEmail, "IDS_EMAIL", "Email"),
    field(KindTelephones, "IDS_PHONE_NUMBERS", "Tel_View"),
};

}  // namespace

std::span<const FolderDefinition> standardFolders() {
  return kStandardFolders;
}

const FolderDefinition* findFolder(int id) {
  for (const FolderDefinition& definition : kStandardFolders) {
    if (definition.id == id) return &definition;
  }
  return nullptr;
}

const FolderDefinition& contactsList() {
  static constexpr FolderDefinition kList = list(FolderContacts, "IDS_CONTACTS", "Contacts", kContacts);
  return kList;
}

std::string folderCaption(const FolderDefinition& definition, const foundation::LanguageFile& texts) {
  return std::string(base::firstCharacters(texts.Translate(definition.caption), kCaptionLength));
}

std::string currentCondition(const FolderDefinition& definition, const FolderServices& services) {
  switch (definition.condition) {
    case ConditionSource::LogFilter:
      return services.log.BuildLogFilter();
    case ConditionSource::CallFilter:
      return services.filter.condition();
    case ConditionSource::None:
      break;
  }
  return {};
}

}  // namespace folders
