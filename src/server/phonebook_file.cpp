#include "server/phonebook_file.h"

namespace server {

std::unique_ptr<jet::Database> openPhonebookFile(const schema::DatabasePlace& place) {
  try {
    return place.openWritableOrReadOnly(schema::Which::Phonebook).database;
  } catch (const jet::Error&) {
    return nullptr;
  }
}

}  // namespace server
