#include "tariff/tariff_database.h"

#include "schema/database_place.h"

namespace tariff {

TariffDatabase::TariffDatabase(std::unique_ptr<jet::Database> database) : database_(std::move(database)) {
  try {
    detectDayEncoding();
  } catch (const jet::Error&) {
    // Tried again, and then told, by who needs it.
  }
}

DayEncoding TariffDatabase::dayEncoding() {
  if (!dayEncoding_) detectDayEncoding();
  return *dayEncoding_;
}

std::unique_ptr<TariffDatabase> TariffDatabase::open(std::string_view folder) {
  auto opened = schema::DatabasePlace::ofSetting(folder).openWritableOrReadOnly(schema::Which::Tariffs);
  return std::make_unique<TariffDatabase>(std::move(opened.database));
}

void TariffDatabase::detectDayEncoding() {
  const auto products = database_->openRecordset("SELECT * from charges where charge_days > 20");
  dayEncoding_ = products->eof() ? DayEncoding::Plain : DayEncoding::Product;
}

}  // namespace tariff
