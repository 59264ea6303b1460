#pragma once

#include <string>

namespace jet {

// Name and version of the library behind the database files, for a person.
std::string databaseLibrary();
// Of the library that speaks to servers.
std::string serverLibrary();

}  // namespace jet
