// The desktop while the connection to the databases' server is lost: it says so, refuses what needs them, is drawn, and
// goes on by itself.

#include <QProgressDialog>
#include <optional>

#include "frame.h"
#include "support/server_proxy.h"

namespace {

using namespace support;

class LostServer : public testing::Test {
 protected:
  void SetUp() override {
    if (!DatabaseFolder().onServer()) GTEST_SKIP() << "about a server";
    desktop.emplace("EN", [this](const ExchangeFiles& files) {
      proxy.emplace(files.folder / "", files.folder.setting());
      return proxy->setting();
    });
    ASSERT_TRUE(desktop->started) << testing::PrintToString(desktop->person.messages);
    desktop->files.writeMonitorFile(callTo("3456789", 61) + callTo("9999999", 200));
    frame = std::make_unique<ui::CMainFrame>(*desktop->document, *desktop->texts, operator_);
    frame->start();
    frame->importCalls();
    frame->selectFolder(kCalls);
  }
  void TearDown() override {
    if (frame) frame->close();
    frame.reset();
    desktop.reset();
  }

  [[nodiscard]] QString message() const { return frame->findChild<QLabel*>("messagePane")->text(); }
  [[nodiscard]] int rows() const { return frame->list().model().rowCount(); }
  // A loss is met by whoever uses the connection next.
  void lose() {
    (*proxy)->cutAfter(0);
    EXPECT_THROW(desktop->document->database().execute("delete from Calls where Pulses = -1"), jet::Error);
  }
  [[nodiscard]] bool comesBack() {
    (*proxy)->heal();
    return QTest::qWaitFor(
        [this] {
          frame->refreshFromOtherCopies();
          return desktop->document->connected();
        },
        60'000);
  }

  std::optional<ServerProxy> proxy;
  std::optional<Desktop> desktop;
  ui::QtOperator operator_;
  std::unique_ptr<ui::CMainFrame> frame;
};

constexpr const char* kLost = "Connection to the database lost; trying again ...";

TEST_F(LostServer, IsSaidAndWhatNeedsItWaits) {
  EXPECT_EQ(rows(), 2);
  lose();
  frame->refreshFromOtherCopies();
  EXPECT_EQ(message(), kLost);
  desktop->files.writeMonitorFile(callTo("3456789", 30));
  frame->importCalls();
  EXPECT_TRUE(std::filesystem::exists(desktop->files.monitorFile()));
  EXPECT_EQ(rows(), 2) << "what was read is still shown";
  {
    const Script refused({[](QDialog& box) {
      EXPECT_TRUE(box.property("text").toString().startsWith("Connection to the database postgresql://"));
      box.accept();
    }});
    frame->selectFolder(kExtensions);
  }
  frame->refreshFromOtherCopies();
  EXPECT_EQ(message(), kLost);

  ASSERT_TRUE(comesBack());
  frame->selectFolder(kCalls);
  frame->importCalls();
  EXPECT_EQ(rows(), 3);
  EXPECT_FALSE(std::filesystem::exists(desktop->files.monitorFile("monitor.data.bk")));
}

// A server that takes the connection and says nothing, as behind a network that loses everything.
TEST_F(LostServer, TheWindowDoesNotWaitForAServerThatIsSilent) {
  lose();
  (*proxy)->hold();
  constexpr qint64 kNeverThatLong = 5'000;  // milliseconds; an attempt lasts ten seconds
  for (int attempt = 0; attempt < 3; ++attempt) {
    QElapsedTimer time;
    time.start();
    EXPECT_FALSE(desktop->document->reconnect());
    EXPECT_LT(time.elapsed(), kNeverThatLong);
  }
  frame->refreshFromOtherCopies();
  EXPECT_EQ(message(), kLost);
  ASSERT_TRUE(comesBack());
  frame->refreshFromOtherCopies();
  EXPECT_EQ(desktop->value("select count(*) as n from Calls"), "2");
}

// The server's process is stopped, or a network loses what is said, while a statement is under way.
class SilentServer : public LostServer {
 protected:
  void SetUp() override {
    LostServer::SetUp();
    if (!desktop) return;
    jet::Database& database = desktop->document->database();
    // One person: while he waits, nothing else of the window uses the database.
    database.watch([this] {
      desktop->person.isBusy = true;
      const bool goOn = operator_.progressPulse();
      desktop->person.isBusy = false;
      return goOn;
    });
    (*proxy)->hold();
  }
  void TearDown() override {
    if (proxy) (*proxy)->heal();
    if (desktop) desktop->document->database().watch({});
    LostServer::TearDown();
  }
  // Waits as a person does, and gives up.
  static void giveUp(QDialog& dialog) {
    EXPECT_EQ(dialog.objectName(), "waiting");
    QTimer::singleShot(100, &dialog, [&dialog] { qobject_cast<QProgressDialog*>(&dialog)->cancel(); });
  }
  template <typename Work>
  void expectGivenUp(Work work) {
    int drawn = 0;
    QTimer ticks;
    QObject::connect(&ticks, &QTimer::timeout, [&] { ++drawn; });
    ticks.start(1);
    try {
      work();
      FAIL() << "a server that is silent has answered";
    } catch (const jet::Error& error) {
      EXPECT_TRUE(error.connectionLost()) << error.what();
    }
    EXPECT_GE(drawn, 3);
    EXPECT_FALSE(operator_.busy());
    EXPECT_FALSE(desktop->document->connected());
    operator_.waitIsOver();  // as the document tells its own
    ASSERT_TRUE(comesBack());
    EXPECT_EQ(desktop->value("select count(*) as n from Calls"), "2");
  }
};

TEST_F(SilentServer, CanBeGivenUp) {
  const Script script({giveUp});
  expectGivenUp([this] { desktop->document->database().openSnapshot("select * from Calls"); });
}

TEST_F(SilentServer, CanBeGivenUpWithinAChange) {
  (*proxy)->heal();
  const Script script({giveUp});
  expectGivenUp([this] {
    jet::Database& database = desktop->document->database();
    jet::Transaction transaction(database);
    database.execute("delete from Calls where Pulses = -1");
    (*proxy)->hold();
    database.execute("delete from Calls where TotalTime > 100");
    transaction.commit();
  });
}

// It only was slow: the window goes by itself.
TEST_F(SilentServer, IsWaitedForAsLongAsThePersonWants) {
  const Script script({[this](QDialog& dialog) {
    EXPECT_EQ(dialog.objectName(), "waiting");
    QTimer::singleShot(300, &dialog, [this] { (*proxy)->heal(); });
  }});
  EXPECT_EQ(desktop->document->database().openSnapshot("select * from Calls").rowCount(), 2U);
  EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeModalWidget() == nullptr; }, 5'000));
}

TEST_F(LostServer, TheWindowCanBeClosedMeanwhile) {
  lose();
  (*proxy)->hold();
  frame->refreshFromOtherCopies();
  QElapsedTimer time;
  time.start();
  frame->close();
  frame.reset();
  desktop->document->OnCloseDocument();
  EXPECT_LT(time.elapsed(), 5'000);
  (*proxy)->heal();
}

}  // namespace
