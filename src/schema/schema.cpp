#include "schema/schema.h"

namespace schema {

using jet::FieldDef;
using jet::IndexDef;
using jet::TableDef;
using jet::Type;

namespace {

FieldDef text(const char* name) {
  return {.name = name, .type = Type::Text};
}
FieldDef memo(const char* name) {
  return {.name = name, .type = Type::Text, .size = 0};
}
FieldDef number(const char* name) {
  return {.name = name, .type = Type::Long};
}
FieldDef real(const char* name) {
  return {.name = name, .type = Type::Double};
}
FieldDef date(const char* name) {
  return {.name = name, .type = Type::DateTime};
}
FieldDef yesNo(const char* name) {
  return {.name = name, .type = Type::Boolean};
}
FieldDef autoKey(const char* name) {
  return {.name = name, .type = Type::Long, .autoIncrement = true};
}

TableDef calls() {
  return {.name = "Calls",
          .fields = {autoKey("RecordID"),
                     date("DateTime"),
                     text("DialNumber"),
                     text("Extension"),
                     text("Trunk"),
                     number("TotalTime"),
                     number("Pulses"),
                     text("AccountCode"),
                     number("Redirected"),
                     number("Incoming"),
                     number("Ring"),
                     text("CD"),
                     yesNo("Hidden"),
                     text("Name"),
                     real("Price"),
                     text("Currency"),
                     real("Price_Ref"),
                     text("Profile"),
                     text("Provider"),
                     text("Area"),
                     text("Country"),
                     text("Department"),
                     text("Owner"),
                     text("Folder"),
                     {.name = "valuta", .type = Type::Text, .generatedFrom = "Currency"}},
          // By date for the list, the filter's period and retention; by price for the sorted list; by number for
          // hiding. None by what statistics group by (extension, department): a query that groups by an indexed column
          // walks the index and fetches row by row, which takes twice to ten times as long as reading the table and
          // sorting. A server keeps the orders that operators ask for most: a list of millions is sorted there once,
          // not at each desk.
          .indexes = {{{"DateTime"}},
                      {{"Price_Ref"}},
                      {{"DialNumber"}},
                      {.fields = {"Extension"}, .forOrder = true},
                      {.fields = {"TotalTime"}, .forOrder = true},
                      {.fields = {"Name"}, .forOrder = true}}};
}

void addTables(jet::Database& database, const std::vector<TableDef>& tables) {
  jet::Transaction transaction(database);
  for (const TableDef& table : tables) database.createTable(table);
  transaction.commit();
}

std::unique_ptr<jet::Database> create(const std::filesystem::path& file, void (*fill)(jet::Database&)) {
  auto database = jet::createDatabase(file);
  fill(*database);
  return database;
}

}  // namespace

std::vector<TableDef> mainTables() {
  return {
      calls(),
      {.name = "FilteredNumbers", .fields = {text("number")}, .indexes = {{{"number"}}}},
      {.name = "Clients", .fields = {text("Name"), text("Account"), text("Folder")}, .indexes = {}},
      {.name = "Config", .fields = {text("Path"), memo("String_Value"), number("Int_Value")}, .indexes = {{{"Path"}}}},
      {.name = "Touch", .fields = {text("Tag"), number("Value")}, .indexes = {{{"Tag"}}}},
      {.name = "Users",
       .fields = {number("RecordID"), text("Name"), text("Fullname"), number("Password"), date("PasswordDate"),
                  date("LastAccessDate"), number("Flags"), text("Groups"), text("SQLSubquery")},
       .indexes = {{{"RecordID"}, true}}},
      {.name = "Groups",
       .fields = {number("RecordID"), text("Name"), text("Desc"), number("PasswordExpire"), text("ObjectAccess")},
       .indexes = {{{"RecordID"}, true}}},
      // What users and groups do not see of numbers and names.
      {.name = "Masks",
       .fields = {text("Owner"), number("OwnerID"), number("Digits"), yesNo("PrivateNames")},
       .indexes = {}},
      {.name = "Log",
       .fields = {autoKey("RecordID"), date("DateTime"), text("UserName"), number("Level"), text("Desc")},
       .indexes = {{{"DateTime"}}}},
      {.name = "Currency",
       .fields = {number("CurrencyID"), text("Name"), real("Ratio"), date("DateModify"), number("Default"),
                  number("Reverse")},
       .indexes = {}},
      {.name = "Contacts",
       .fields = {number("RecordID"), text("Name"), text("Organization"), text("Contact"), memo("Note"), number("Tip"),
                  text("Address"), text("Web"), text("Email"), text("Tel_View"), text("Tel_String"), text("Tel")},
       .indexes = {{{"RecordID"}}, {{"Name"}}}},
      // What is to be told of, and what was.
      {.name = "AlarmRules",
       .fields = {autoKey("RuleID"), text("Name"), text("Kind"), text("Subject"), text("SubjectValue"), text("Measure"),
                  text("Period"), real("LimitValue"), number("Seconds"), number("Minutes"), memo("Prefixes"),
                  memo("Countries"), yesNo("OutsideHours"), yesNo("Enabled"), memo("Mail"), memo("Command")},
       .indexes = {}},
      {.name = "Alarms",
       .fields = {autoKey("AlarmID"), date("DateTime"), text("RuleName"), text("Subject"), date("PeriodStart"),
                  number("Step"), real("Amount"), real("LimitValue"), memo("Desc"), number("CallID"), text("AckUser"),
                  date("AckTime"), number("Sent")},
       .indexes = {{{"RuleName", "Subject"}}, {{"Sent"}}}},
      // Numbers and names of calls that were made anonymous, until that is confirmed.
      {.name = "CallsBefore", .fields = {number("CallID"), text("DialNumber"), text("Name")}, .indexes = {}},
      // How far the reading of each monitor file has come; see docs/storage.md.
      {.name = "ImportProgress",
       .fields = {memo("File"), number("Records"), real("Bytes"), text("Digest"), yesNo("StoppedByOperator")},
       .indexes = {}},
      {.name = "ImportKept",
       .fields = {memo("File"), text("Kind"), memo("KeptFile"), real("Bytes"), real("Earlier")},
       .indexes = {}},
      // Reports that are mailed by themselves, and how far each has come.
      {.name = "Schedules",
       .fields = {autoKey("RecordID"),   text("Name"),       yesNo("Enabled"), number("Folder"), memo("Filter"),
                  memo("Columns"),       number("SortKey"),  text("Format"),   text("Period"),   text("Days"),
                  number("MinuteOfDay"), memo("Recipients"), text("Lang"),     text("UserName"), memo("Note"),
                  date("NextRun"),       date("RunFor"),     memo("Waiting"),  date("TryAfter"), number("Attempts"),
                  date("LastSent"),      memo("LastError"),  number("Version")},
       .indexes = {}},
  };
}

std::vector<TableDef> tariffTables() {
  return {
      {.name = "providers", .fields = {number("provider_id"), text("provider_name")}, .indexes = {{{"provider_id"}}}},
      {.name = "prefixes2",
       .fields = {text("prefix_id"), text("prefix_name"), text("prefix_ctry")},
       .indexes = {{{"prefix_id"}}}},
      {.name = "prefixe",
       .fields = {text("prefix_id"), number("provider_id"), number("destination_id")},
       .indexes = {{{"prefix_id", "provider_id"}}}},
      {.name = "profiles",
       .fields = {number("profile_id"), text("profile_name"), date("profile_start_date"), number("provider_id"),
                  number("date_group"), number("free_minutes")},
       .indexes = {{{"provider_id"}}}},
      {.name = "charges",
       .fields = {number("destination_id"), number("profile_id"), number("charge_minimum_digits"),
                  date("charge_start_time"), date("charge_end_time"), number("charge_days"),
                  number("charge_default_resolution"), number("charge_minimum"), real("charge_value"),
                  real("charge_default"), real("charge_pulse_value"), text("charge_currency")},
       .indexes = {{{"destination_id", "profile_id"}}}},
  };
}

std::vector<TableDef> phonebookTables() {
  return {{.name = "map", .fields = {text("Prefix"), text("Name"), text("Table")}, .indexes = {}}};
}

TableDef phonebookTable(const std::string& name) {
  return {.name = name,
          .fields = {text("Lastname"), text("Firstname"), text("Address"), number("Tel")},
          .indexes = {{{"Tel"}}}};
}

void fillMainDatabase(jet::Database& database) {
  jet::Transaction transaction(database);
  addTables(database, mainTables());
  for (const char* tag : kChangeTags) {
    database.execute("insert into Touch (Tag, [Value]) values ('" + std::string(tag) + "', 0)");
  }
  database.execute("insert into Config (Path, Int_Value) values ('general\\DbVersion', 1)");
  database.execute("insert into Config (Path, Int_Value) values ('general\\LastCurrencyID', 2)");
  database.execute("insert into Config (Path, Int_Value) values ('Contacts\\Next RecID', 1)");
  database.execute(
      "insert into Currency (CurrencyID, Name, Ratio, DateModify, [Default], Reverse) "
      "values (1, 'RON', 1, Date(), 1, 0)");
  transaction.commit();
}

void fillTariffDatabase(jet::Database& database) {
  addTables(database, tariffTables());
}

void fillPhonebookDatabase(jet::Database& database) {
  addTables(database, phonebookTables());
}

std::unique_ptr<jet::Database> createMainDatabase(const std::filesystem::path& file) {
  return create(file, fillMainDatabase);
}

std::unique_ptr<jet::Database> createTariffDatabase(const std::filesystem::path& file) {
  return create(file, fillTariffDatabase);
}

std::unique_ptr<jet::Database> createPhonebookDatabase(const std::filesystem::path& file) {
  return create(file, fillPhonebookDatabase);
}

}  // namespace schema
