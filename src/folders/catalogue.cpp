#include "folders/catalogue.h"

#include "base/characters.h"

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
    column(1, "IDS_NULL", "Name", "Name", kKeyFlags), field(350, "IDS_ACCOUNT", "Name"),
    field(351, "IDS_USERNAME_TEXT", "Fullname"),      field(352, "IDS_DATE_ACCESS", "LastAccessDate"),
    field(353, "IDS_PASSWORD_DATE", "PasswordDate"),  column(354, "Flags_Invizibil", "Flags", "Flags", 0),
};

constexpr std::array kGroups = {
    column(1, "IDS_NULL", "Name", "Name", kKeyFlags),
    field(370, "IDS_GROUP_NAME_TEXT", "Name"),
    column(371, "IDS_DESCRIPTION", "Desc", nullptr),
};

constexpr std::array kLog = {
    column(1, "IDS_NULL", "RecordID", "RecordID", kKeyFlags),
    field(380, "IDS_USER", "UserName"),
    column(381, "IDS_DESCRIPTION", "Desc", nullptr),
    field(382, "IDS_DATE_HOUR", "DateTime"),
};

constexpr std::array kCalls = {
    ColumnDefinition{1, "IDS_NULL", {"RecordID", "Hidden"}, "RecordID", kKeyFlags},
    field(400, "IDS_NUMBER", "DialNumber"),
    field(407, "IDS_NAME", "Name"),
    field(411, "IDS_AREA", "Area"),
    field(401, "IDS_DATE_HOUR", "DateTime"),
    field(402, "IDS_EXTENSION", "Extension"),
    field(403, "IDS_TRUNK", "Trunk"),
    field(404, "IDS_DURATION", "TotalTime"),
    field(405, "IDS_ACCOUNT", "AccountCode"),
    field(408, "IDS_COST_REF", "Price_Ref"),
    ColumnDefinition{412, "IDS_COST", {"Price", "Currency"}, "Price_Ref"},
    column(420, "IDS_PRICE", "Price_Ref * %ADD% as padaos", "Price_Ref"),
    field(409, "IDS_REDIRECTED", "Redirected"),
    field(413, "IDS_DEPARTMENT", "Department"),
    field(414, "IDS_CODE", "CD"),
    field(415, "IDS_TYPE", "Incoming"),
    field(416, "IDS_RING", "Ring"),
    field(418, "IDS_CLIENT", "Owner"),
    field(419, "IDS_FOLDER", "Folder"),
    field(426, "IDS_PROVIDER", "Provider"),
    field(427, "IDS_COUNTRY", "Country"),
    field(428, "IDS_PULSES", "Pulses"),
};

// Unlike the other statistics, sorting by the count of calls sorts by the duration, and the average price is of the
// amounts in the calls' own currencies.
constexpr std::array kExtensions = {
    column(1, "IDS_NULL", "Extension AS RecordID", "1", kKeyFlags),
    column(402, "IDS_EXTENSION", "Extension", "2"),
    column(404, "IDS_DURATION", "SUM(TotalTime) AS SUM_TotalTime", "3"),
    column(421, "IDS_CALLS_COUNT", "count(*) as cnt", "3"),
    column(422, "IDS_COST", "SUM(Price_Ref) AS SUM_Cost", "5"),
    column(417, "IDS_PRICE", "SUM(Price_Ref * %ADD% ) AS SUM_Price", "6"),
    column(416, "IDS_RING", "SUM(Ring) AS SUM_Ring", "7"),
    column(423, "IDS_COST_AVG", "AVG(Price_Ref) AS AVG_Cost", "8"),
    column(425, "IDS_PRICE_AVG", "AVG(Price * %ADD%) AS AVG_Price", "9"),
    column(424, "IDS_RING_AVG", "AVG(Ring) AS AVG_Ring", "10"),
};

constexpr std::array kTop = {
    column(1, "IDS_NULL", "DialNumber AS RecordID", "1", kKeyFlags),
    column(400, "IDS_NUMBER", "DialNumber", "2"),
    column(402, "IDS_EXTENSION", "First(Extension) as MaxExt", "3"),
    column(407, "IDS_NAME", "First(Name) as Numele", "  4"),
    column(404, "IDS_DURATION", "SUM(TotalTime) AS SUM_TotalTime", "5"),
    column(421, "IDS_CALLS_COUNT", "count(*) as cnt", "6"),
    column(422, "IDS_COST", "SUM(Price_Ref) AS SUM_Cost", "7"),
    column(417, "IDS_PRICE", "SUM(Price_Ref * %ADD%) AS SUM_Price", "8"),
    column(416, "IDS_RING", "SUM(Ring) AS SUM_Ring", "9"),
    column(423, "IDS_COST_AVG", "AVG(Price_Ref) AS AVG_Cost", "10"),
    column(425, "IDS_PRICE_AVG", "AVG(Price_Ref * %ADD%) AS AVG_Price", "11"),
    column(424, "IDS_RING_AVG", "AVG(Ring) AS AVG_Ring", "12"),
};

// The ten columns of a statistic; the second one shows the grouped value.
constexpr std::array<ColumnDefinition, 10> statistic(const char* key, int kind, const char* caption,
                                                     const char* select) {
  return {
      column(1, "IDS_NULL", key, "1", kKeyFlags),
      column(kind, caption, select, "2"),
      column(404, "IDS_DURATION", "SUM(TotalTime) AS SUM_TotalTime", "3"),
      column(421, "IDS_CALLS_COUNT", "count(*) as cnt", "4"),
      column(422, "IDS_COST", "SUM(Price_Ref) AS SUM_Cost", "5"),
      column(417, "IDS_PRICE", "SUM(Price_Ref * %ADD%) AS SUM_Price", "6"),
      column(416, "IDS_RING", "SUM(Ring) AS SUM_Ring", "7"),
      column(423, "IDS_COST_AVG", "AVG(Price_Ref) AS AVG_Cost", "8"),
      column(425, "IDS_PRICE_AVG", "AVG(Price_Ref * %ADD%) AS AVG_Price", "9"),
      column(424, "IDS_RING_AVG", "AVG(Ring) AS AVG_Ring", "10"),
  };
}

// Kinds are shared on purpose: an area shows as a number does, a name as a client, a country as a provider.
constexpr auto kAreas = statistic("Area AS RecordID", 400, "IDS_AREA", "Area");
constexpr auto kTrunks = statistic("Trunk AS RecordID", 403, "IDS_TRUNK", "Trunk");
constexpr auto kDepartments = statistic("Department AS RecordID", 413, "IDS_DEPARTMENT", "Department");
constexpr auto kClients = statistic("Owner AS RecordID", 418, "IDS_CLIENT", "Owner");
constexpr auto kFolders = statistic("Folder AS RecordID", 419, "IDS_FOLDER", "Folder");
constexpr auto kAccounts = statistic("AccountCode AS RecordID", 405, "IDS_ACCOUNT", "AccountCode");
constexpr auto kNames = statistic("Name AS RecordID", 418, "IDS_NAME", "Name");
constexpr auto kCountries = statistic("Country AS RecordID", 426, "IDS_COUNTRY", "Country");
constexpr auto kProviders = statistic("Provider AS RecordID", 426, "IDS_PROVIDER", "Provider");
constexpr auto kWeekdays = statistic("Weekday(DateTime) AS RecordID", 429, "IDS_WEEKDAY", "Weekday(DateTime) AS WD");
constexpr auto kDays = statistic("Day(DateTime) AS RecordID", 430, "IDS_DAYOFMONTH", "Day(DateTime) AS MD");
constexpr auto kMonths = statistic("Month(DateTime) AS RecordID", 432, "IDS_MONTH", "Month(DateTime) AS MON");
constexpr auto kHours = statistic("Hour(DateTime) AS RecordID", 431, "IDS_HOUR", "Hour(DateTime) AS HR");

constexpr FolderDefinition list(int id, const char* caption, const char* table,
                                std::span<const ColumnDefinition> columns) {
  return {id, caption, table, "", columns, FolderStandard, ConditionSource::None};
}
constexpr FolderDefinition calls(int id, const char* caption, const char* grouping,
                                 std::span<const ColumnDefinition> columns) {
  return {id, caption, "Calls", grouping, columns, FolderStandard | FolderConditional, ConditionSource::CallFilter};
}

// 105 is left unused.
constexpr std::array kStandardFolders = {
    list(97, "IDS_FOLDER_USERS", "Users", kUsers),
    list(98, "IDS_FOLDER_GROUPS", "Groups", kGroups),
    FolderDefinition{99, "IDS_FOLDER_LOG", "Log", "", kLog, FolderStandard | FolderConditional,
                     ConditionSource::LogFilter},
    calls(100, "IDS_FOLDER_CALLS", "", kCalls),
    calls(101, "IDS_EXTENSIONS", "Extension", kExtensions),
    calls(102, "IDS_TOP", "DialNumber", kTop),
    calls(103, "IDS_AREAS", "Area", kAreas),
    calls(104, "IDS_TRUNKS", "Trunk", kTrunks),
    calls(106, "IDS_DEPARTMENT", "Department", kDepartments),
    calls(107, "IDS_CLIENTS", "Owner", kClients),
    calls(108, "IDS_FILES", "Folder", kFolders),
    calls(109, "IDS_ACCOUNTS", "AccountCode", kAccounts),
    calls(110, "IDS_NAME", "Name", kNames),
    calls(111, "IDS_COUNTRY", "Country", kCountries),
    calls(112, "IDS_PROVIDER", "Provider", kProviders),
    calls(113, "IDS_WEEKDAY", "Weekday(DateTime)", kWeekdays),
    calls(114, "IDS_DAYOFMONTH", "Day(DateTime)", kDays),
    calls(115, "IDS_MONTH", "Month(DateTime)", kMonths),
    calls(116, "IDS_HOUR", "Hour(DateTime)", kHours),
};

constexpr std::array kContacts = {
    ColumnDefinition{1, "IDS_NULL", {nullptr, nullptr}, "Name", kKeyFlags},
    field(200, "IDS_NAME", "Name"),
    field(202, "IDS_ORGANIZATION", "Organization"),
    field(201, "IDS_CONTACT", "Contact"),
    column(208, "IDS_NOTE", "Note", nullptr),
    field(203, "IDS_RELATIONSHIP", "Tip"),
    column(207, "IDS_ADDRESS", "Address", nullptr),
    field(206, "IDS_WEB", "Web"),
    field(205, "IDS_EMAIL", "Email"),
    field(210, "IDS_PHONE_NUMBERS", "Tel_View"),
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
  static constexpr FolderDefinition kList = list(kContactsList, "IDS_CONTACTS", "Contacts", kContacts);
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
