#pragma once

#include <filesystem>
#include <string>

#include "jet/database.h"
#include "jet/stored_database.h"
#include "support/test_place.h"

namespace support {

// A test's own folder, whose databases ("NAME.mdb") are where TestPlace says: files in it, or schemas on a server. All
// of it goes with the object, which must outlive whatever has a database open.
class DatabaseFolder {
 public:
  [[nodiscard]] bool onServer() const { return place_.onServer(); }
  // For setting "PathDatabase".
  [[nodiscard]] std::string setting() const { return place_.prefix(); }
  [[nodiscard]] const TestPlace& place() const { return place_; }

  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return name.ends_with(".mdb") ? place_.database(name) : place_.folder() / name;
  }
  void removeDatabase(const std::string& name) const { jet::removeDatabase(place_.database(name)); }

 private:
  TestPlace place_;
};

// From now on this copy knows what others committed before; on a server it would else hear of it some milliseconds
// later.
inline void hearOfChanges(jet::Database& copy) {
  const jet::ReadView view(copy);
}

}  // namespace support
