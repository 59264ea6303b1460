#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/party_index.h"
#include "jet/prepared_select.h"

namespace ingest {

// The national phonebook "phonebook.mdb": its table `map` says which table lists the subscribers of which prefix.
class Phonebook {
 public:
  // Takes over an open file and reads its map. Throws jet::Error.
  explicit Phonebook(std::unique_ptr<jet::Database> database);

  // Opens "phonebook.mdb", read-only, in the folder of setting "PathDatabase", given as documented: it ends with its
  // separator. Throws jet::Error when it cannot.
  static std::unique_ptr<Phonebook> open(std::string_view folder);

  // "Lastname Firstname" of the subscriber with that normalised number; nothing when it is not listed.
  [[nodiscard]] std::optional<std::string> nameOf(std::string_view normalisedNumber);

  [[nodiscard]] jet::Database& database() { return *database_; }

 private:
  void readMap();

  struct MapRow {
    std::string prefix;
    std::string table;
    std::optional<jet::PreparedSelect> subscriber = {};  // by the rest of the number; made when it is asked for
  };

  std::unique_ptr<jet::Database> database_;
  std::vector<MapRow> map_;  // in table order
  exchange::PrefixIndex prefixes_;
};

}  // namespace ingest
