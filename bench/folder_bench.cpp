// What an operator waits for: statistics over many calls beside the same queries written by hand for SQLite, the first
// screen of the call list, and a list report beside the bare query and the same bytes. Usage: folder_bench [CALLS]
//
// A line a measurement: what, milliseconds of the folder, milliseconds of the yardstick, their ratio.

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "base/printf.h"
#include "filter/call_filter.h"
#include "folders/folder_view.h"
#include "folders/list_report.h"
#include "foundation/change_tags.h"
#include "schema/schema.h"

namespace {

namespace fs = std::filesystem;

constexpr int kScreen = 50;           // rows
constexpr int kReportRows = 100'000;  // calls in the report
constexpr int kRounds = 3;            // the best counts

// Removed with everything in it at the end.
class DataFolder {
 public:
  explicit DataFolder(const char* purpose)
      : path_(fs::absolute(base::format("folder_bench.%s.%d", purpose, ::getpid()))) {
    fs::create_directories(path_);
  }
  DataFolder(const DataFolder&) = delete;
  DataFolder& operator=(const DataFolder&) = delete;
  ~DataFolder() {
    std::error_code ignored;  // a folder left behind is seen and harmless
    fs::remove_all(path_, ignored);
  }
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

double milliseconds(const std::function<void()>& work) {
  double best = 1e12;
  for (int round = 0; round < kRounds; ++round) {
    const auto start = std::chrono::steady_clock::now();
    work();
    best = std::min(best, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

// SQLite without anything between.
class Bare {
 public:
  explicit Bare(const fs::path& file) {
    sqlite3* opened = nullptr;
    if (sqlite3_open(file.c_str(), &opened) != SQLITE_OK) throw std::runtime_error("cannot open " + file.string());
    database_.reset(opened);
  }
  void execute(const std::string& sql) {
    if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database_.get()));
    }
  }
  // Reads every value of every row.
  void readAll(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database_.get()));
    }
    while (sqlite3_step(statement) == SQLITE_ROW) {
      for (int i = 0; i < sqlite3_column_count(statement); ++i) bytes_ += sqlite3_column_bytes(statement, i);
    }
    sqlite3_finalize(statement);
  }

 private:
  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };
  std::unique_ptr<sqlite3, Close> database_;
  std::int64_t bytes_ = 0;
};

// Calls of twelve months up to the end of November 2026, in order of time.
void makeCalls(const fs::path& file, std::int64_t calls) {
  schema::createMainDatabase(file);
  Bare(file).execute(base::format(
      "pragma synchronous = off;"
      "with recursive n(i) as (select 0 union all select i + 1 from n where i < %d) "
      "insert into Calls (DialNumber, Name, Area, Country, Provider, [DateTime], Extension, Trunk, TotalTime, "
      "AccountCode, Price, Price_Ref, Currency, Department, Incoming, Ring, Hidden) "
      "select '07' || abs(random() %% 90000), 'Abonat ' || (i * 7919 %% 20000), 'Zona ' || (i * 31 %% 900), "
      "'Tara ' || (i * 31 %% 40), 'Operator ' || (i %% 3), datetime('2025-12-01', (i * 31536000 / %d) || ' seconds'), "
      "200 + i * 7919 %% 300, 1 + i %% 8, i * 104729 %% 900, '', (i * 104729 %% 900) / 300.0, (i * 104729 %% 900) / "
      "300.0, 'RON', 'Birou ' || (i * 7919 %% 300 / 20), i %% 3 > 0, i %% 30, 0 from n",
      calls - 1, calls));
}

class Office {
 public:
  explicit Office(const fs::path& folder)
      : machine_(folder / "machine.ini"),
        main_(jet::openDatabase(folder / schema::kMainFile, jet::OpenMode::ReadWrite)) {
    tags_.LoadTouch(*main_);
    config_.OpenConfig(*main_, tags_);
    log_.OpenLog(*main_);
    currencies_.load(*main_);
    definitions_.load(*main_, nullptr);
  }

  void filter(const filter::FilterSettings& settings) { filter_.write(settings); }

  void firstScreen(int folder, int sortKey) {
    folders::FolderView view(*folders::findFolder(folder), services_, formatter_, sortKey);
    if (view.rows(0, kScreen).empty()) throw std::runtime_error("there are no rows");
  }

  void countCalls() {
    folders::FolderView view(*folders::findFolder(100), services_, formatter_);
    if (view.rowCount() == 0) throw std::runtime_error("there are no rows");
  }

  void report(const fs::path& file) {
    folders::FolderView view(*folders::findFolder(100), services_, formatter_, 0);
    folders::writeListReport(view, file);
  }

 private:
  platform::NoOperator person_;
  platform::SystemClock clock_;
  foundation::MachineStore machine_;
  std::unique_ptr<jet::Database> main_;
  foundation::ConfigManager config_{machine_};
  foundation::ChangeTags tags_{person_};
  foundation::LanguageFile texts_;
  security::AuditLog log_{config_, clock_, [] { return std::string(); }};
  tariff::Currencies currencies_{config_, texts_, person_};
  exchange::PartyDefinitions definitions_{config_};
  security::CurrentUser user_;
  filter::CallFilter filter_{config_, definitions_, user_, clock_, texts_};
  folders::FolderServices services_{*main_,  config_, texts_, definitions_, currencies_,
                                    filter_, log_,    user_,  person_,      clock_};
  folders::ValueFormatter formatter_{config_, texts_, definitions_};
};

void print(const std::string& what, double folder, double yardstick) {
  std::cout << base::format("%-42s %9.1f %9.1f  %.2f\n", what, folder, yardstick, folder / yardstick) << std::flush;
}

// A filter as the operator sets it and as somebody would write it.
struct Narrowing {
  const char* name;
  filter::FilterSettings settings;
  const char* byHand;
};

std::vector<Narrowing> narrowings() {
  std::vector<Narrowing> all = {{"all calls", {}, "1"}};
  filter::FilterSettings on;
  on.onFilter = 1;
  filter::FilterSettings month = on;
  month.onPeriod = 1;
  month.intervalStart = "11/01/2026 00:00:00";
  month.intervalEnd = "11/30/2026 23:59:59";
  all.push_back({"this month", month, "[DateTime] between '2026-11-01 00:00:00' and '2026-11-30 23:59:59'"});
  filter::FilterSettings extension = on;
  extension.onExtension = 1;
  extension.extension = "211";
  all.push_back({"one extension", extension, "Extension = '211'"});
  filter::FilterSettings department = on;
  department.onDepartment = 1;
  department.department = "Birou 3";
  all.push_back({"one department", department, "Department = 'Birou 3'"});
  return all;
}

struct Grouping {
  int folder;
  const char* name;
  const char* byHand;
};
constexpr Grouping kGroupings[] = {{101, "extensions", "Extension"},
                                   {106, "departments", "Department"},
                                   {103, "areas", "Area"},
                                   {116, "hours", "cast(substr([DateTime], 12, 2) as integer)"}};

void compareStatistics(Office& office, Bare& bare) {
  for (const Narrowing& narrowing : narrowings()) {
    office.filter(narrowing.settings);
    for (const Grouping& grouping : kGroupings) {
      const std::string byHand = base::format(
          "select %s, sum(TotalTime), count(*), sum(Price_Ref), sum(Price_Ref * (0 + 100) / 100), sum(Ring), "
          "avg(Price_Ref), avg(Price_Ref * (0 + 100) / 100), avg(Ring) from Calls where %s group by 1",
          grouping.byHand, narrowing.byHand);
      print(base::format("%s, %s", grouping.name, narrowing.name),
            milliseconds([&] { office.firstScreen(grouping.folder, 0); }), milliseconds([&] { bare.readAll(byHand); }));
    }
  }
  office.filter({});
}

void openLists(Office& office, Bare& bare) {
  struct Order {
    const char* name;
    int sortKey;
    const char* byHand;
  };
  for (const Order& order : {Order{"unsorted", 0, ""}, Order{"newest first", -401, " order by [DateTime] desc"},
                             Order{"dearest first", -408, " order by Price_Ref desc"}}) {
    print(base::format("first screen of the call list, %s", order.name),
          milliseconds([&] { office.firstScreen(100, order.sortKey); }),
          milliseconds([&] { bare.readAll(base::format("select * from Calls%s limit %d", order.byHand, kScreen)); }));
  }
  print("number of rows of the call list", milliseconds([&] { office.countCalls(); }),
        milliseconds([&] { bare.readAll("select count(*) from Calls"); }));
}

void writeReport() {
  const DataFolder folder("report");
  makeCalls(folder.path() / schema::kMainFile, kReportRows);
  Office office(folder.path());
  Bare bare(folder.path() / schema::kMainFile);
  const fs::path page = folder.path() / "list.html";
  const double report = milliseconds([&] { office.report(page); });
  const std::string block(1 << 16, 'x');
  const auto size = static_cast<std::int64_t>(fs::file_size(page));
  const double yardstick = milliseconds([&] {
    bare.readAll("select * from Calls");
    std::ofstream copy(folder.path() / "bytes", std::ios::binary);
    for (std::int64_t left = size; left > 0; left -= static_cast<std::int64_t>(block.size())) {
      copy.write(block.data(), static_cast<std::streamsize>(block.size()));
    }
  });
  print(base::format("report of %d calls, %d MB", kReportRows, size / 1'000'000), report, yardstick);
}

}  // namespace

int main(int count, char** words) {
  const std::int64_t calls = count > 1 ? std::max(1LL, std::atoll(words[1])) : 1'000'000;
  const DataFolder folder("calls");
  makeCalls(folder.path() / schema::kMainFile, calls);
  std::cout << base::format("%d calls%35s ms  by hand ratio\n", calls, "");
  {
    Office office(folder.path());
    Bare bare(folder.path() / schema::kMainFile);
    openLists(office, bare);
    compareStatistics(office, bare);
  }
  writeReport();
  return 0;
}
