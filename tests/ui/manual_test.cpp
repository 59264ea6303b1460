// F1 and the Help buttons.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <map>

#include "desktop.h"
#include "folders/numbers.h"
#include "frame.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/manual.h"
#include "windows.h"

namespace {

using namespace support;

std::string pageOf(const std::string& address) {
  return std::filesystem::path(address).stem().string();
}

// What F1 opened.
std::string opened(Desktop& desktop) {
  if (desktop.documents.opened.empty()) return {};
  const std::string address = desktop.documents.opened.back();
  desktop.documents.opened.clear();
  return address;
}

TEST(ManualTest, EveryWindowHasItsPage) {
  Desktop desktop;
  ASSERT_TRUE(desktop.started);
  desktop.files.writeMonitorFile(sampleRecords(1));
  desktop.document->smdr().importMonitorFile();
  const ui::ManualKeys keys(*desktop.app);
  const std::map<std::string, std::string> pages = {
      {"callsFilter", "filter"}, {"logFilter", "users"},        {"currencies", "tariffs"},  {"recalc", "tariffs"},
      {"bill", "bills"},         {"contactsSheet", "contacts"}, {"userDialog", "users"},    {"convertDialog", "moving"},
      {"week", "statistics"},    {"missed", "managers"},        {"monthPage", "reports"},   {"whyPrice", "tariffs"},
      {"firstRun", "start"},     {"preview", "reports"},        {"personData", "contacts"}, {"keys", "index"}};
  std::set<std::string> met;
  forEachWindow(desktop, [&](QDialog& window) {
    QTest::keyClick(&window, Qt::Key_F1);
    const std::string address = opened(desktop);
    EXPECT_TRUE(std::filesystem::exists(address)) << address;
    const std::string name = window.objectName().toStdString();
    EXPECT_TRUE(pageOf(address) != "index" || name == "keys" || name == "about") << name << " has no page";
    const auto known = pages.find(name);
    if (known == pages.end() || !met.insert(name).second) return;
    EXPECT_EQ(pageOf(address), known->second) << name;
    // What belongs to a window and has no page of its own.
    QDialog question(&window);
    question.setObjectName("question");
    QTest::keyClick(&question, Qt::Key_F1);
    EXPECT_EQ(pageOf(opened(desktop)), known->second) << name;
  });
  EXPECT_EQ(met.size(), pages.size());
}

TEST(ManualTest, AFormHasAButtonForIt) {
  Desktop desktop;
  const ui::ManualKeys keys(*desktop.app);
  ui::FormDialog dialog(*desktop.texts, "IDS_CALLS_FILTER", "callsFilter", nullptr);
  dialog.findChild<QPushButton*>("help")->click();
  EXPECT_EQ(pageOf(opened(desktop)), "filter");
}

TEST(ManualTest, TheListsHavePagesToo) {
  for (const auto& [folder, page] :
       {std::pair{100, "calls"}, {101, "statistics"}, {folders::FolderContacts, "contacts"}, {0, "index"}}) {
    EXPECT_EQ(ui::manualPageOfFolder(folder), page) << folder;
  }
}

TEST(ManualTest, ItIsInTheLanguageInUseAndTheSettingWins) {
  Desktop desktop("RO");
  EXPECT_NE(ui::manualAddress(*desktop.app, "calls").find("/manual/ro/calls.html"), std::string::npos);
  EXPECT_EQ(ui::manualAddress(*desktop.app, "nothing"), "");
  desktop.app->config().WriteConfigString("https://office.example/help", "Manual", "general", foundation::StoreMachine);
  EXPECT_EQ(ui::manualAddress(*desktop.app, "calls"), "https://office.example/help");
}

}  // namespace
