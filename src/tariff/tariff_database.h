#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "jet/database.h"
#include "tariff/charge_bands.h"

namespace tariff {

// The tariff database: providers, prefixes, profiles and charge bands. Opened once, held open while the program runs.
class TariffDatabase {
 public:
  // Takes over an open file and looks how its bands encode their days. A damaged table of bands is met by the first
  // call that is priced, so that calls are not taken for calls without a price.
  explicit TariffDatabase(std::unique_ptr<jet::Database> database);

  // Opens "tariffs.mdb" in the folder of setting "PathDatabase", given as documented: it ends with its separator.
  // Writable where the file allows it, else read-only. Throws jet::Error when the file is missing or is no database.
  static std::unique_ptr<TariffDatabase> open(std::string_view folder);

  [[nodiscard]] jet::Database& database() { return *database_; }
  // Throws jet::Error while the table of bands cannot be read.
  [[nodiscard]] DayEncoding dayEncoding();
  // Looks again, after the bands were edited: one band with a product switches the whole database.
  void detectDayEncoding();

 private:
  std::unique_ptr<jet::Database> database_;
  std::optional<DayEncoding> dayEncoding_;
};

}  // namespace tariff
