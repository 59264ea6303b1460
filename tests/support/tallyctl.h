#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/program_run.h"
#include "support/test_place.h"

namespace support {

// The program as its users meet it: run without a terminal in a folder of its own, with that folder's machine store.
// Databases that "init data" makes are where TestPlace says; on a server too, the monitor's folder is "data/monitor".
class TallyctlRun {
 public:
  using Result = ProgramResult;

  // `with`: variables of its environment ("TALLYBOOK_PASSWORD=secret"), or a program that runs it ("timeout 20").
  Result run(const std::string& arguments, const std::string& with = {}) {
    noteChange(arguments);
    return runLine(commandLine(arguments, with), path(""), path(""));
  }
  Result runOnFullDisk(const std::string& arguments, int bytes) {
    noteChange(arguments);
    return runLine(onFullDisk(bytes, commandLine(arguments)), path(""), path(""));
  }

  // Runs beside the test until it ends by itself or is ended; both streams go to the file `output`, the exit status
  // to the file "status".
  std::thread start(const std::string& arguments, const std::string& output, const std::string& with = {}) {
    noteChange(arguments);
    return std::thread([folder = path("").string(), line = commandLine(arguments, with), output] {
      std::system(("cd '" + folder + "' && { " + line + " >>" + output + " 2>&1; echo $? >status; }").c_str());
    });
  }

  std::string succeed(const std::string& arguments, const std::string& with = {}) {
    const Result result = run(arguments, with);
    EXPECT_EQ(result.status, 0) << arguments << '\n' << result.out << result.err;
    return result.out;
  }

  // The sample exchange with so many imported calls.
  void makeSample(int calls) {
    succeed("init data --sample");
    succeed("sample-calls " + std::to_string(calls) + " --out data/monitor/monitor.data --seed 5");
    EXPECT_EQ(succeed("import"), "imported " + std::to_string(calls) + "\n");
  }

  [[nodiscard]] std::filesystem::path path(const std::string& name) const { return place_.folder() / name; }
  [[nodiscard]] const TestPlace& place() const { return place_; }
  [[nodiscard]] bool onServer() const { return place_.onServer(); }
  // A database of "init data" ("tallybook.mdb"), and all of them as setting PathDatabase has them.
  [[nodiscard]] std::filesystem::path database(const std::string& name) const {
    return onServer() ? place_.database(name) : path("data/" + name);
  }
  [[nodiscard]] std::string setting() const { return onServer() ? place_.prefix() : path("data/").string(); }

  // The stored rows as SQLite itself reads them, each value as text. Those of a server are moved to a folder for it.
  std::vector<std::vector<std::string>> stored(const std::string& sql) {
    sqlite3* file = nullptr;
    EXPECT_EQ(sqlite3_open_v2(storedFile().c_str(), &file, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(file, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sqlite3_errmsg(file);
    std::vector<std::vector<std::string>> rows;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      std::vector<std::string>& row = rows.emplace_back();
      for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
        row.emplace_back(text == nullptr ? "" : text);
      }
    }
    sqlite3_finalize(statement);
    sqlite3_close(file);
    return rows;
  }

 private:
  [[nodiscard]] std::string commandLine(const std::string& arguments, const std::string& with = {}) const {
    return "env -u TALLYBOOK_PASSWORD TALLYBOOK_MACHINE_STORE='" + path("machine.ini").string() + "' " + with +
           " '" TALLYBOOK_BINARY_DIR "/tallyctl' " + whereItIs(arguments) + " </dev/null";
  }
  // Neither lists nor the filter change what stored() is asked for.
  void noteChange(const std::string& arguments) {
    movedIsOld_ = movedIsOld_ || !(arguments.starts_with("folder ") || arguments.starts_with("filter "));
  }

  [[nodiscard]] std::string whereItIs(const std::string& arguments) const {
    constexpr std::string_view kMade = "init data";
    const std::size_t at = arguments.find(kMade);
    if (!onServer() || at == std::string::npos) return arguments;
    std::string there = arguments;
    return there.replace(at, kMade.size(), "init '" + setting() + "' --monitor data/monitor");
  }

  std::filesystem::path storedFile() {
    if (!onServer()) return path("data/tallybook.mdb");
    if (movedIsOld_) {
      succeed("move-database '" + setting() + "' moved" + std::to_string(++moved_));
      movedIsOld_ = false;
    }
    return path("moved" + std::to_string(moved_) + "/tallybook.mdb");
  }

  TestPlace place_;
  int moved_ = 0;
  bool movedIsOld_ = true;
};

}  // namespace support
