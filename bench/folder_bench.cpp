// What an operator waits for: statistics over many calls beside the same queries written by hand for SQLite, the first
// screen of the call list, and a list report beside the bare query and the same bytes. Usage: folder_bench [CALLS]
// [FOLDER] [--postgres ADDRESS]
//
// On a server, calls made in schemas that begin with the folder's name are kept and used again.
//
// A line a measurement: what, milliseconds of the folder, milliseconds of the yardstick, their ratio; the best of some
// rounds in turn. Statistics have two more figures: the folder in a program just started, and its ratio.

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "jet/stored_database.h"
#include "office.h"

namespace {

namespace fs = std::filesystem;

using bench::Bare;
using bench::DataFolder;
using bench::kScreen;
using bench::makeCalls;
using bench::milliseconds;
using bench::millisecondsOf;
using bench::Office;

constexpr int kReportRows = 100'000;  // calls in the report
constexpr int kRounds = 3;

// Runs a query written by hand.
using ByHand = std::function<void(const std::string& sql)>;

struct Data {
  fs::path folder;
  fs::path main;
  bool server = false;
};

void print(const std::string& what, double folder, double yardstick) {
  std::cout << base::format("%-42s %9.1f %9.1f  %.2f\n", what, folder, yardstick, folder / yardstick) << std::flush;
}

struct Grouping {
  int folder;
  const char* name;
  const char* byHand;
  const char* byHandOnServer = nullptr;  // where it is another
};
constexpr Grouping kGroupings[] = {
    {101, "extensions", "Extension"},
    {102, "numbers", "DialNumber"},
    {103, "areas", "Area"},
    {104, "trunks", "Trunk"},
    {106, "departments", "Department"},
    {107, "clients", "Owner"},
    {108, "files", "Folder"},
    {109, "accounts", "AccountCode"},
    {110, "names", "Name"},
    {111, "countries", "Country"},
    {112, "providers", "Provider"},
    {113, "weekdays", "cast(strftime('%w', [DateTime]) as integer)", "extract(dow from DateTime)::int"},
    {114, "days", "cast(substr([DateTime], 9, 2) as integer)", "extract(day from DateTime)::int"},
    {115, "months", "cast(substr([DateTime], 6, 2) as integer)", "extract(month from DateTime)::int"},
    {116, "hours", "cast(substr([DateTime], 12, 2) as integer)", "extract(hour from DateTime)::int"}};

// The folder of a program that has it opened before, of one just started, and the query, in turn.
void compareStatistic(Office& office, const ByHand& bare, const Data& data, const bench::Narrowing& narrowing,
                      const Grouping& grouping) {
  const bool other = data.server && grouping.byHandOnServer != nullptr;
  const std::string byHand =
      std::string("select ") + (other ? grouping.byHandOnServer : grouping.byHand) +
      ", sum(TotalTime), count(*), sum(Price_Ref), sum(Price_Ref * (0 + 100) / 100), sum(Ring), avg(Price_Ref), "
      "avg(Price_Ref * (0 + 100) / 100), avg(Ring) from Calls where " +
      narrowing.byHand + " group by 1";
  double again = 1e12;
  double fresh = 1e12;
  double yardstick = 1e12;
  for (int round = 0; round < kRounds; ++round) {
    again = std::min(again, millisecondsOf([&] { office.firstScreen(grouping.folder, 0); }));
    yardstick = std::min(yardstick, millisecondsOf([&] { bare(byHand); }));
    Office started(data.folder, data.main);
    started.filter(narrowing.settings);
    fresh = std::min(fresh, millisecondsOf([&] { started.firstScreen(grouping.folder, 0); }));
  }
  std::cout << base::format("%-42s %9.1f %9.1f  %.2f %9.1f  %.2f\n",
                            base::format("%s, %s", grouping.name, narrowing.name), again, yardstick, again / yardstick,
                            fresh, fresh / yardstick)
            << std::flush;
}

void compareStatistics(Office& office, const ByHand& bare, const Data& data) {
  for (const bench::Narrowing& narrowing : bench::narrowings()) {
    office.filter(narrowing.settings);
    for (const Grouping& grouping : kGroupings) compareStatistic(office, bare, data, narrowing, grouping);
  }
  office.filter({});
}

void openLists(Office& office, const ByHand& bare) {
  struct Order {
    const char* name;
    int sortKey;
    const char* byHand;
  };
  for (const Order& order : {Order{"unsorted", 0, ""}, Order{"newest first", -401, " order by [DateTime] desc"},
                             Order{"dearest first", -408, " order by Price_Ref desc"}}) {
    print(base::format("first screen of the call list, %s", order.name),
          milliseconds([&] { office.firstScreen(100, order.sortKey); }),
          milliseconds([&] { bare(base::format("select * from Calls%s limit %d", order.byHand, kScreen)); }));
  }
  const auto list = office.open(100);
  print("number of rows of the call list", milliseconds([&] {
          list->refresh();
          if (list->rowCount() == 0) throw std::runtime_error("there are no rows");
        }),
        milliseconds([&] { bare("select count(*) from Calls"); }));
}

void writeReport() {
  const DataFolder folder("folder_bench.report");
  makeCalls(folder.path() / schema::kMainFile, kReportRows);
  Office office(folder.path());
  Bare file(folder.path() / schema::kMainFile);
  const auto bare = [&file](const std::string& sql) { file.readAll(sql); };
  const fs::path page = folder.path() / "list.html";
  const double report = milliseconds([&] { office.report(page); });
  const std::string block(1 << 16, 'x');
  const auto size = static_cast<std::int64_t>(fs::file_size(page));
  const double yardstick = milliseconds([&] {
    bare("select * from Calls");
    std::ofstream copy(folder.path() / "bytes", std::ios::binary);
    for (std::int64_t left = size; left > 0; left -= static_cast<std::int64_t>(block.size())) {
      copy.write(block.data(), static_cast<std::streamsize>(block.size()));
    }
  });
  print(base::format("report of %d calls, %d MB", kReportRows, size / 1'000'000), report, yardstick);
}

}  // namespace

int main(int count, char** words) {
  const std::optional<std::string> address = bench::takeAddress(count, words);
  const std::int64_t calls = count > 1 ? std::max(1LL, std::atoll(words[1])) : 1'000'000;
  const DataFolder folder("folder_bench");
  std::optional<bench::ServerPlace> server;
  if (address) server.emplace(*address, count > 2 ? fs::path(words[2]).filename().string() : std::string());
  bench::byTheClock = address.has_value();
  const Data data{folder.path(),
                  server ? fs::path(server->prefix() + schema::kMainFile) : folder.path() / schema::kMainFile,
                  address.has_value()};
  if (server) {
    if (!jet::databaseExists(data.main)) bench::makeCallsOnServer(*server, calls);
  } else {
    makeCalls(data.main, calls);
  }
  std::cout << base::format("%d calls%35s ms  by hand ratio, just started\n", calls, "");
  {
    Office office(data.folder, data.main);
    std::optional<Bare> file;
    std::optional<bench::ServerBare> onServer;
    if (server) {
      onServer.emplace(*server);
    } else {
      file.emplace(data.main);
    }
    const ByHand bare = [&](const std::string& sql) { server ? onServer->readAll(sql) : file->readAll(sql); };
    openLists(office, bare);
    compareStatistics(office, bare, data);
  }
  if (server) return 0;
  writeReport();
  return 0;
}
