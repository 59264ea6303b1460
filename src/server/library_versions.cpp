#include "server/library_versions.h"

#include "jet/library.h"

namespace server {

std::vector<std::string> libraryVersions() {
  // The reader of old databases cannot say its version; that of the build is what the program was tested with.
  return {jet::databaseLibrary(), jet::serverLibrary(), "libmdb " TALLYBOOK_LIBMDB_VERSION};
}

}  // namespace server
