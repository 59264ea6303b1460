#include "server/phonebook_file.h"

#include "schema/database_place.h"

namespace server {

std::unique_ptr<jet::Database> openPhonebookFile(const std::filesystem::path& folder) {
  try {
    return schema::DatabasePlace::ofFolder(folder).openWritableOrReadOnly(schema::Which::Phonebook).database;
  } catch (const jet::Error&) {
    return nullptr;
  }
}

}  // namespace server
