#pragma once

#include <libpq-fe.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bare_insert.h"
#include "base/printf.h"

// Benchmarks on a PostgreSQL server, "--postgres ADDRESS" ("postgresql://user@host/database/"), and the same server
// without anything between. Times are then those of the clock, since another process does a part of the work.

namespace bench {

// Takes the option out of the words of the command line. Throws std::runtime_error for one without an address: figures
// of files would pass for those of a server.
inline std::optional<std::string> takeAddress(int& count, char** words) {
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(words[i], "--postgres") != 0) continue;
    if (i + 1 == count) throw std::runtime_error("--postgres needs the address of a server");
    std::string address = words[i + 1];
    if (!address.ends_with('/')) address += '/';
    for (int word = i; word + 2 < count; ++word) words[word] = words[word + 2];
    count -= 2;
    return address;
  }
  return std::nullopt;
}

class Server {
 public:
  explicit Server(const std::string& address)
      : connection_(PQconnectdb(address.substr(0, address.size() - 1).c_str())) {
    if (PQstatus(handle()) != CONNECTION_OK) throw std::runtime_error(PQerrorMessage(handle()));
    execute("SET client_min_messages = error");
  }

  [[nodiscard]] PGconn* handle() const { return connection_.get(); }
  void execute(const std::string& sql) { check(PQexec(handle(), sql.c_str())); }
  std::string value(const std::string& sql) {
    const Result result(PQexec(handle(), sql.c_str()));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) throw std::runtime_error(PQerrorMessage(handle()));
    return PQntuples(result.get()) > 0 ? PQgetvalue(result.get(), 0, 0) : "";
  }
  // Reads every value of every row.
  void readAll(const std::string& sql) {
    const Result result(PQexecParams(handle(), sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, 1));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) throw std::runtime_error(PQerrorMessage(handle()));
    for (int row = 0; row < PQntuples(result.get()); ++row) {
      for (int i = 0; i < PQnfields(result.get()); ++i) bytes_ += PQgetlength(result.get(), row, i);
    }
  }

  struct Clear {
    void operator()(PGresult* result) const { PQclear(result); }
  };
  using Result = std::unique_ptr<PGresult, Clear>;

 private:
  struct Finish {
    void operator()(PGconn* connection) const { PQfinish(connection); }
  };

  void check(PGresult* given) {
    const Result result(given);
    if (PQresultStatus(given) == PGRES_FATAL_ERROR) throw std::runtime_error(PQerrorMessage(handle()));
  }

  std::unique_ptr<PGconn, Finish> connection_;
  std::int64_t bytes_ = 0;
};

// Schemas with names of their own, taken away at the end; with a name, they are kept and used again.
class ServerPlace {
 public:
  explicit ServerPlace(std::string address, const std::string& kept = {})
      : address_(std::move(address)),
        kept_(!kept.empty()),
        name_(kept_ ? kept + "_" : base::format("bench%d_", ::getpid())) {}
  ServerPlace(const ServerPlace&) = delete;
  ServerPlace& operator=(const ServerPlace&) = delete;
  ~ServerPlace() {
    if (kept_) return;
    try {
      Server server(address_);
      const std::string ours =
          "SELECT nspname FROM pg_namespace WHERE starts_with(nspname, '" + name_ + "') ORDER BY 1 LIMIT 1";
      for (std::string schema = server.value(ours); !schema.empty(); schema = server.value(ours)) {
        server.execute("DROP SCHEMA \"" + schema + "\" CASCADE");
      }
    } catch (const std::exception&) {
      // Schemas left behind are seen and harmless.
    }
  }

  // Before the names of databases.
  [[nodiscard]] std::string prefix() const { return address_ + name_; }
  [[nodiscard]] const std::string& address() const { return address_; }
  [[nodiscard]] std::string schema(const std::string& file) const { return name_ + file.substr(0, file.find('.')); }

 private:
  std::string address_;
  bool kept_;
  std::string name_;
};

namespace detail {

// One batch of rows, begin and commit included, nothing waited for but the end.
inline void sendBatch(PGconn* to, const PGresult* rows, int first, int last) {
  const int width = PQnfields(rows);
  std::vector<const char*> values(static_cast<std::size_t>(width));
  std::vector<int> lengths(values.size());
  const std::vector<int> formats(values.size(), 1);
  PQenterPipelineMode(to);
  PQsendQueryParams(to, "BEGIN", 0, nullptr, nullptr, nullptr, nullptr, 1);
  for (int row = first; row < last; ++row) {
    for (int i = 0; i < width; ++i) {
      const auto place = static_cast<std::size_t>(i);
      values[place] = PQgetisnull(rows, row, i) != 0 ? nullptr : PQgetvalue(rows, row, i);
      lengths[place] = PQgetlength(rows, row, i);
    }
    PQsendQueryPrepared(to, "bare", width, values.data(), lengths.data(), formats.data(), 1);
    PQflush(to);
    PQconsumeInput(to);
  }
  PQsendQueryParams(to, "COMMIT", 0, nullptr, nullptr, nullptr, nullptr, 1);
  PQpipelineSync(to);
  for (bool end = false; !end;) {
    while (PQflush(to) == 1 || PQisBusy(to) != 0) {
      pollfd socket{.fd = PQsocket(to), .events = POLLIN | POLLOUT, .revents = 0};
      if (PQflush(to) == 0) socket.events = POLLIN;
      poll(&socket, 1, -1);
      PQconsumeInput(to);
    }
    const Server::Result result(PQgetResult(to));
    if (PQresultStatus(result.get()) == PGRES_FATAL_ERROR && result) throw std::runtime_error(PQerrorMessage(to));
    end = result && PQresultStatus(result.get()) == PGRES_PIPELINE_SYNC;
  }
  PQgetResult(to);
  PQexitPipelineMode(to);
}

}  // namespace detail

// The yardstick on a server: the rows again by nothing but a pipelined prepared INSERT, into an empty table with the
// same columns and the indexes that a file has, in the same batches: those for order alone are on our account. Only the
// writing is timed.
inline BareInsert insertBareOnServer(const ServerPlace& place, const std::string& file, const std::string& table,
                                     int rowsPerBatch) {
  Server server(place.address());
  const std::string source = "\"" + place.schema(file) + "\".\"" + table + "\"";
  const std::string target = "\"" + place.schema("bare") + "\".\"" + table + "\"";
  server.execute("CREATE SCHEMA \"" + place.schema("bare") + "\"");
  server.execute("CREATE TABLE " + target + " (LIKE " + source + " INCLUDING ALL EXCLUDING INDEXES)");
  server.execute(server.value("SELECT string_agg(replace(indexdef, ' ON " + place.schema(file) + ".', ' ON " +
                              place.schema("bare") + ".'), ';') FROM pg_indexes WHERE schemaname = '" +
                              place.schema(file) + "' AND tablename = '" + table + "' AND NOT indexname ~ '_order$'"));
  const std::string columns = server.value(
      "SELECT string_agg(quote_ident(attname), ', ' ORDER BY attnum) FROM pg_attribute WHERE attrelid = '" + source +
      "'::regclass AND attnum > 0 AND attgenerated = '' AND NOT attisdropped");
  const std::string places = server.value(
      "SELECT string_agg('$' || n, ', ' ORDER BY n) FROM (SELECT row_number() OVER (ORDER BY attnum) AS n FROM "
      "pg_attribute WHERE attrelid = '" +
      source +
      "'::regclass AND attnum > 0 AND attgenerated = '' AND NOT "
      "attisdropped) AS p");
  const Server::Result prepared(
      PQprepare(server.handle(), "bare",
                ("INSERT INTO " + target + " (" + columns + ") VALUES (" + places + ")").c_str(), 0, nullptr));
  if (PQresultStatus(prepared.get()) != PGRES_COMMAND_OK) throw std::runtime_error(PQerrorMessage(server.handle()));
  server.execute("BEGIN");
  server.execute("DECLARE rows CURSOR WITH HOLD FOR SELECT " + columns + " FROM " + source);
  server.execute("COMMIT");
  BareInsert result;
  while (true) {
    constexpr int kFetched = 50'000;
    const Server::Result rows(PQexecParams(server.handle(), base::format("FETCH %d FROM rows", kFetched).c_str(), 0,
                                           nullptr, nullptr, nullptr, nullptr, 1));
    const int count = PQntuples(rows.get());
    if (count == 0) break;
    PQsetnonblocking(server.handle(), 1);
    const auto start = std::chrono::steady_clock::now();
    for (int first = 0; first < count; first += rowsPerBatch) {
      detail::sendBatch(server.handle(), rows.get(), first, std::min(count, first + rowsPerBatch));
    }
    result.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    PQsetnonblocking(server.handle(), 0);
    result.rows += count;
  }
  return result;
}

}  // namespace bench
