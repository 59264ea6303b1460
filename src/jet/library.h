#pragma once

#include <string>

namespace jet {

// Name and version of the library behind the database files, for a person.
std::string databaseLibrary();

}  // namespace jet
