#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "exchange/call_record.h"
#include "support/program_run.h"

namespace support {

// The program as its users run it, with a folder for Tallybook, whose part the test plays.
class RunningMonitor {
 public:
  RunningMonitor() { std::filesystem::create_directory(monitor); }
  ~RunningMonitor() {
    if (process_ > 0) kill();
  }

  // The tables of the sources; the others point into the test's folder.
  void writeSite(const std::string& sources, const std::string& further = {}) const {
    writeFile(site, "[deliver]\nfolder = \"" + monitor.string() + "\"\n[data]\nfolder = \"" + data.string() + "\"\n" +
                        further + sources);
  }
  [[nodiscard]] std::string fileSource() const {
    return "[[source]]\nid = \"main\"\nformat = \"hicom\"\nfile = { path = \"" + calls.string() + "\" }\n";
  }

  void start(const std::vector<std::string>& environment = {}) {
    const std::string program = TALLYBOOK_BINARY_DIR "/tallymon";
    process_ = fork();
    if (process_ != 0) return;
    const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    dup2(out, STDOUT_FILENO);
    dup2(out, STDERR_FILENO);
    for (const std::string& entry : environment) putenv(const_cast<char*>(entry.c_str()));
    execl(program.c_str(), "tallymon", "run", "--config", site.c_str(), nullptr);
    _exit(127);
  }
  void signal(int number) const { ::kill(process_, number); }
  void kill() {
    signal(SIGKILL);
    waitForEnd();
  }
  int stop() {
    signal(SIGTERM);
    return waitForEnd();
  }
  int waitForEnd() {
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  // The process may be waited for; it is taken note of by waitForEnd().
  [[nodiscard]] bool hasEnded() const {
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT);
    return info.si_pid != 0;
  }

  // Until the condition holds; false after twenty seconds.
  static bool until(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
  }

  // What Tallybook does: takes the file away by a rename of its own, reads its records and deletes it.
  void take() {
    const auto backup = monitor / "monitor.data.bk";
    if (::rename((monitor / "monitor.data").c_str(), backup.c_str()) != 0) return;
    const std::string bytes = readFile(backup);
    for (std::size_t at = 0; at + exchange::kExtendedRecordSize <= bytes.size(); at += exchange::kExtendedRecordSize) {
      exchange::RecordBuffer buffer{};
      std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), exchange::kExtendedRecordSize, buffer.begin());
      taken.push_back(exchange::decodeRecord(buffer, 1252));
    }
    std::filesystem::remove(backup);
  }
  bool untilTaken(std::size_t count) {
    return until([&] {
      take();
      return taken.size() >= count;
    });
  }
  // The pulses of the calls taken, which tell them apart.
  [[nodiscard]] std::string numbers() const {
    std::string all;
    for (const exchange::CallRecord& record : taken) all += std::to_string(record.pulses) + " ";
    return all;
  }

  [[nodiscard]] nlohmann::json status() const {
    return nlohmann::json::parse(readFile(monitor / ".tallymon/status.json"), nullptr, false);
  }
  // Runs a further command of the program, whose words say --config where it takes the site file.
  [[nodiscard]] ProgramResult run(const std::string& words) const {
    const TemporaryFolder streams;  // commands may run side by side
    return runLine(TALLYBOOK_BINARY_DIR "/tallymon " + words, folder / "", streams / "");
  }
  // One that takes the site file; what it says on both streams.
  [[nodiscard]] std::string command(const std::string& words) const {
    const ProgramResult result = run(words + " --config " + site.string());
    return result.out + result.err;
  }

  // A line as the exchange writes it, its call told apart by the pulses.
  static std::string line(int number, const std::string& dialled = "0755550142") {
    char text[128];
    std::snprintf(text, sizeof text, "24.11.2609:17:02  7   214     00:02:31%-25s%11d 2\r\n", dialled.c_str(), number);
    return text;
  }
  void append(const std::string& text) const { std::ofstream(calls, std::ios::app | std::ios::binary) << text; }

  TemporaryFolder folder;
  std::filesystem::path monitor = folder / "monitor";
  std::filesystem::path data = folder / "data";
  std::filesystem::path site = folder / "site.toml";
  std::filesystem::path calls = folder / "calls.log";
  std::filesystem::path log = folder / "log";
  std::vector<exchange::CallRecord> taken;

 private:
  pid_t process_ = -1;
};

}  // namespace support
