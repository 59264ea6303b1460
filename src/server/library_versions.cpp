#include "server/library_versions.h"

#include <sqlite3.h>

namespace server {

std::vector<std::string> libraryVersions() {
  // The reader of old databases cannot say its version; that of the build is what the program was tested with.
  return {std::string("SQLite ") + sqlite3_libversion(), "libmdb " TALLYBOOK_LIBMDB_VERSION};
}

}  // namespace server
