// Endurance and faults of `tallyctl serve` and `tallymon run`, on a fresh sample exchange. Exit status 1 when something
// was lost, doubled or not said.

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "exchange.h"
#include "runs.h"

int main(int count, char** words) {
  CLI::App app("Endurance and faults of tallyctl serve, on a fresh sample exchange");
  app.require_subcommand(1);
  bool good = false;

  app.add_flag_callback(
      "--postgres",
      [] {
        const char* const address = std::getenv("TALLYBOOK_TEST_POSTGRES");
        if (address == nullptr)
          throw std::runtime_error("run it as: tools/private-postgres run -- soak --postgres ...");
        soak::Exchange::putOnServer(address);
      },
      "On the server of TALLYBOOK_TEST_POSTGRES instead of files");

  soak::LoadPlan plan;
  CLI::App* load = app.add_subcommand("load", "Live calls, files to import and listings at the same time");
  load->add_option("--records", plan.records, "Live calls")->capture_default_str();
  load->add_option("--senders", plan.senders, "Connections that send them")->capture_default_str();
  load->add_option("--import-every", plan.importEvery, "Seconds between two files")->capture_default_str();
  load->add_option("--file-records", plan.recordsPerFile, "Calls of a file")->capture_default_str();
  load->add_option("--services", plan.services, "Services that they share; default: two on a server, one on files");
  load->add_option("--readers", plan.readers, "Who list folders meanwhile")->capture_default_str();
  load->callback([&] { good = soak::runLoad(plan); });

  int rounds = 10;
  CLI::App* kills = app.add_subcommand("kills", "Kill the service under load, again and again");
  kills->add_option("--rounds", rounds, "Kills")->capture_default_str();
  kills->callback([&] { good = soak::runKills(rounds); });

  CLI::App* faults = app.add_subcommand("faults", "Second copy, read-only folder, full disk, locks, lost folder");
  faults->callback([&] { good = soak::runFaults(); });

  bool skipped = false;
  int faultRounds = 5;
  CLI::App* serverFaults = app.add_subcommand("server-faults", "Restart, crash, cut, kill and full disk of a server");
  serverFaults->add_option("--rounds", faultRounds, "Of each fault")->capture_default_str();
  serverFaults->callback([&] { good = soak::runServerFaults(faultRounds, skipped); });

  std::int64_t calls = 1'000'000;
  CLI::App* size = app.add_subcommand("size", "Import, live latency, repricing and retention of many calls");
  size->add_option("--calls", calls, "Calls stored")->capture_default_str();
  size->callback([&] { good = soak::runSize(calls); });

  CLI::App* capture = app.add_subcommand("capture-kills", "Kill the capture program under load, again and again");
  capture->add_option("--rounds", rounds, "Kills")->capture_default_str();
  capture->callback([&] { good = soak::runCaptureKills(rounds); });

  int lines = 500;
  CLI::App* latency = app.add_subcommand("capture-latency", "From a line on the wire to a stored call");
  latency->add_option("--calls", lines, "Lines")->capture_default_str();
  latency->callback([&] { good = soak::runCaptureLatency(lines); });

  int dayLines = 50 * 24 * 3600;
  int rate = 2000;
  CLI::App* day = app.add_subcommand("capture-day", "Lines of four exchanges, and the memory that they take");
  day->add_option("--lines", dayLines, "Lines; default: fifty a second for a day")->capture_default_str();
  day->add_option("--rate", rate, "Lines a second")->capture_default_str();
  day->callback([&] { good = soak::runCaptureDay(dayLines, rate); });

  try {
    app.parse(count, words);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  } catch (const std::exception& error) {
    std::cerr << "soak: " << error.what() << '\n';
  }
  // CTest's sign for a test that cannot be run here.
  constexpr int kSkipped = 77;
  if (skipped) return kSkipped;
  std::cout << (good ? "good" : "BAD") << std::endl;
  return good ? 0 : 1;
}
