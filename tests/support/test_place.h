#pragma once

#include <libpq-fe.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "temporary_folder.h"

// At the begin of a test that makes no sense when the databases of `place` are on a server.
#define SKIP_ON_SERVER(place) \
  if ((place).onServer()) GTEST_SKIP() << "about files"

namespace support {

// Another program on the test's server: plain statements, several in one text.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& address) : connection_(PQconnectdb(address.c_str())) {
    if (PQstatus(connection_) != CONNECTION_OK) throw std::runtime_error(PQerrorMessage(connection_));
    run("SET client_min_messages = error");
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;
  ~OtherProgram() { PQfinish(connection_); }

  // The first value of the last statement.
  std::string run(const std::string& sql) {
    PGresult* const result = PQexec(connection_, sql.c_str());
    const bool failed = PQresultStatus(result) == PGRES_FATAL_ERROR;
    const std::string value = PQntuples(result) > 0 ? PQgetvalue(result, 0, 0) : "";
    PQclear(result);
    if (failed) throw std::runtime_error(PQerrorMessage(connection_));
    return value;
  }

 private:
  PGconn* connection_;
};

// The folder of a server's socket, from an address such as "postgresql://user@%2Ffolder/database/".
inline std::string socketFolder(const std::string& address) {
  std::string folder = address.substr(address.find('@') + 1);
  folder.resize(folder.find('/'));
  for (std::size_t at = folder.find("%2F"); at != std::string::npos; at = folder.find("%2F"))
    folder.replace(at, 3, "/");
  return folder;
}

// The same address by the socket in another folder.
inline std::string throughSocket(const std::string& address, const std::string& folder) {
  std::string host;
  for (const char c : folder) host += c == '/' ? "%2F" : std::string(1, c);
  const std::size_t begin = address.find('@') + 1;
  return address.substr(0, begin) + host + address.substr(address.find('/', begin));
}

// Where a test's databases are, gone with the object: files in a folder of its own or, when TALLYBOOK_TEST_POSTGRES is
// the address of a server ("postgresql://user@host/database/"), schemas there that begin with a name of its own.
class TestPlace {
 public:
  enum class Where { AsTheEnvironmentSays, InAFolder };
  explicit TestPlace(Where where = Where::AsTheEnvironmentSays) {
    static std::atomic<int> last{0};
    const char* const server = std::getenv("TALLYBOOK_TEST_POSTGRES");
    if (where == Where::InAFolder || server == nullptr || *server == '\0') return;
    server_ = server;
    name_ = "t" + std::to_string(getpid()) + "x" + std::to_string(++last) + "_";
  }
  TestPlace(const TestPlace&) = delete;
  TestPlace& operator=(const TestPlace&) = delete;
  ~TestPlace() {
    if (!onServer()) return;
    try {
      OtherProgram program(address());
      const std::string ours = "SELECT nspname FROM pg_namespace WHERE starts_with(nspname, '" + name_ + "') LIMIT 1";
      for (std::string schema = program.run(ours); !schema.empty(); schema = program.run(ours)) {
        program.run("DROP SCHEMA \"" + schema + "\" CASCADE");
      }
    } catch (const std::exception&) {
      // A server that a test has ended takes its schemas with it.
    }
  }

  [[nodiscard]] bool onServer() const { return !server_.empty(); }
  // Of libpq, without the last slash.
  [[nodiscard]] std::string address() const { return server_.substr(0, server_.size() - 1); }
  // Before the names of databases.
  [[nodiscard]] std::string prefix() const { return onServer() ? server_ + name_ : (folder_ / "").string(); }
  [[nodiscard]] std::filesystem::path database(const std::string& name) const { return prefix() + name; }
  [[nodiscard]] std::string schema(const std::string& name) const { return name_ + name.substr(0, name.find('.')); }
  // There is one in either case.
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  std::string server_;
  std::string name_;
};

}  // namespace support
