// The call list and the statistics of very many calls: first screens in every order, jumps and scrolling, counting and
// finding, with a filter and without, and the memory that all of it takes.
// Usage: list_bench [CALLS] [FOLDER] [typing|lists] [--postgres ADDRESS]
//
// With a folder, the calls made there are kept and used again; on a server, in schemas that begin with its name. A line
// a measurement: what, milliseconds the first time and at the best of three more. The third word measures the line over
// the list alone, or the lists alone.

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "folders/quick_search.h"
#include "jet/stored_database.h"
#include "office.h"

namespace {

using bench::kScreen;
using bench::milliseconds;
using bench::millisecondsOf;
using bench::Office;

constexpr int kCallList = 100;

// Memory of this process now, without pages of files, in MiB.
double memory() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    if (word != "RssAnon:") continue;
    double kilobytes = 0;
    status >> kilobytes;
    return kilobytes / 1024;
  }
  return 0;
}

void measure(const std::string& what, const std::function<void()>& work) {
  const double first = millisecondsOf(work);
  std::cout << base::format("%-58s %9.1f %9.1f\n", what, first, milliseconds(work)) << std::flush;
}

struct Order {
  const char* name;
  int sortKey;
};
constexpr Order kOrders[] = {{"unsorted", 0},         {"by date", 401},   {"newest first", -401},
                             {"dearest first", -408}, {"by number", 400}, {"by extension", 402},
                             {"by duration", 404},    {"by name", 407},   {"by department", 413}};

void scroll(folders::FolderView& view, const std::string& what) {
  const std::int64_t rows = view.rowCount();
  const auto show = [&view](std::int64_t first) {
    if (view.rows(std::max<std::int64_t>(first, 0), kScreen).empty()) throw std::runtime_error("there are no rows");
  };
  measure(what + ", end", [&] { show(rows - kScreen); });
  measure(what + ", middle", [&] { show(rows / 2); });
  std::int64_t place = rows / 2;
  measure(what + ", a screen further", [&] { show(place = std::min(place + kScreen, rows - kScreen)); });
  std::uint32_t random = 1;
  measure(what + ", anywhere", [&] {
    random = random * 1664525 + 1013904223;
    show(static_cast<std::int64_t>(random) * (rows - kScreen) / 0xFFFFFFFF);
  });
}

void openLists(Office& office, const bench::Narrowing& narrowing) {
  office.filter(narrowing.settings);
  for (const Order& order : kOrders) {
    const std::string what = base::format("list, %s, %s", narrowing.name, order.name);
    measure(what, [&] { office.firstScreen(kCallList, order.sortKey); });
    const auto view = office.open(kCallList, order.sortKey);
    measure(what + ", number of rows", [&] {
      view->refresh();
      if (view->rowCount() == 0) throw std::runtime_error("there are no rows");
    });
    scroll(*view, what);
    const auto key = view->readKey(view->rowCount() / 3);
    measure(what + ", find a call", [&] {
      if (!view->findRow(*key)) throw std::runtime_error("the call is not found");
    });
  }
  std::cout << base::format("memory %.0f MiB\n", memory()) << std::flush;
}

void openStatistics(Office& office, const bench::Narrowing& narrowing) {
  office.filter(narrowing.settings);
  for (int folder = 101; folder <= 116; ++folder) {
    if (folder == 105) continue;
    measure(base::format("statistic %d, %s", folder, narrowing.name), [&] { office.firstScreen(folder, -404); });
  }
  std::cout << base::format("memory %.0f MiB\n", memory()) << std::flush;
}

// What a key in the line over the list costs: the condition, the number of rows, the first screen.
void typeInList(Office& office) {
  for (const char* typed : {"0", "02", "021", "0213", "a", "an", "ana", "ana 021", "no such row"}) {
    measure(base::format("list, newest first, typed \"%s\"", typed), [&] {
      const auto view = office.open(kCallList, -401);
      view->narrow(folders::Narrowing{folders::quickCriteria(*view, typed), {}});
      if (view->rowCount() > 0 && view->rows(0, kScreen).empty()) throw std::runtime_error("there are no rows");
    });
  }
}

}  // namespace

int main(int count, char** words) {
  const std::optional<std::string> address = bench::takeAddress(count, words);
  const std::int64_t calls = count > 1 ? std::max(1LL, std::atoll(words[1])) : 10'000'000;
  std::optional<bench::DataFolder> passing;
  std::filesystem::path folder;
  if (count > 2) {
    folder = words[2];
    std::filesystem::create_directories(folder);
  } else {
    folder = passing.emplace("list_bench").path();
  }
  std::optional<bench::ServerPlace> server;
  if (address) server.emplace(*address, count > 2 ? folder.filename().string() : std::string());
  bench::byTheClock = address.has_value();
  const std::filesystem::path file =
      server ? std::filesystem::path(server->prefix() + schema::kMainFile) : folder / schema::kMainFile;
  if (server) {
    if (!jet::databaseExists(file)) bench::makeCallsOnServer(*server, calls);
  } else if (!std::filesystem::exists(file)) {
    bench::makeCalls(file, calls);
  }
  std::cout << base::format("%-58s %9s %9s\n", "", "first ms", "again ms");
  const std::string part = count > 3 ? words[3] : "";
  if (part.empty() || part == "typing") {
    Office office(folder, file);
    typeInList(office);
  }
  if (part == "typing") return 0;
  for (const bench::Narrowing& narrowing : bench::narrowings()) {
    Office office(folder, file);
    openLists(office, narrowing);
  }
  if (part == "lists") return 0;
  Office office(folder, file);
  for (const bench::Narrowing& narrowing : bench::narrowings()) openStatistics(office, narrowing);
  return 0;
}
