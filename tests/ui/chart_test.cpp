// What the chart of a statistic draws, read from its drawing.

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>

#include "frame.h"
#include "support/program_run.h"
#include "ui/chart_pane.h"

namespace {

using namespace support;

constexpr int kHours = 116;
constexpr int kDays = 114;

class ChartTest : public MainFrameTest {
 protected:
  ui::ChartView& chart() { return child<ui::ChartView>("chart"); }
  void choose(const char* box, const char* text) {
    auto& choices = child<QComboBox>(box);
    const int index = choices.findText(text);
    ASSERT_GE(index, 0) << text;
    choices.setCurrentIndex(index);
    emit choices.activated(index);
  }
  static auto answerWith(const std::string& file, const char* kind) {
    return [file, kind](QDialog& dialog) {
      qobject_cast<QFileDialog*>(&dialog)->selectNameFilter(kind);
      support::child<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(file));
      dialog.accept();
    };
  }
  // The texts of the saved drawing.
  std::string drawing() {
    const std::string file = desktop.path("chart.svg");
    const Script script({answerWith(file, "SVG (*.svg)")});
    action("chartSave").trigger();
    return readFile(file);
  }
  // Calls of the months before and of the stopped clock's: two in January 2024, one in February.
  void callIn(int month, int day, const std::string& number) {
    exchange::CallRecord call = sampleCall(number);
    call.month = month;
    call.day = day;
    desktop.files.writeMonitorFile(exchange::encodeRecord(call, false, 1252));
    frame->importCalls();
  }
};

TEST_F(ChartTest, ALongCaptionIsWholeWhereThereIsRoom) {
  const std::string name = "A department with quite a long name";
  desktop.document->database().execute("update Calls set Department = '" + name + "'");
  frame->selectFolder(106);
  EXPECT_NE(drawing().find(name), std::string::npos);
}

TEST_F(ChartTest, TheTallestColumnHasItsValueAndEmptyPlacesStandOnTheAxis) {
  frame->selectFolder(kHours);
  choose("chartMeasure", "Number of calls");
  const std::string drawn = drawing();
  for (const char* text : {">3<", ">03<", ">23<"}) EXPECT_NE(drawn.find(text), std::string::npos) << text;
}

TEST_F(ChartTest, TheShapeIsChosenForAxesAndForOthersApart) {
  using Shape = ui::ChartShape;
  frame->selectFolder(kDays);
  EXPECT_EQ(chart().shown().shape, Shape::Columns);
  choose("chartShape", "line");
  EXPECT_EQ(chart().shown().shape, Shape::Line);
  EXPECT_EQ(chart().bars().size(), 31U);
  frame->selectFolder(kExtensions);
  EXPECT_EQ(chart().shown().shape, Shape::Bars);
  EXPECT_EQ(child<QComboBox>("chartShape").findText("line"), -1);
  frame->selectFolder(kHours);
  EXPECT_EQ(chart().shown().shape, Shape::Line);
}

TEST_F(ChartTest, APeriodIsComparedWithTheOneBefore) {
  callIn(2, 5, "3456789");
  callIn(2, 6, "7777777");
  frame->selectFolder(kNumbers);
  choose("chartMeasure", "Number of calls");
  EXPECT_FALSE(child<QCheckBox>("chartCompare").isVisibleTo(frame.get()));
  desktop.document->callFilter().set(
      {{"OnFilter", "1"}, {"OnPeriod", "1"}, {"IntervalStart", "2024-03-01"}, {"IntervalEnd", "2024-03-31 23:59:59"}});
  frame->reloadFolder();
  ASSERT_TRUE(child<QCheckBox>("chartCompare").isVisibleTo(frame.get()));
  EXPECT_FALSE(chart().bars()[0].before);
  child<QCheckBox>("chartCompare").click();
  EXPECT_EQ(chart().shown().before, "01.02.2024 - 29.02.2024");
  for (const auto& bar : chart().bars()) {
    EXPECT_EQ(bar.before, bar.caption == "3456789" ? 1 : 0) << bar.caption.toStdString();
  }
  EXPECT_NE(drawing().find("01.02.2024 - 29.02.2024"), std::string::npos);
}

TEST_F(ChartTest, AValueIsToldUnderThePointerAndAClickLeadsToItsCalls) {
  frame->selectFolder(kNumbers);
  choose("chartMeasure", "Number of calls");
  frame->show();
  chart().grab();  // bars have their places when they were drawn
  QTest::mouseMove(&chart(), QPoint(chart().width() / 2, 40));
  const QPoint first(chart().width() / 2, chart().minimumSizeHint().height() / 3);
  QTest::mouseMove(&chart(), first);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !chart().markedText().isEmpty(); }, 2000));
  const QString marked = chart().markedText();
  EXPECT_TRUE(marked.contains("%")) << marked.toStdString();
  QTest::mouseClick(&chart(), Qt::LeftButton, {}, first);
  EXPECT_EQ(list().folderId(), kCalls);
  EXPECT_LT(rows(), 3);
}

TEST_F(ChartTest, APictureGoesToTheClipboard) {
  frame->selectFolder(kNumbers);
  action("chartCopy").trigger();
  EXPECT_EQ(QApplication::clipboard()->image().size(), QSize(1920, 1080));
}

TEST_F(ChartTest, AFullDiskIsToldAndLeavesNoHalfOfAPicture) {
  frame->selectFolder(kNumbers);
  for (const auto& [name, kind] : {std::pair{"full.svg", "SVG (*.svg)"}, std::pair{"full.png", "PNG (*.png)"}}) {
    const std::string file = desktop.path(name);
    const Script script({answerWith(file, kind), acknowledge(name)});
    const DiskLimit disk(1024);
    action("chartSave").trigger();
    EXPECT_FALSE(std::filesystem::exists(file)) << name;
  }
}

}  // namespace
