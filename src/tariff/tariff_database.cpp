#include "tariff/tariff_database.h"

#include "base/path.h"
#include "base/printf.h"

namespace tariff {

namespace {

std::unique_ptr<jet::Database> openFile(const std::filesystem::path& file) {
  constexpr int kNotWritable = 3051;
  try {
    return jet::openDatabase(file, jet::OpenMode::ReadWrite);
  } catch (const jet::Error& error) {
    // Pricing only reads.
    if (error.number() != kNotWritable) throw;
    return jet::openDatabase(file, jet::OpenMode::ReadOnly);
  }
}

}  // namespace

TariffDatabase::TariffDatabase(std::unique_ptr<jet::Database> database) : database_(std::move(database)) {
  detectDayEncoding();
}

std::unique_ptr<TariffDatabase> TariffDatabase::open(std::string_view folder) {
  return std::make_unique<TariffDatabase>(openFile(base::systemPath(base::format("%s%s", folder, "tariffs.mdb"))));
}

void TariffDatabase::detectDayEncoding() {
  const auto products = database_->openRecordset("SELECT * from charges where charge_days > 20");
  dayEncoding_ = products->eof() ? DayEncoding::Plain : DayEncoding::Product;
}

}  // namespace tariff
