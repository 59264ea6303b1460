#include <QProgressDialog>

#include "desktop.h"
#include "platform/progress.h"
#include "ui/qt_operator.h"

namespace {

using namespace support;

// A query that would take minutes.
constexpr const char* kEndless =
    "select count(*) from ((Calls as a INNER JOIN Calls as b ON a.Incoming = b.Incoming) INNER JOIN Calls as c ON "
    "b.Incoming = c.Incoming) where a.TotalTime + b.TotalTime < c.TotalTime";

class LongWork : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(desktop.started);
    desktop.files.writeMonitorFile(sampleRecords(1500));
    desktop.document->smdr().importMonitorFile();
    desktop.document->database().watch([this] { return person.progressPulse(); });
  }

  Desktop desktop;
  ui::QtOperator person;
};

TEST_F(LongWork, TheWindowLivesWhileAQueryRunsAndCancelEndsIt) {
  int drawn = 0;  // as often as the window could have been
  QTimer ticks;
  QObject::connect(&ticks, &QTimer::timeout, [&] { ++drawn; });
  const Script script({[&](QDialog& dialog) {
    EXPECT_EQ(dialog.objectName(), "progress");
    QTimer::singleShot(100, &dialog, [&dialog] { qobject_cast<QProgressDialog*>(&dialog)->cancel(); });
  }});
  ticks.start(1);
  const platform::Progress progress(person, "Calls", "Reading the rows...");
  EXPECT_TRUE(person.busy());
  try {
    desktop.document->database().openSnapshot(kEndless);
    FAIL() << "the query ended by itself";
  } catch (const jet::Error& error) {
    EXPECT_TRUE(error.canceled()) << error.what();
  }
  EXPECT_GE(drawn, 3);
}

TEST_F(LongWork, ShortWorkShowsNoWindow) {
  const Script nothingOpens({});
  const platform::Progress progress(person, "Calls", "Reading the rows...");
  EXPECT_EQ(desktop.value("select count(*) from Calls"), "1500");
  QCoreApplication::processEvents();
}

}  // namespace
