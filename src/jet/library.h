#pragma once

#include <string>

namespace jet {

// Name and version of the library that keeps the database files, for a person.
std::string databaseLibrary();
// Of the library that speaks to servers.
std::string serverLibrary();

}  // namespace jet
