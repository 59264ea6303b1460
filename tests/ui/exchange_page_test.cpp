#include "ui/exchange/exchange_page.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QWizard>
#include <chrono>
#include <fstream>

#include "desktop.h"
#include "ui/exchange/exchange_faults.h"
#include "ui/exchange/monitor_pane.h"
#include "ui/first_run.h"
#include "ui/settings/settings_sheet.h"

namespace {

using namespace support;

constexpr int kPatience = 20'000;  // milliseconds

// The settings of a workstation whose site file and monitor's folder are in the test's own folder. The capture program
// is the real one, beside the tests.
class ExchangePageTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(desktop.started) << testing::PrintToString(desktop.person.messages);
    if (ui::CaptureProgram::file().isEmpty()) GTEST_SKIP() << "without the capture program";
    std::filesystem::create_directory(monitor);
    write("PathMonitor", monitor.string() + "/");
    write("MonitorSite", site.string());
    write("LiveSocket", desktop.path("live.sock"));
  }
  void TearDown() override {
    sheet.reset();
    static_cast<void>(
        ui::CaptureProgram(QString::fromStdString(site.string()), desktop.person, *desktop.texts).run({"stop"}));
  }
  void write(const char* key, const std::string& value) {
    desktop.app->config().WriteConfigString(value, key, "general", foundation::StoreMachine);
  }
  void open() {
    sheet = std::make_unique<ui::SettingsSheet>(*desktop.document, *desktop.texts);
    sheet->showPage((*desktop.texts)("IDS_PAGE_EXCHANGE"));
    sheet->show();
    page = sheet->findChild<ui::ExchangePage*>();
    ASSERT_NE(nullptr, page);
    // It is there at once, and filled when the capture program has answered.
    EXPECT_FALSE(page->isEnabled());
    EXPECT_FALSE(page->changed());
    ASSERT_TRUE(QTest::qWaitFor([&] { return page->isEnabled(); }, kPatience));
    EXPECT_FALSE(sheet->property(ui::kStillReading).toBool());
  }
  void choose(const char* box, const char* data) {
    auto& combo = child<QComboBox>(*page, box);
    combo.setCurrentIndex(combo.findData(data));
    EXPECT_EQ(data, combo.currentData().toString().toStdString());
  }
  void fill(const char* form, const std::string& field, const std::string& text) {
    child<QLineEdit>(child<QWidget>(*page, form), ("exchange_" + field).c_str()).setText(QString::fromStdString(text));
  }
  // A site whose journal is in the test's folder too.
  void writeSite() {
    std::ofstream(site) << "# ours\n[deliver]\nfolder = \"" << monitor.string() << "\"\n[data]\nfolder = \""
                        << desktop.path("capture") << "\"\n[[source]]\nid = \"main\"   # basement\nformat = \"hicom\"\n"
                        << "file = { path = \"" << calls.string() << "\" }\n";
  }
  void addLine(const char* number) {
    std::ofstream(calls, std::ios::app) << "24.11.2609:17:02  7   214     00:02:31" << number
                                        << "                        14 2\r\n";
  }

  Desktop desktop;
  std::filesystem::path monitor = desktop.path("monitor");
  std::filesystem::path site = desktop.path("tallymon.toml");
  std::filesystem::path calls = desktop.path("calls.log");
  std::unique_ptr<ui::SettingsSheet> sheet;
  ui::ExchangePage* page = nullptr;
};

TEST_F(ExchangePageTest, AFirstExchangeMakesTheSiteFileThatTheServiceReads) {
  open();
  EXPECT_FALSE(page->changed());
  choose("exchangeFormat", "hicom");
  choose("exchangeTransport", "serial");
  fill("serial", "device", "/dev/ttyUSB0");
  fill("exchangeQuiet", "minutes", "120");
  EXPECT_TRUE(page->changed());
  sheet->apply();
  EXPECT_FALSE(page->changed());
  const std::string text = readFile(site);
  EXPECT_NE(std::string::npos, text.find("folder = \"" + monitor.string() + "\"")) << text;
  EXPECT_NE(std::string::npos, text.find("poke = \"" + desktop.path("live.sock") + "\"")) << text;
  EXPECT_NE(std::string::npos, text.find("serial = { device = \"/dev/ttyUSB0\" }")) << text;
  EXPECT_NE(std::string::npos, text.find("quiet = { minutes = 120 }")) << text;
}

// A line end follows what is sent, unless a backslash is there.
TEST_F(ExchangePageTest, StepsOfALoginAreWrittenAsTheyAreSent) {
  open();
  choose("exchangeFormat", "panasonic");
  choose("exchangeTransport", "connect");
  fill("connect", "host", "192.0.2.10");
  fill("connect", "port", "2300");
  auto& steps = child<QPlainTextEdit>(child<QWidget>(*page, "connect"), "exchange_login");
  steps.setPlainText("- | SMDR\nPassword: | PCC\\rX\\");
  sheet->apply();
  const std::string text = readFile(site);
  EXPECT_NE(std::string::npos, text.find(R"({ expect = "-", send = "SMDR\r\n" }, )"
                                         R"({ expect = "Password:", send = "PCC\rX" })"))
      << text;
  EXPECT_EQ("- | SMDR\nPassword: | PCC\\rX\\", steps.toPlainText().toStdString());
}

TEST_F(ExchangePageTest, AnEditedFileKeepsItsCommentsAndWhatThePageDoesNotShow) {
  writeSite();
  open();
  EXPECT_FALSE(page->changed());
  fill("file", "path", "/var/log/other.log");
  sheet->apply();
  const std::string text = readFile(site);
  EXPECT_TRUE(text.starts_with("# ours\n")) << text;
  EXPECT_NE(std::string::npos, text.find("id = \"main\"   # basement")) << text;
  EXPECT_NE(std::string::npos, text.find("file = { path = \"/var/log/other.log\" }")) << text;
  EXPECT_NE(std::string::npos, text.find("[data]\nfolder = \"" + desktop.path("capture") + "\"\n")) << text;
}

TEST_F(ExchangePageTest, WhatTheCaptureProgramRefusesIsToldAndNothingIsWritten) {
  open();
  choose("exchangeFormat", "hicom");
  choose("exchangeTransport", "listen");
  fill("listen", "port", "99999");
  {
    const Script script({[](QDialog& message) {
      EXPECT_TRUE(message.property("text").toString().contains("Port: a whole number"))
          << qPrintable(message.property("text").toString());
      click(message, "ok");
    }});
    sheet->apply();
  }
  EXPECT_FALSE(std::filesystem::exists(site));
  EXPECT_TRUE(page->changed());
}

TEST_F(ExchangePageTest, LinesAreShownWithTheirCallsAndTellTheirKind) {
  writeSite();
  std::ofstream(calls).flush();
  open();
  auto& lines = child<ui::ExchangeLines>(*page, "exchangeLines");
  choose("exchangeFormat", "nec");
  click(*page, "exchangeListen");
  const auto shown = [&](int row, int column) { return lines.topLevelItem(row)->text(column).toStdString(); };
  // The file is followed from its end: what is written before it is open is not shown.
  ASSERT_TRUE(
      QTest::qWaitFor([&] { return child<QLabel>(*page, "exchangeMessage").text().contains("calls.log"); }, kPatience));
  addLine("0755550142");
  ASSERT_TRUE(QTest::qWaitFor([&] { return lines.topLevelItemCount() == 1; }, kPatience));
  ASSERT_TRUE(QTest::qWaitFor([&] { return shown(0, 1).find("unknown") == 0; }, kPatience)) << shown(0, 1);
  click(*page, "exchangeGuess");
  EXPECT_EQ("hicom", child<QComboBox>(*page, "exchangeFormat").currentData().toString().toStdString());
  click(*page, "exchangeListen");  // ends
  click(*page, "exchangeListen");
  ASSERT_TRUE(
      QTest::qWaitFor([&] { return child<QLabel>(*page, "exchangeMessage").text().contains("calls.log"); }, kPatience));
  addLine("0744000317");
  ASSERT_TRUE(QTest::qWaitFor([&] { return lines.topLevelItemCount() == 1; }, kPatience));
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown(0, 1).find("Number 0744000317") != std::string::npos; }, kPatience))
      << shown(0, 1);
}

TEST_F(ExchangePageTest, TheServiceIsStartedShownAndStopped) {
  writeSite();
  addLine("0755550142");
  open();
  click(*page, "exchangeStart");
  EXPECT_FALSE(child<QPushButton>(*page, "exchangeStart").isEnabled())
      << child<QLabel>(*page, "exchangeMessage").text().toStdString();
  ASSERT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(monitor / "monitor.data"); }, kPatience));
  ui::MonitorPane pane([&] { return QString::fromStdString(monitor.string()); }, *desktop.texts);
  ASSERT_TRUE(QTest::qWaitFor(
      [&] {
        pane.refresh();
        return pane.text() == "Monitor: last call 09:14";
      },
      kPatience))
      << pane.text().toStdString();
  // The service holds the line: its lines come from the journal.
  auto& lines = child<ui::ExchangeLines>(*page, "exchangeLines");
  click(*page, "exchangeListen");
  EXPECT_TRUE(QTest::qWaitFor([&] { return lines.topLevelItemCount() == 1; }, kPatience));
  click(*page, "exchangeStop");
  EXPECT_FALSE(child<QPushButton>(*page, "exchangeStop").isEnabled());
}

TEST(MonitorPane, SpeaksTheLanguageInUse) {
  const std::pair<const char*, const char*> languages[] = {
      {"EN", "Monitor: does not run; when it did: last call 09:14, 4 unknown lines, 1 alarm"},
      {"RO", "Monitor: nu rulează; când rula: ultimul apel 09:14, linii necunoscute: 4, o alarmă"}};
  for (const auto& [language, shown] : languages) {
    const Desktop desktop(language);
    const std::filesystem::path folder = desktop.files.folder / ".tallymon";
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "status.json") << R"({"sources": [{"last_call": "2026-11-25 08:59:00", "unknown_today": 1},
      {"last_call": "2026-11-25 09:14:07", "unknown_today": 3}, {"last_call": ""}], "alarms": [{}]})";
    const ui::MonitorPane now([&] { return ui::toQt(desktop.path("")); }, *desktop.texts);
    EXPECT_FALSE(now.text().contains(QString::fromUtf8(shown).section("; ", 0, 0))) << qPrintable(now.text());
    using namespace std::chrono_literals;
    std::filesystem::last_write_time(folder / "status.json", std::filesystem::file_time_type::clock::now() - 1h);
    const ui::MonitorPane later([&] { return ui::toQt(desktop.path("")); }, *desktop.texts);
    EXPECT_EQ(later.text(), QString::fromUtf8(shown));
  }
}

TEST(CaptureProgramTest, WaitingForItHasAnEnd) {
  Desktop desktop;
  const ui::CaptureProgram program({}, desktop.person, *desktop.texts);
  const auto late = program.runProgram("sleep", {"60"}, {}, 1);
  EXPECT_FALSE(late.done);
  EXPECT_TRUE(late.message.startsWith("sleep did not answer within 1 seconds")) << qPrintable(late.message);
  desktop.person.stopAt = 0;
  const auto givenUp = program.runProgram("sleep", {"60"}, {}, 60);
  EXPECT_FALSE(givenUp.done);
  EXPECT_TRUE(givenUp.message.startsWith("Stopped before there was an answer")) << qPrintable(givenUp.message);
  const auto missing = program.runProgram("no-such-program", {}, {}, 60);
  EXPECT_FALSE(missing.done);
  EXPECT_TRUE(missing.message.startsWith("no-such-program: ")) << qPrintable(missing.message);
}

// What the capture program says about a field, as it says it today, is found again and told by the field's caption.
TEST_F(ExchangePageTest, AFaultOfAFieldIsToldByItsCaption) {
  const struct {
    const char* source;
    const char* told;
  } cases[] = {
      {R"({"id": "main", "format": "hicom", "listen": {"port": 0}})", "Port: a whole number from 1 to 65535."},
      {R"({"id": "main", "format": "hicom", "listen": {}})", "Port"},
      {R"({"id": "main", "format": "hicom", "serial": {"device": ""}})", "Device: fill it in."},
      {R"({"id": "main", "format": "hicom", "serial": {"device": "/dev/x", "line": "fast"}})", "Speed and form: speed"},
      {R"({"id": "main", "format": "hicom", "serial": {"device": "/dev/x", "line": "9600 4N1"}})",
       "Speed and form: speed"},
      {R"({"id": "a b", "format": "hicom", "listen": {"port": 2300}})", "Name: letters, digits, - and _, 32 at most."},
      {R"({"id": "a", "format": "hicom", "listen": {"port": 2300, "address": "here"}})", "Address of this machine: an"},
      {R"({"id": "a", "format": "hicom", "http": {"port": 2300, "path": "x"}})", "Path: it begins with a slash."},
      {R"({"id": "a", "format": "hicom", "http": {"port": 2300, "address": "0.0.0.0"}})",
       "Address of this machine: other machines reach"},
      {R"({"id": "a", "format": "hicom", "get": {"url": "ftp://x", "id": ["a"]}})", "URL: it begins with http"},
      {R"({"id": "a", "format": "hicom", "listen": {"port": 2300}, "quiet": {"minutes": 9, "hours": "always"}})",
       "Within these hours: days and times"},
  };
  const ui::CaptureProgram program(QString::fromStdString(site.string()), desktop.person, *desktop.texts);
  for (const auto& one : cases) {
    const std::string given =
        R"({"deliver": {"folder": ")" + monitor.string() + R"("}, "source": [)" + one.source + "]}";
    const auto result = program.run({"site", "set"}, QByteArray::fromStdString(given));
    EXPECT_FALSE(result.done) << one.source;
    const std::string told = ui::exchangeFault(result.message, *desktop.texts).toStdString();
    EXPECT_EQ(told.substr(0, std::string(one.told).size()), one.told) << result.message.toStdString();
  }
}

}  // namespace
