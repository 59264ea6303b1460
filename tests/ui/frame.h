#pragma once

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QTest>

#include "desktop.h"
#include "ui/main_frame.h"

namespace support {

inline constexpr int kCalls = 100;
inline constexpr int kExtensions = 101;
inline constexpr int kNumbers = 102;
inline constexpr int kUsers = 97;
inline constexpr int kGroups = 98;
inline constexpr int kLog = 99;
inline constexpr int kKindContactName = 200;
inline constexpr int kKindCount = 421;
inline constexpr int kKindNumber = 400;
inline constexpr int kKindDuration = 404;
inline constexpr int kKindDepartment = 413;

inline std::string callTo(const std::string& number, int seconds) {
  exchange::CallRecord call = sampleCall(number);
  call.setDuration(seconds);
  return exchange::encodeRecord(call, false, 1252);
}

// The main window over a small exchange.
class MainFrameTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(desktop.started) << testing::PrintToString(desktop.person.messages);
    desktop.files.writeMonitorFile(callTo("3456789", 61) + callTo("9999999", 200) + callTo("3456789", 30));
    frame = std::make_unique<ui::CMainFrame>(*desktop.document, *desktop.texts, operator_);
    frame->start();
    frame->importCalls();
    frame->selectFolder(kCalls);
  }
  void TearDown() override {
    if (frame) frame->close();
  }

  [[nodiscard]] ui::CFolderView& list() const { return frame->list(); }
  [[nodiscard]] int rows() const { return list().model().rowCount(); }
  [[nodiscard]] std::string cell(int row, int kind) const {
    return ui::fromQt(list().model().text(row, list().model().columnOf(kind)));
  }
  void select(int row, int kind) { list().setCurrentIndex(list().model().index(row, list().model().columnOf(kind))); }
  QAction& action(const char* key) { return child<QAction>(key); }
  void clickHeading(int kind) { emit list().horizontalHeader()->sectionClicked(list().model().columnOf(kind)); }
  template <typename Object>
  Object& child(const char* name) {
    auto* found = frame->findChild<Object*>(name);
    if (found == nullptr) throw std::runtime_error(std::string("there is no ") + name);
    return *found;
  }

  Desktop desktop;
  ui::QtOperator operator_;
  std::unique_ptr<ui::CMainFrame> frame;
};

}  // namespace support
