// The windows of what calls say together, as somebody works with them.

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTableWidget>

#include "alarms/alarm_list.h"
#include "frame.h"
#include "ui/chart_view.h"

namespace {

using namespace support;

exchange::CallRecord callAt(int hour, int minute, const std::string& number, int seconds) {
  exchange::CallRecord call = sampleCall(number);
  call.hour = static_cast<decltype(call.hour)>(hour);
  call.minute = static_cast<decltype(call.minute)>(minute);
  call.setDuration(seconds);
  return call;
}

std::string missedAt(int hour, const std::string& number) {
  exchange::CallRecord call = callAt(hour, 0, number, 0);
  call.incoming = 1;
  call.ring = 12;
  return exchange::encodeRecord(call, true, 1252);
}

std::string madeAt(int hour, int minute, const std::string& number, int seconds) {
  return exchange::encodeRecord(callAt(hour, minute, number, seconds), true, 1252);
}

Script::Step saveAs(const std::string& file) {
  return [file](QDialog& dialog) {
    child<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(file));
    dialog.accept();
  };
}

Script::Step press(const char* text, const char* button) {
  return [=](QDialog& dialog) {
    EXPECT_TRUE(dialog.property("text").toString().contains(text)) << dialog.property("text").toString().toStdString();
    click(dialog, button);
  };
}

std::string cellOf(QWidget& window, const char* table, int row, int column) {
  const QAbstractItemModel& model = *child<QTableView>(window, table).model();
  return ui::fromQt(model.index(row, column).data().toString());
}

int rowsOf(QWidget& window, const char* table) {
  return child<QTableView>(window, table).model()->rowCount();
}

void openRow(QWidget& window, const char* table, int row) {
  auto& view = child<QTableView>(window, table);
  view.setCurrentIndex(view.model()->index(row, 0));
  emit view.doubleClicked(view.currentIndex());
}

class Results : public MainFrameTest {
 protected:
  void record(const std::string& calls) {
    desktop.files.writeMonitorFile(calls);
    frame->importCalls();
  }
  // Opens the window of a command, and does that in it.
  void inWindowOf(const char* command, std::vector<Script::Step> steps) {
    const Script script(std::move(steps));
    action(command).trigger();
  }
};

TEST_F(Results, AMissedCallTellsWhoCalledBackAndLeadsToItsCalls) {
  record(missedAt(9, "0721111111") + madeAt(10, 0, "0040721111111", 60) + missedAt(11, "0722222222"));
  inWindowOf("IDS_ACTION_MISSED", {[](QDialog& dialog) {
               EXPECT_TRUE(support::child<QLabel>(dialog, "summary").text().startsWith("2 missed: 1 called back, 0 "));
               EXPECT_EQ(cellOf(dialog, "missedList", 1, 4), "called back");
               EXPECT_EQ(cellOf(dialog, "missedList", 1, 6), "201 (Desk)");
               EXPECT_EQ(cellOf(dialog, "missedList", 1, 7), "01:00:00");
               EXPECT_EQ(cellOf(dialog, "byHour", 1, 2), "1");
               support::child<QCheckBox>(dialog, "openOnly").setChecked(true);
               ASSERT_EQ(rowsOf(dialog, "missedList"), 1);
               EXPECT_EQ(cellOf(dialog, "missedList", 0, 1), "0722222222");
               const auto& view = support::child<QTableView>(dialog, "missedList");
               EXPECT_TRUE(view.model()->index(0, 0).data(Qt::FontRole).value<QFont>().bold());
               support::child<QCheckBox>(dialog, "openOnly").setChecked(false);
               openRow(dialog, "missedList", 1);
             }});
  // The caller's number in both forms.
  EXPECT_EQ(list().folderId(), kCalls);
  EXPECT_EQ(rows(), 2);
}

TEST_F(Results, MissedCallsAreExportedAsTheyAreShown) {
  record(missedAt(9, "0721111111") + madeAt(10, 0, "0721111111", 60) + missedAt(11, "0722222222"));
  for (const char* name : {"missed.csv", "missed.html", "missed.xlsx", "missed.pdf"}) {
    inWindowOf("IDS_ACTION_MISSED", {[&](QDialog& dialog) {
                                       support::child<QCheckBox>(dialog, "openOnly").setChecked(true);
                                       QWidget& list = *support::child<QTableView>(dialog, "missedList").parentWidget();
                                       click(list, "export");
                                       auto& written = support::child<QLabel>(list, "fileLine");
                                       EXPECT_TRUE(written.isVisible() && written.text().contains(name));
                                       emit written.linkActivated(QString::fromStdString(desktop.path(name)));
                                       EXPECT_EQ(desktop.documents.opened.back(), desktop.path(name));
                                       dialog.reject();
                                     },
                                     saveAs(desktop.path(name))});
    EXPECT_GT(readFile(desktop.path(name)).size(), 100u) << name;
  }
  const std::string csv = readFile(desktop.path("missed.csv"));
  EXPECT_NE(csv.find("2024-03-04 11:00:30,0722222222,"), std::string::npos) << csv;
  EXPECT_EQ(csv.find("0721111111"), std::string::npos) << "a row that was not shown";
  EXPECT_NE(readFile(desktop.path("missed.html")).find("<b>0722222222</b>"), std::string::npos);
}

TEST_F(Results, AnHourOfTheWeekTellsItsCallsAndLeadsToThem) {
  record(missedAt(9, "0721111111") + madeAt(10, 0, "0721111111", 60) + madeAt(9, 30, "0722222222", 60));
  inWindowOf("IDS_ACTION_WEEK", {[](QDialog& dialog) {
               auto& week = dynamic_cast<ui::HeatMap&>(support::child<QWidget>(dialog, "heatMap"));
               QTest::keyClick(&week, Qt::Key_Right);
               EXPECT_EQ(week.markedText(), "Monday 09:00: 2");
               QTest::keyClick(&week, Qt::Key_Return);
             }});
  EXPECT_EQ(rows(), 2);
}

TEST_F(Results, RowsAreCopiedAsTheyAreSelectedAndFoundByAWord) {
  record(missedAt(9, "0721111111") + missedAt(11, "0722222222") + missedAt(12, "0723333333"));
  inWindowOf("IDS_ACTION_MISSED", {[](QDialog& dialog) {
               auto& view = support::child<QTableView>(dialog, "missedList");
               view.setFocus();
               view.selectRow(1);
               QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
               const QString one = QApplication::clipboard()->text();
               EXPECT_TRUE(one.contains("0722222222") && one.count('\n') == 1) << one.toStdString();
               support::child<QLineEdit>(*view.parentWidget(), "search").setText("0721");
               click(*view.parentWidget(), "copyTable");
               const QString found = QApplication::clipboard()->text();
               EXPECT_TRUE(found.startsWith("Date and time\tNumber")) << found.toStdString();
               EXPECT_TRUE(found.contains("0721111111") && found.count('\n') == 2) << found.toStdString();
               dialog.reject();
             }});
}

TEST_F(Results, TrunkLoadAnswersWhetherLinesArePaidInVain) {
  record(madeAt(9, 0, "0721111111", 600) + madeAt(9, 5, "0722222222", 600) + madeAt(13, 0, "0723333333", 60));
  inWindowOf(
      "IDS_ACTION_TRUNK_LOAD", {[](QDialog& dialog) {
        EXPECT_TRUE(support::child<QLabel>(dialog, "verdict").text().contains("3 lines were in use at the same time"))
            << support::child<QLabel>(dialog, "verdict").text().toStdString();
        EXPECT_EQ(cellOf(dialog, "hours", 0, 0), "04.03.2024 09:00");
        EXPECT_EQ(cellOf(dialog, "hours", 0, 2), "2");
        EXPECT_EQ(cellOf(dialog, "lines", 2, 1), "00:05:31");
        support::child<QComboBox>(dialog, "per").setCurrentIndex(1);
        EXPECT_EQ(rowsOf(dialog, "hours"), 3);
        auto& trunks = support::child<QListWidget>(dialog, "trunks");
        ASSERT_GE(trunks.count(), 1);
        trunks.item(0)->setCheckState(Qt::Checked);
        EXPECT_EQ(rowsOf(dialog, "trunkUse"), 1);
        openRow(dialog, "hours", 0);
      }});
  EXPECT_EQ(rows(), 2);
}

TEST_F(Results, AnAlarmIsAcknowledgedOnceAndLeadsToItsCall) {
  const alarms::Rule rule{.name = "Long",
                          .kind = alarms::Kind::Call,
                          .subject = alarms::Subject::Extension,
                          .measure = alarms::Measure::Duration,
                          .limit = 500};
  alarms::saveRule(desktop.document->database(), rule);
  record(madeAt(9, 0, "0721111111", 600) + madeAt(9, 30, "0721111112", 60));
  inWindowOf("IDS_ACTION_ALARMS", {[](QDialog& dialog) {
               ASSERT_EQ(rowsOf(dialog, "alarmList"), 1);
               EXPECT_EQ(cellOf(dialog, "alarmList", 0, 3), "waits");
               EXPECT_FALSE(support::child<QAbstractButton>(dialog, "acknowledge").isEnabled());
               support::child<QTableView>(dialog, "alarmList").selectRow(0);
               click(dialog, "acknowledge");
               EXPECT_EQ(cellOf(dialog, "alarmList", 0, 3), "seen");
               EXPECT_EQ(cellOf(dialog, "alarmList", 0, 4), "admin");
               EXPECT_FALSE(support::child<QAbstractButton>(dialog, "acknowledgeAll").isEnabled());
               openRow(dialog, "alarmList", 0);
             }});
  EXPECT_EQ(desktop.value("select AckUser from Alarms"), "admin");
  ASSERT_EQ(rows(), 1);
  EXPECT_EQ(cell(0, kKindNumber), "0721111111");
}

TEST_F(Results, AMonthIsChosenLookedAtAndSaved) {
  const std::string file = desktop.path("march.html");
  inWindowOf("IDS_ACTION_MONTH", {[](QDialog& dialog) {
                                    support::child<QComboBox>(dialog, "month").setCurrentIndex(2);
                                    support::child<QSpinBox>(dialog, "year").setValue(2024);
                                    const auto& table = support::child<QTableWidget>(dialog, "comparison");
                                    EXPECT_EQ(table.item(1, 1)->text(), "3") << "the number of calls";
                                    EXPECT_EQ(dialog.findChild<ui::ChartView*>()->bars().size(), 31u);
                                    click(dialog, "save");
                                    dialog.reject();
                                  },
                                  saveAs(file)});
  EXPECT_NE(readFile(file).find("Calls in March 2024"), std::string::npos);
}

TEST_F(Results, APersonsDataAreShownGivenAndErasedAfterAQuestion) {
  inWindowOf("IDS_ACTION_PERSON", {[&](QDialog& dialog) {
                                     support::child<QLineEdit>(dialog, "person").setText("021 345 67 89");
                                     click(dialog, "find");
                                     // Two calls and the phonebook.
                                     EXPECT_EQ(rowsOf(dialog, "personList"), 3);
                                     click(dialog, "export");
                                     click(dialog, "erase");
                                     EXPECT_EQ(rowsOf(dialog, "personList"), 3) << "No keeps them";
                                     click(dialog, "erase");
                                     EXPECT_EQ(rowsOf(dialog, "personList"), 0);
                                     dialog.reject();
                                   },
                                   saveAs(desktop.path("person.csv")), press("3 items", "no"), press("3 items", "yes"),
                                   acknowledge("3 items were erased")});
  EXPECT_NE(readFile(desktop.path("person.csv")).find("3456789"), std::string::npos);
  EXPECT_EQ(desktop.value("select count(*) from Calls where DialNumber = '3456789'"), "0");
  EXPECT_EQ(desktop.value("select count(*) from Calls"), "3");
}

TEST_F(Results, AnonymousCallsComeBackUntilItIsMadeFinal) {
  desktop.clock.time = *base::DateTime::fromParts(2024, 4, 1, 12);
  const auto known = [this] { return desktop.value("select count(*) from Calls where DialNumber = '3456789'"); };
  inWindowOf("IDS_ACTION_ANONYMISE", {[&](QDialog& dialog) {
                                        support::child<QSpinBox>(dialog, "olderThan").setValue(1);
                                        click(dialog, "apply");
                                        EXPECT_EQ(known(), "0");
                                        EXPECT_FALSE(support::child<QAbstractButton>(dialog, "apply").isEnabled());
                                        click(dialog, "undo");
                                        EXPECT_EQ(known(), "2");
                                        desktop.document->noteBackup(*base::DateTime::fromParts(2024, 3, 31, 2, 30));
                                        click(dialog, "apply");
                                        click(dialog, "confirm");
                                        EXPECT_FALSE(support::child<QAbstractButton>(dialog, "undo").isEnabled());
                                        dialog.reject();
                                      },
                                      press("No backup was made yet (tallyctl backup).\n3 calls are made", "yes"),
                                      press("was made on 31.03.2024 02:30:00.\n3 calls are made", "yes"),
                                      press("was made on 31.03.2024 02:30:00.\n3 calls stay", "yes")});
  EXPECT_EQ(known(), "0");
  EXPECT_EQ(desktop.value("select count(*) from CallsBefore"), "0");
}

// What counts or changes all calls is not for who sees a part of them.
TEST_F(Results, AUserWithARestrictionIsTold) {
  record(missedAt(9, "0721111111"));
  desktop.document->user().SQLSubquery = "Extension = '202'";
  for (const char* command : {"IDS_ACTION_ALARMS", "IDS_ACTION_ANONYMISE"}) {
    inWindowOf(command, {acknowledge("sees only a part of the calls")});
  }
  inWindowOf("IDS_ACTION_MISSED", {[](QDialog& dialog) {
               EXPECT_EQ(rowsOf(dialog, "missedList"), 0);
               dialog.reject();
             }});
}

}  // namespace
