#include "exchange.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "base/printf.h"
#include "jet/database.h"
#include "jet/stored_database.h"
#include "schema/database_place.h"
#include "schema/schema.h"

namespace soak {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPulsesAt = 152;  // in a record, 32 bits, little-endian

fs::path newFolder() {
  std::string name = (fs::temp_directory_path() / "tallybook-soak-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
  fs::permissions(name, fs::perms::others_read | fs::perms::others_exec, fs::perm_options::add);
  return name;
}

std::string server;

// A name before those of the schemas that no one else has.
std::string placeOf(const fs::path& folder) {
  return Exchange::onServer() ? server + folder.filename().string() + "_" : (folder / "data/").string();
}

}  // namespace

void Exchange::putOnServer(const std::string& address) {
  server = address;
}

bool Exchange::onServer() {
  return !server.empty();
}

NumberedCalls::NumberedCalls(std::int64_t count, int days, std::uint64_t seed)
    : generator_({.count = count, .lastDay = *base::DateTime::fromParts(2026, 11, 20), .days = days, .seed = seed}) {}

std::string NumberedCalls::next(std::int32_t number) {
  std::string record = generator_.next();
  for (std::size_t i = 0; i < 4; ++i) record[kPulsesAt + i] = static_cast<char>(number >> (8 * i));
  return record;
}

int Census::stored(std::int32_t number) const {
  const auto at = static_cast<std::size_t>(number);
  return at < counts_.size() ? counts_[at] : 0;
}

Exchange::Exchange(fs::path folder, std::string place)
    : folder_(std::move(folder)), place_(std::move(place)), tallyctl_(folder_ / "machine.ini") {}

Exchange::Exchange() : folder_(newFolder()), place_(placeOf(folder_)), tallyctl_(folder_ / "machine.ini") {
  tallyctl_.must({"init", onServer() ? place_ : data().string(), "--sample"});
  tallyctl_.must({"setting", "set", "LiveSocket", socket().string(), "--where", "machine"});
}

std::unique_ptr<Exchange> Exchange::secondWorkstation() const {
  std::unique_ptr<Exchange> second(new Exchange(newFolder(), place_));
  second->ownsDatabases_ = false;
  fs::create_directory(second->monitor());
  fs::copy_file(folder_ / "machine.ini", second->folder_ / "machine.ini");
  for (const auto& [key, value] :
       {std::pair{"LiveSocket", second->socket()}, {"PathMonitor", second->monitor() / ""}}) {
    second->tallyctl_.must({"setting", "set", key, value.string(), "--where", "machine"});
  }
  return second;
}

Exchange::~Exchange() {
  if (ownsDatabases_) {
    for (const schema::DatabaseKind& kind : schema::databaseKinds()) jet::removeDatabase(place_ + kind.name);
  }
  std::error_code ignored;  // a folder left behind is seen and harmless
  fs::remove_all(folder_, ignored);
}

std::unique_ptr<Server> Exchange::serve(int importEverySeconds, const std::function<void()>& beforehand) const {
  return std::make_unique<Server>(tallyctl_, folder_, socket(), importEverySeconds, beforehand);
}

bool Exchange::dropMonitorFile(const std::string& records) const {
  const fs::path file = monitor() / "monitor.data";
  if (fs::exists(file)) return false;
  std::ofstream(monitor() / "incoming", std::ios::binary) << records;
  fs::rename(monitor() / "incoming", file);
  return true;
}

bool Exchange::allImported() const {
  for (const fs::directory_entry& entry : fs::directory_iterator(monitor())) {
    if (entry.path().filename().string().starts_with("monitor.data")) return false;
  }
  return true;
}

bool Exchange::waitUntilImported(std::chrono::seconds patience) const {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!allImported()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

std::filesystem::path Exchange::mainDatabase() const {
  return place_ + schema::kMainFile;
}

Census Exchange::census() const {
  Census census;
  const auto main = jet::openDatabase(mainDatabase(), jet::OpenMode::ReadOnly);
  main->forEachRow("SELECT Pulses FROM Calls", [&census](const std::vector<jet::Value>& row) {
    const auto number = static_cast<std::size_t>(row[0].toLong());
    if (number >= census.counts_.size()) census.counts_.resize(number + number / 2 + 1);
    ++census.counts_[number];
    ++census.rows_;
    return true;
  });
  return census;
}

std::vector<std::string> Exchange::loggedErrors() const {
  std::vector<std::string> texts;
  const auto main = jet::openDatabase(mainDatabase(), jet::OpenMode::ReadOnly);
  main->forEachRow("SELECT [Desc] FROM Log WHERE [Level] = 9", [&texts](const std::vector<jet::Value>& row) {
    texts.push_back(row[0].toText());
    return true;
  });
  return texts;
}

}  // namespace soak
