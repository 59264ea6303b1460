// F1 and the Help buttons.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <filesystem>

#include "desktop.h"
#include "frame.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/manual.h"

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
  const ui::ManualKeys keys(*desktop.app);
  struct Case {
    const char* window;
    const char* page;
  };
  for (const Case& c : {Case{"callsFilter", "filter"}, Case{"bill", "bills"}, Case{"userDialog", "users"},
                        Case{"convertDialog", "moving"}, Case{"firstRun", "start"}, Case{"unknown", "index"}}) {
    QDialog window;
    window.setObjectName(c.window);
    QTest::keyClick(&window, Qt::Key_F1);
    const std::string address = opened(desktop);
    EXPECT_EQ(pageOf(address), c.page) << c.window;
    EXPECT_TRUE(std::filesystem::exists(address)) << address;
    // What belongs to a window and has no page of its own.
    QDialog question(&window);
    question.setObjectName("question");
    QTest::keyClick(&question, Qt::Key_F1);
    EXPECT_EQ(pageOf(opened(desktop)), c.page) << c.window;
  }
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
       {std::pair{100, "calls"}, {101, "statistics"}, {folders::kContactsList, "contacts"}, {0, "index"}}) {
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
