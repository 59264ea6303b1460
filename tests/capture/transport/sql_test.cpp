#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/temporary_folder.h"
#include "transport_run.h"

namespace {

using namespace support;

namespace fs = std::filesystem;
using namespace capture;

int shell(const std::string& command) {
  const int status = std::system((command + " >/dev/null 2>&1").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A real database server of the test's own, in a folder, reached by a local socket alone.
class PrivateServer {
 public:
  virtual ~PrivateServer() = default;
  [[nodiscard]] virtual SqlSettings settings() const = 0;
  [[nodiscard]] virtual bool execute(const std::string& sql) const = 0;

 protected:
  // PostgreSQL refuses to run as root, and the folder must belong to its user.
  static std::string asUser(const char* user, const fs::path& folder, const std::string& command) {
    if (geteuid() != 0) return command;
    shell(std::string("chown -R ") + user + " " + folder.string());
    return std::string("setpriv --reuid=") + user + " --regid=" + user + " --clear-groups " + command;
  }
  static bool waitFor(const std::function<bool()>& ready) {
    for (int i = 0; i < 300; ++i) {
      if (ready()) return true;
      usleep(100'000);
    }
    return false;
  }
  TemporaryFolder folder_;
};

class MariaDb : public PrivateServer {
 public:
  static bool isInstalled() { return fs::exists("/usr/sbin/mariadbd") && fs::exists("/usr/bin/mariadb-install-db"); }
  MariaDb() {
    fs::permissions(folder_ / ".", fs::perms::others_exec | fs::perms::others_read, fs::perm_options::add);
    const std::string data = (folder_ / "data").string();
    fs::create_directory(data);
    const std::string user = geteuid() == 0 ? " --user=mysql" : "";
    if (geteuid() == 0) shell("chown -R mysql " + (folder_ / ".").string());
    shell("mariadb-install-db --no-defaults --auth-root-authentication-method=normal --datadir=" + data + user);
    shell("mariadbd --no-defaults --skip-networking --datadir=" + data + " --socket=" + socket() +
          " --pid-file=" + (folder_ / "pid").string() + user + " >/dev/null 2>&1 &");
    waitFor([this] { return execute("CREATE DATABASE IF NOT EXISTS cdrs"); });
  }
  ~MariaDb() override {
    std::ifstream in(folder_ / "pid");
    pid_t process = 0;
    if (in >> process) {
      ::kill(process, SIGKILL);  // the folder goes with it
      waitFor([&] { return ::kill(process, 0) != 0; });
    }
  }
  [[nodiscard]] bool execute(const std::string& sql) const override {
    return shell("mariadb --no-defaults -u root --socket=" + socket() + " -e \"" + sql + "\"") == 0;
  }
  [[nodiscard]] SqlSettings settings() const override {
    SqlSettings settings;
    settings.kind = "mysql";
    settings.socket = socket();
    settings.user = "root";
    settings.database = "cdrs";
    return settings;
  }

 private:
  [[nodiscard]] std::string socket() const { return (folder_ / "socket").string(); }
};

class Postgres : public PrivateServer {
 public:
  static std::string programs() {
    for (const char* version : {"17", "16", "15"}) {
      const std::string folder = std::string("/usr/lib/postgresql/") + version + "/bin/";
      if (fs::exists(folder + "initdb")) return folder;
    }
    return {};
  }
  Postgres() {
    fs::permissions(folder_ / ".", fs::perms::others_exec | fs::perms::others_read, fs::perm_options::add);
    const std::string data = (folder_ / "data").string();
    run(programs() + "initdb --no-sync --auth=trust --username=tester -D " + data);
    run(programs() + "pg_ctl -D " + data + " -w -o \"-c listen_addresses='' -k " + folder_.operator/("").string() +
        "\" -l " + (folder_ / "log").string() + " start");
    static_cast<void>(execute("CREATE DATABASE cdrs", "postgres"));
  }
  ~Postgres() override { run(programs() + "pg_ctl -D " + (folder_ / "data").string() + " -m immediate stop"); }
  [[nodiscard]] bool execute(const std::string& sql) const override { return execute(sql, "cdrs"); }
  [[nodiscard]] SqlSettings settings() const override {
    SqlSettings settings;
    settings.kind = "postgresql";
    settings.socket = (folder_ / "").string();
    settings.user = "tester";
    settings.database = "cdrs";
    return settings;
  }

 private:
  void run(const std::string& command) const { shell(asUser("postgres", folder_ / ".", command)); }
  [[nodiscard]] bool execute(const std::string& sql, const std::string& database) const {
    return shell("psql -h " + (folder_ / "").string() + " -U tester -d " + database + " -c \"" + sql + "\"") == 0;
  }
};

// A row appears when its call ends, found by when it began: a long call comes after later ones.
void takesEveryRowOnce(const PrivateServer& server, SqlSettings settings) {
  settings.overlap = 14400;
  settings.every = 1;
  const auto sink = std::make_shared<CollectingSink>();
  const auto insert = [&](const char* start, int duration, const char* id) {
    return server.execute(std::string("INSERT INTO cdr (calldate, src, dst, duration, billsec, disposition, uniqueid, "
                                      "sequence) VALUES ('") +
                          start + "', '214', '0755550142', " + std::to_string(duration) + ", " +
                          std::to_string(duration - 5) + ", 'ANSWERED', '" + id + "', 1)");
  };
  ASSERT_TRUE(insert("2026-11-24 09:14:24", 158, "a.1"));
  ASSERT_TRUE(insert("2026-11-24 09:20:31", 57, "b.1"));
  {
    TransportRun run(settings, sink);
    EXPECT_TRUE(run.untilLines(2)) << sink->state;
    ASSERT_TRUE(insert("2026-11-24 08:01:00", 7000, "long"));
    EXPECT_TRUE(run.untilLines(3)) << sink->state;
  }
  ASSERT_TRUE(insert("2026-11-24 10:00:00", 60, "c.1"));
  TransportRun again(settings, sink);
  EXPECT_TRUE(again.untilLines(4)) << sink->state;
  again.rest(std::chrono::milliseconds(1500));
  ASSERT_EQ(4U, sink->texts.size()) << sink->all();
  EXPECT_EQ(R"("2026-11-24 09:14:24","214","0755550142","158","153")", sink->texts[0]);
  EXPECT_NE(std::string::npos, sink->texts[2].find("08:01:00"));
}

constexpr const char* kTable =
    "CREATE TABLE cdr (calldate TIMESTAMP NOT NULL, src VARCHAR(80), dst VARCHAR(80), duration INTEGER, billsec "
    "INTEGER, disposition VARCHAR(45), uniqueid VARCHAR(32), sequence INTEGER)";

SqlSettings withColumns(SqlSettings settings) {
  settings.table = "cdr";
  settings.time = "calldate";
  settings.id = {"uniqueid", "sequence"};
  settings.columns = {"calldate", "src", "dst", "duration", "billsec"};
  return settings;
}

TEST(SqlPoll, MariaDb) {
  if (!MariaDb::isInstalled()) GTEST_SKIP() << "needs the package mariadb-server";
  const MariaDb server;
  ASSERT_TRUE(server.execute(std::string("USE cdrs; ") + kTable)) << "the server did not start";
  struct InDatabase : PrivateServer {
    explicit InDatabase(const MariaDb& of) : of_(of) {}
    [[nodiscard]] SqlSettings settings() const override { return of_.settings(); }
    [[nodiscard]] bool execute(const std::string& sql) const override { return of_.execute("USE cdrs; " + sql); }
    const MariaDb& of_;
  };
  takesEveryRowOnce(InDatabase(server), withColumns(server.settings()));
}

TEST(SqlPoll, PostgreSql) {
  if (Postgres::programs().empty()) GTEST_SKIP() << "needs the package postgresql";
  const Postgres server;
  ASSERT_TRUE(server.execute(kTable)) << "the server did not start";
  takesEveryRowOnce(server, withColumns(server.settings()));
}

}  // namespace
