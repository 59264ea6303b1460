#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "jet/database.h"
#include "jet/table_def.h"

namespace schema {

// The tables of the three database files as a new installation gets them.
std::vector<jet::TableDef> mainTables();       // tallybook.mdb
std::vector<jet::TableDef> tariffTables();     // tariffs.mdb
std::vector<jet::TableDef> phonebookTables();  // phonebook.mdb: only `map`; each mapped table is phonebookTable()
jet::TableDef phonebookTable(const std::string& name);

// Give an empty database its tables and the rows that must exist (change tags, DbVersion 1, the default currency, the
// counters), whole or not at all.
void fillMainDatabase(jet::Database& database);
void fillTariffDatabase(jet::Database& database);
void fillPhonebookDatabase(jet::Database& database);

// The same of a new file. Error 3204 when the file exists.
std::unique_ptr<jet::Database> createMainDatabase(const std::filesystem::path& file);
std::unique_ptr<jet::Database> createTariffDatabase(const std::filesystem::path& file);
std::unique_ptr<jet::Database> createPhonebookDatabase(const std::filesystem::path& file);

// The rows of table Touch that must exist.
inline constexpr const char* kChangeTags[] = {"Config", "Contacts", "Calls", "Users", "Groups", "Log"};

inline constexpr const char* kMainFile = "tallybook.mdb";
inline constexpr const char* kTariffFile = "tariffs.mdb";
inline constexpr const char* kPhonebookFile = "phonebook.mdb";

}  // namespace schema
