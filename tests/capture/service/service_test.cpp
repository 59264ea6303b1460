#include <gtest/gtest.h>

#include <sstream>

#include "capture/journal/journal_files.h"
#include "capture/transport/sockets.h"
#include "running_monitor.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

std::string numbersUpTo(int last) {
  std::string all;
  for (int number = 1; number <= last; ++number) all += std::to_string(number) + " ";
  return all;
}

TEST(Service, HandsEveryCallOverOnceAndSaysWhatItDid) {
  RunningMonitor run;
  run.writeSite(run.fileSource());
  run.append(run.line(1) + run.line(2) + "what is this?\r\n");
  run.start();
  ASSERT_TRUE(run.untilTaken(2)) << readFile(run.log);
  EXPECT_EQ("0755550142", run.taken[0].dialledNumber);
  EXPECT_EQ(214, run.taken[0].extension);
  EXPECT_EQ(7, run.taken[0].trunk);
  run.append(run.line(3));
  ASSERT_TRUE(run.untilTaken(3));
  EXPECT_TRUE(run.until([&] { return run.status().value("summary", "") == "last call 09:14, 1 unknown line"; }));
  const nlohmann::json source = run.status()["sources"][0];
  EXPECT_EQ(4, source["lines"]);
  EXPECT_EQ(3, source["records"]);
  EXPECT_EQ(1, source["unknown"]);
  EXPECT_TRUE(source["connected"]);
  EXPECT_NE(std::string::npos, run.command("status").find("what is this?"));
  EXPECT_EQ(0, run.stop());
  run.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  run.append(run.line(4));
  EXPECT_TRUE(run.untilTaken(4));
  EXPECT_EQ(numbersUpTo(4), run.numbers());
}

// Ends the program before each of its steps that change the disk, in turn, then lets it run: every line once.
TEST(Service, AKillBeforeEveryStepLosesAndDoublesNothing) {
  const std::string shim = TALLYBOOK_KILL_AFTER;
  if (shim.empty()) GTEST_SKIP() << "not under the sanitizers";
  constexpr int kStride = 11;  // the long form of this is in bench/soak
  int at = 1;
  for (bool killed = true; killed; at += kStride) {
    RunningMonitor run;
    run.writeSite(run.fileSource());
    run.append(run.line(1) + run.line(2));
    run.start({"LD_PRELOAD=" + shim, "KILL_AT=" + std::to_string(at)});
    bool late = false;
    run.until([&] {
      if (!late && fs::exists(run.monitor / "monitor.data")) {
        run.append(run.line(3));
        late = true;
      }
      // The first file stays for a while, so that a further one has to join what waits.
      if (late && fs::exists(run.data / "state.db") && run.status().is_object()) run.take();
      return run.hasEnded() || run.taken.size() == 3;
    });
    killed = run.hasEnded();
    if (killed) {
      ASSERT_EQ(128 + SIGKILL, run.waitForEnd()) << readFile(run.log);
    } else {
      run.kill();
    }
    if (!late) run.append(run.line(3));
    run.start();
    ASSERT_TRUE(run.untilTaken(3)) << "killed before step " << at << ": " << run.numbers();
    run.append(run.line(4));
    ASSERT_TRUE(run.untilTaken(4));
    ASSERT_EQ(numbersUpTo(4), run.numbers()) << "killed before step " << at;
    run.kill();
  }
  EXPECT_GT(at, 20) << "the program takes more steps than that";
}

// While the service holds the line, "listen" shows what it takes.
TEST(Service, ListeningShowsTheLinesOfTheServiceThatRuns) {
  RunningMonitor run;
  run.writeSite(run.fileSource());
  run.append(run.line(1) + run.line(2) + "what is this?\r\n");
  run.start();
  ASSERT_TRUE(run.untilTaken(2)) << readFile(run.log);
  const fs::path output = run.folder / "shown";
  std::thread listener([&] {
    static_cast<void>(run.run("listen main --json --last 2 --config " + run.site.string() + " >" + output.string()));
  });
  EXPECT_TRUE(run.until([&] { return fs::exists(output) && readFile(output).find("unknown") != std::string::npos; }));
  run.append(run.line(3));
  EXPECT_TRUE(run.until([&] { return readFile(output).find("\"line\":4,\"outcome\"") != std::string::npos; }))
      << readFile(output);
  EXPECT_EQ("", run.command("stop"));
  EXPECT_EQ(0, run.waitForEnd());
  listener.join();  // it ends when the service does
  const std::string shown = readFile(output);
  std::vector<std::string> events;
  std::istringstream lines(shown);
  for (std::string line; std::getline(lines, line);) {
    const auto event = nlohmann::json::parse(line, nullptr, false);
    if (!event.is_object()) continue;
    const std::string kind = event.value("event", "");
    if (kind == "line") events.push_back(std::to_string(event.value("line", 0)));
    if (kind == "result") events.push_back(event.value("outcome", ""));
  }
  EXPECT_EQ((std::vector<std::string>{"2", "record", "3", "unknown", "4", "record"}), events) << shown;
}

TEST(Service, TheManPageAndTheHelpNameEveryCommand) {
  RunningMonitor run;
  const std::string page = run.run("man-page").out;
  for (const char* command : {"run", "stop", "reload", "status", "site", "site set", "site remove", "listen", "guess",
                              "test", "formats", "check", "replay", "trunks", "forget", "completion"}) {
    EXPECT_NE(std::string::npos, page.find(std::string(".SS ") + command + "\n")) << command;
  }
}

TEST(Service, AFaultInAChangedFileIsToldAndTheRunningSettingsStay) {
  RunningMonitor run;
  run.writeSite(run.fileSource());
  run.start();
  ASSERT_TRUE(run.until([&] { return run.status().is_object(); })) << readFile(run.log);
  run.writeSite(run.fileSource() + "zone = 7\nserial = { device = \"/dev/ttyS9\" }\n");
  run.signal(SIGHUP);
  EXPECT_TRUE(run.until([&] { return readFile(run.log).find("site.toml:8:8") != std::string::npos; }))
      << readFile(run.log);
  run.append(run.line(1));
  EXPECT_TRUE(run.untilTaken(1));
  // The mended file adds a source, without a break in the other.
  const std::uint16_t port = freePort();
  run.writeSite(run.fileSource() + "[[source]]\nid = \"wire\"\nformat = \"hicom\"\nlisten = { port = " +
                std::to_string(port) + ", address = \"127.0.0.1\" }\n");
  run.signal(SIGHUP);
  EXPECT_TRUE(run.until([&] { return Socket::connect(port).isOpen(); }));
  Socket::connect(port).send(run.line(2));
  EXPECT_TRUE(run.untilTaken(2));
  run.append(run.line(3));
  EXPECT_TRUE(run.untilTaken(3));
  EXPECT_EQ(numbersUpTo(3), run.numbers());
}

TEST(Service, ChecksTheSiteFile) {
  const std::pair<const char*, const char*> cases[] = {
      {"[[source]]\nid = \"a b\"\nformat = \"hicom\"\nudp = { port = 5 }\n", ":6:6: source: \"id\" must be letters"},
      {"[[source]]\nid = \"a\"\nformat = \"hicon\"\nudp = { port = 5 }\n", ":7:10: source: \"format\" cannot be used"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\n", "does not say how its lines arrive"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\nudp = { port = 70000 }\n",
       "\"port\" must be a whole number from 1"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\nudp = { port = 5, alow = [] }\n", "\"alow\" is no key"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\nserial = { device = \"x\", line = \"9600 9N1\" }\n",
       "5 to 8 data bits"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\nhttp = { port = 5, address = \"0.0.0.0\" }\n", "certificate"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\nudp = { port = 5 }\nzone = \"Europe/Nowhere\"\n", "Nowhere"},
      {"[[source]]\nid = \"a\"\nformat = \"hicom\"\nudp = { port = 5 }\nquiet = { hours = \"mon 9-5\" }\n",
       "\"hours\""},
      {"[[source]]\nid = \"a\"\nformat = \"mitel5000\"\nmitel5000 = { host = \"h\", password = \"1234567890123456\" "
       "}\n",
       "15 characters at most"},
      {"[[source]\n", ":5:"},
      {"", "there is no [[source]]"},
  };
  for (const auto& [sources, expected] : cases) {
    const RunningMonitor run;
    run.writeSite(sources);
    const std::string output = run.command("run --check");
    EXPECT_NE(std::string::npos, output.find(expected)) << sources << output;
  }
}

TEST(Service, AlarmsAreToldOnceAndTakenBack) {
  RunningMonitor run;
  writeFile(run.folder / "alarm", "#!/bin/sh\necho \"$TALLYMON_SOURCE $TALLYMON_EVENT $TALLYMON_STATE\" >>" +
                                      (run.folder / "alarms").string() + "\n");
  writeFile(run.folder / "sendmail", "#!/bin/sh\ncat >>" + (run.folder / "mails").string() + "\n");
  for (const char* name : {"alarm", "sendmail"}) fs::permissions(run.folder / name, fs::perms::owner_all);
  run.writeSite(run.fileSource(), "[alarms]\ncommand = \"" + (run.folder / "alarm").string() +
                                      "\"\nmail = \"it@example.org\"\nsendmail = \"" +
                                      (run.folder / "sendmail").string() + "\"\nfree_mb = 0\n");
  for (int i = 0; i < 7; ++i) run.append("garbage $(touch " + (run.folder / "harm").string() + ")\r\n");
  run.start();
  EXPECT_TRUE(run.until([&] {
    return readFile(run.folder / "mails").find("To: it@example.org\nSubject: tallymon main: unknown") !=
           std::string::npos;
  })) << readFile(run.log);
  EXPECT_TRUE(run.until([&] { return readFile(run.folder / "alarms") == "main unknown alarm\n"; }));
  for (int i = 0; i < 100; ++i) run.append(run.line(i));
  EXPECT_TRUE(run.until([&] { return readFile(run.folder / "alarms") == "main unknown alarm\nmain unknown clear\n"; }));
  EXPECT_FALSE(fs::exists(run.folder / "harm"));
}

TEST(Service, AMendedFormatDeliversWhatGaveNoRecordAndOnlyThat) {
  RunningMonitor run;
  run.writeSite(run.fileSource());
  run.append(run.line(1) + "2026-11-24 09:20 call of 214 to 0755550199\r\n");
  run.start();
  ASSERT_TRUE(run.untilTaken(1)) << readFile(run.log);
  ASSERT_TRUE(run.until([&] { return run.status().value("summary", "").find("1 unknown") != std::string::npos; }));
  writeFile(run.folder / "mended.toml", R"(
name = "mended"
title = "Lines of another version"
[pattern]
line = '^(?P<date>\S+) (?P<time>\S+) call of (?P<ext>\d+) to (?P<number>\d+)$'
[rules]
direction = [{ is = "outgoing", when = { ext = "214" } }]
[times]
is = "start"
date = { of = "date", form = "%Y-%m-%d" }
time = { of = "time", form = "%H:%M" }
[outgoing]
extension = "ext"
number = "number"
)");
  const std::string replay = "replay main --from 2020-01-01 --format " + (run.folder / "mended.toml").string();
  const std::string shown = run.command(replay);
  EXPECT_NE(std::string::npos, shown.find("+ 2  2026-11-24 09:20 call of 214")) << shown;
  EXPECT_NE(std::string::npos, shown.find("~ 1  ")) << shown;
  EXPECT_NE(std::string::npos, run.command(replay + " --deliver").find("1 calls handed over"));
  EXPECT_TRUE(run.untilTaken(2));
  EXPECT_EQ("0755550199", run.taken[1].dialledNumber);
  const std::string again = run.command(replay + " --deliver");
  EXPECT_NE(std::string::npos, again.find("2 lines, 0 of them")) << again;
  EXPECT_NE(std::string::npos, again.find("0 calls handed over")) << again;
  EXPECT_EQ("Blanked in 1 line.\n", run.command("forget 0755550142"));
  const auto files = capture::listJournalFiles(run.data / "journal/main");
  ASSERT_EQ(1U, files.size());
  EXPECT_NE(std::string::npos, readFile(files[0].path).find("0XXXXXXXXX"));
}

}  // namespace
