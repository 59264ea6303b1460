#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/printf.h"
#include "data_folder.h"
#include "filter/call_filter.h"
#include "folders/folder_view.h"
#include "folders/list_report.h"
#include "foundation/change_tags.h"
#include "postgres_place.h"
#include "processor_time.h"
#include "schema/schema.h"

// An office with as many calls as wanted, its folders, and the same file without anything between.

namespace bench {

namespace fs = std::filesystem;

constexpr int kScreen = 50;  // rows

// Of processor time, with the file in the system's cache; on a server of the clock.
inline bool byTheClock = false;
inline double millisecondsNow() {
  const std::chrono::duration<double, std::milli> clock = std::chrono::steady_clock::now().time_since_epoch();
  return byTheClock ? clock.count() : processorTime();
}
inline double millisecondsOf(const std::function<void()>& work) {
  const double start = millisecondsNow();
  work();
  return millisecondsNow() - start;
}

// The best of some rounds.
inline double milliseconds(const std::function<void()>& work, int rounds = 3) {
  double best = 1e12;
  for (int round = 0; round < rounds; ++round) best = std::min(best, millisecondsOf(work));
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

// The same on a server, by statements as they are written for SQLite: names are of one case in a view.
class ServerBare {
 public:
  explicit ServerBare(const ServerPlace& place) : server_(place.address()) {
    const std::string source = "\"" + place.schema(schema::kMainFile) + "\".\"Calls\"";
    const std::string own = "\"" + place.schema("byhand") + "\"";
    server_.execute("CREATE SCHEMA IF NOT EXISTS " + own);
    server_.execute("SET search_path = " + own);
    server_.execute("CREATE OR REPLACE VIEW calls AS SELECT " +
                    server_.value("SELECT string_agg(quote_ident(attname) || ' AS ' || lower(attname), ', ' ORDER BY "
                                  "attnum) FROM pg_attribute WHERE attrelid = '" +
                                  source + "'::regclass AND attnum > 0 AND NOT attisdropped") +
                    " FROM " + source);
  }
  void readAll(std::string sql) {
    const auto replace = [&sql](std::string_view old, std::string_view with) {
      for (std::size_t at = sql.find(old); at != std::string::npos; at = sql.find(old))
        sql.replace(at, old.size(), with);
    };
    replace("[DateTime]", "DateTime");
    replace("where 1 ", "where true ");
    server_.readAll(sql);
  }

 private:
  Server server_;
};

// Calls of twelve months up to the end of November 2026, in order of time.
inline void addCalls(const fs::path& file, std::int64_t calls) {
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

// The same into an empty table of a server.
inline void addCallsOnServer(const std::string& address, const std::string& schema, std::int64_t calls) {
  Server server(address);
  server.execute("SET search_path = \"" + schema + "\"");
  server.execute(base::format(
      "INSERT INTO \"Calls\" (\"DialNumber\", \"Name\", \"Area\", \"Country\", \"Provider\", \"DateTime\", "
      "\"Extension\", \"Trunk\", \"TotalTime\", \"AccountCode\", \"Price\", \"Price_Ref\", \"Currency\", "
      "\"Department\", \"Incoming\", \"Ring\", \"Hidden\") "
      "SELECT '07' || floor(random() * 90000)::int, 'Abonat ' || (i * 7919 %% 20000), 'Zona ' || (i * 31 %% 900), "
      "'Tara ' || (i * 31 %% 40), 'Operator ' || (i %% 3), "
      "timestamp '2025-12-01' + make_interval(secs => i * 31536000 / %d), 200 + i * 7919 %% 300, 1 + i %% 8, "
      "i * 104729 %% 900, '', (i * 104729 %% 900) / 300.0, (i * 104729 %% 900) / 300.0, 'RON', "
      "'Birou ' || (i * 7919 %% 300 / 20), (i %% 3 > 0)::int, i %% 30, false FROM generate_series(0::bigint, %d) AS i",
      calls, calls - 1));
  server.execute("VACUUM ANALYZE \"Calls\"");
}

inline void addCallsOnServer(const ServerPlace& place, std::int64_t calls) {
  addCallsOnServer(place.address(), place.schema(schema::kMainFile), calls);
}

inline void makeCallsOnServer(const ServerPlace& place, std::int64_t calls) {
  schema::createMainDatabase(place.prefix() + schema::kMainFile);
  addCallsOnServer(place, calls);
}

inline void makeCalls(const fs::path& file, std::int64_t calls) {
  schema::createMainDatabase(file);
  addCalls(file, calls);
}

class Office {
 public:
  explicit Office(const fs::path& folder) : Office(folder, folder / schema::kMainFile) {}
  Office(const fs::path& folder, const fs::path& main)
      : machine_(folder / "machine.ini"), main_(jet::openDatabase(main, jet::OpenMode::ReadWrite)) {
    tags_.LoadTouch(*main_);
    config_.OpenConfig(*main_, tags_);
    log_.OpenLog(*main_);
    currencies_.load(*main_);
    definitions_.load(*main_, nullptr);
  }

  void filter(const filter::FilterSettings& settings) { filter_.write(settings); }
  [[nodiscard]] const folders::FolderServices& services() const { return services_; }

  [[nodiscard]] std::unique_ptr<folders::FolderView> open(int folder, int sortKey = 0) {
    return std::make_unique<folders::FolderView>(*folders::findFolder(folder), services_, formatter_, sortKey);
  }
  void firstScreen(int folder, int sortKey) {
    if (open(folder, sortKey)->rows(0, kScreen).empty()) throw std::runtime_error("there are no rows");
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

// A filter as the operator sets it and as somebody would write it.
struct Narrowing {
  const char* name;
  filter::FilterSettings settings;
  const char* byHand;
};

inline std::vector<Narrowing> narrowings() {
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

}  // namespace bench
