#include "ingest/phonebook.h"

#include <charconv>

#include "base/printf.h"
#include "schema/database_place.h"
#include "schema/missing.h"

namespace ingest {

namespace {

std::string subscriberPattern(std::string_view table) {
  std::string name;
  for (const char c : table) name.append(c == '%' ? 2 : 1, c);
  return base::format("SELECT TOP %d * FROM [%s] WHERE ", 1, name) + "(Tel=%d)";
}

}  // namespace

Phonebook::Phonebook(std::unique_ptr<jet::Database> database) : database_(std::move(database)) {
  try {
    readMap();
  } catch (const jet::Error& error) {
    const std::string missing = schema::missingFrom(schema::Which::Phonebook, *database_);
    if (missing.empty()) throw;
    throw jet::Error(error.number(), missing);
  }
}

void Phonebook::readMap() {
  const jet::Snapshot map = database_->openSnapshot("SELECT * FROM map");
  for (std::size_t row = 0; row < map.rowCount(); ++row) {
    map_.push_back({map.at(row, "Prefix").toText(), map.at(row, "Table").toText()});
    prefixes_.add(map_.back().prefix, row);
  }
}

std::unique_ptr<Phonebook> Phonebook::open(std::string_view folder) {
  const auto place = schema::DatabasePlace::ofSetting(folder);
  return std::make_unique<Phonebook>(place.open(schema::Which::Phonebook, jet::OpenMode::ReadOnly));
}

std::optional<std::string> Phonebook::nameOf(std::string_view normalisedNumber) {
  const auto found = prefixes_.find(normalisedNumber);
  if (!found) return std::nullopt;
  MapRow& row = map_[*found];
  const std::string_view rest = normalisedNumber.substr(row.prefix.size());
  // `Tel` holds 32 bits: a longer number, or one with more than digits in it, is no one's there and must not be cut to
  // somebody's.
  std::int32_t tel = 0;
  const char* end = rest.data() + rest.size();
  const auto [stop, fault] = std::from_chars(rest.data(), end, tel);
  if (fault != std::errc() || stop != end) return std::nullopt;
  if (!row.subscriber) row.subscriber.emplace(subscriberPattern(row.table));
  const jet::Snapshot subscribers = row.subscriber->open(*database_, tel);
  if (subscribers.empty()) return std::nullopt;
  return base::format("%s %s", subscribers.at(0, "Lastname").toText(), subscribers.at(0, "Firstname").toText());
}

}  // namespace ingest
