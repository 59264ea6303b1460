// The settings of what works by itself, and of price lists.

#include <sys/stat.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTableView>

#include "alarms/rule.h"
#include "desktop.h"
#include "schedule/schedule_table.h"
#include "ui/settings/settings_sheet.h"

namespace {

using namespace support;

class WatchPages : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(desktop.started) << testing::PrintToString(desktop.person.messages);
    sheet = std::make_unique<ui::SettingsSheet>(*desktop.document, *desktop.texts);
  }
  QWidget& tableOf(const char* name) { return *child<QTableView>(*sheet, name).parentWidget(); }
  // A new row with these cells; columns that are left out keep what a new row has.
  void addRow(const char* name, const std::vector<std::pair<int, const char*>>& cells) {
    click(tableOf(name), "add");
    auto& view = child<QTableView>(*sheet, name);
    const int row = view.model()->rowCount() - 1;
    for (const auto& [column, text] : cells) {
      EXPECT_TRUE(view.model()->setData(view.model()->index(row, column), text, Qt::EditRole)) << text;
    }
    view.setCurrentIndex(view.model()->index(row, 0));
  }
  // Applies, which is refused with these words.
  void expectRefused(const char* text) {
    const Script script({acknowledge(text)});
    click(*sheet, "apply");
  }

  Desktop desktop;
  std::unique_ptr<ui::SettingsSheet> sheet;
};

TEST_F(WatchPages, ARuleIsTriedOnLastMonthThenSavedAndRemoved) {
  desktop.clock.time = *base::DateTime::fromParts(2024, 4, 15, 12);
  desktop.files.writeMonitorFile(sampleRecords(2));  // of March
  desktop.document->smdr().importMonitorFile();
  addRow("alarmRulesTable", {{0, "Long"}, {1, "call"}, {4, "Duration"}, {6, "30"}});
  {
    const Script script({[](QDialog& dialog) {
      EXPECT_TRUE(child<QLabel>(dialog, "summary").text().contains("03.2024")) << "the last whole month";
      EXPECT_GE(child<QTableView>(dialog, "trialList").model()->rowCount(), 1);
      dialog.reject();
    }});
    click(*sheet, "tryRule");
  }
  EXPECT_EQ(desktop.value("select count(*) from Alarms"), "0");
  click(*sheet, "apply");
  const auto stored = alarms::loadRules(desktop.document->database());
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].kind, alarms::Kind::Call);
  EXPECT_EQ(stored[0].measure, alarms::Measure::Duration);
  EXPECT_EQ(stored[0].limit, 30);
  child<QTableView>(*sheet, "alarmRulesTable").selectRow(0);
  click(tableOf("alarmRulesTable"), "delete");
  click(*sheet, "apply");
  EXPECT_TRUE(alarms::loadRules(desktop.document->database()).empty());
}

TEST_F(WatchPages, AFormUnderTheTableEditsTheRuleAndOffersWhatItsKindAsksFor) {
  addRow("alarmRulesTable", {{0, "Night"}, {1, "destination"}});
  auto& kind = child<QComboBox>(*sheet, "alarmRulesTableField1");
  auto& prefix = child<QLineEdit>(*sheet, "alarmRulesTableField9");
  const auto& minutes = child<QLineEdit>(*sheet, "alarmRulesTableField8");
  EXPECT_EQ(kind.currentText(), "destination");
  EXPECT_FALSE(minutes.isEnabled());
  prefix.setText("abroad");
  emit prefix.editingFinished();
  kind.setCurrentText("silence");
  emit kind.activated(kind.currentIndex());
  EXPECT_TRUE(minutes.isEnabled());
  EXPECT_FALSE(prefix.isEnabled());
  const auto& model = *child<QTableView>(*sheet, "alarmRulesTable").model();
  EXPECT_EQ(model.index(0, 9).data().toString(), "abroad");
  EXPECT_EQ(model.index(0, 1).data().toString(), "silence");
}

TEST_F(WatchPages, RulesThatTheCommandLinePrintedAreTaken) {
  std::ofstream(desktop.path("rules.csv"))
      << "Name,Kind,Subject,Of,Measure,Per,Limit,Seconds,Minutes,Prefix,Country,Outside hours,Enabled,Mail,Command\r\n"
         "Night,destination,extension,,cost,month,0,0,0,\"abroad,+4490\",,yes,no,,\r\n";
  const Script script(
      {[this](QDialog& dialog) {
         child<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(desktop.path("rules.csv")));
         dialog.accept();
       },
       acknowledge("1 records were taken from the file")});
  click(tableOf("alarmRulesTable"), "importCsv");
  click(*sheet, "apply");
  const auto stored = alarms::loadRules(desktop.document->database());
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0], (alarms::Rule{.name = "Night",
                                     .kind = alarms::Kind::Destination,
                                     .subject = alarms::Subject::Extension,
                                     .prefixes = "abroad,+4490",
                                     .outsideHours = true,
                                     .enabled = false}));
}

TEST_F(WatchPages, ARuleThatCannotBeJudgedIsNotSaved) {
  addRow("alarmRulesTable", {{0, "Far"}, {1, "destination"}});  // to nowhere
  expectRefused("Far");
  EXPECT_TRUE(alarms::loadRules(desktop.document->database()).empty());
}

TEST_F(WatchPages, AReportByMailIsKeptWithItsNextTime) {
  desktop.clock.time = *base::DateTime::fromParts(2024, 4, 15, 12);
  addRow("schedulesTable",
         {{0, "Month"}, {2, "Month page"}, {3, "Last month"}, {4, "1"}, {5, "06:30"}, {6, "ana@example.com"}});
  click(*sheet, "apply");
  const auto stored = schedule::ScheduleTable(desktop.document->database()).find("month");
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->folder, schedule::kMonthPage);
  EXPECT_EQ(stored->period, "last-month");
  EXPECT_EQ(stored->user, "admin");
  EXPECT_EQ(stored->nextRun, *base::DateTime::fromParts(2024, 5, 1, 6, 30));

  auto& view = child<QTableView>(*sheet, "schedulesTable");
  EXPECT_EQ(view.model()->index(0, 13).data().toString(), "01.05.2024 06:30");
  EXPECT_FALSE(view.model()->setData(view.model()->index(0, 6), "ana@example.com\nBcc: x@example.com", Qt::EditRole));
  // No mail server is set yet.
  view.setCurrentIndex(view.model()->index(0, 0));
  const Script script({acknowledge("Month was not sent")});
  click(*sheet, "runSchedule");
}

TEST_F(WatchPages, AReportThatCannotBeSentIsNotSaved) {
  addRow("schedulesTable", {{0, "Odd"}, {4, "someday"}, {6, "ana@example.com"}});
  expectRefused("Odd");
  EXPECT_TRUE(schedule::ScheduleTable(desktop.document->database()).all().empty());
}

TEST_F(WatchPages, TheMailServersPasswordStaysOnThisMachineForItsOwnerAlone) {
  child<QLineEdit>(*sheet, "mailServer").setText("mail.example.com");
  child<QLineEdit>(*sheet, "mailFrom").setText("tallybook@example.com");
  child<QLineEdit>(*sheet, "mailUser").setText("tallybook");
  child<QLineEdit>(*sheet, "mailPassword").setText("hidden");
  click(*sheet, "apply");
  EXPECT_EQ(desktop.setting("Mail", "Server"), "mail.example.com");
  EXPECT_EQ(desktop.setting("Mail", "Password"), "hidden");
  EXPECT_EQ(desktop.value("select count(*) from Config where Path like '*Mail*'"), "0");
  struct stat status {};
  ASSERT_EQ(::stat(desktop.storeFile().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
  EXPECT_TRUE(child<QLineEdit>(*sheet, "mailPassword").text().isEmpty());

  child<QLineEdit>(*sheet, "mailFrom").setText("nobody");
  expectRefused("nobody");
  EXPECT_EQ(desktop.setting("Mail", "From"), "tallybook@example.com");
}

TEST_F(WatchPages, ATestMailThatDoesNotGoSaysWhy) {
  child<QLineEdit>(*sheet, "mailServer").setText("localhost");
  child<QLineEdit>(*sheet, "mailFrom").setText("tallybook@example.com");
  child<QComboBox>(*sheet, "mailEncryption").setCurrentIndex(2);
  child<QSpinBox>(*sheet, "mailPort").setValue(1);  // where nothing listens
  {
    const Script script({acknowledge("Enter the address")});
    click(*sheet, "mailTest");
  }
  child<QLineEdit>(*sheet, "mailTestTo").setText("ana@example.com");
  const Script script({acknowledge("localhost")});
  click(*sheet, "mailTest");
}

TEST_F(WatchPages, APriceListIsTriedThenTakenOver) {
  desktop.clock.time = *base::DateTime::fromParts(2024, 4, 15, 12);
  desktop.files.writeMonitorFile(sampleRecords(2));
  desktop.document->smdr().importMonitorFile();
  std::ofstream(desktop.path("prices.csv")) << "prefix;name;price\n+4021;Bucharest;0,20\n0033;France;0,50\n";
  child<QLineEdit>(*sheet, "priceFile").setText(QString::fromStdString(desktop.path("prices.csv")));
  child<QComboBox>(*sheet, "priceProfile").setEditText("Normal");
  child<QComboBox>(*sheet, "priceCurrency").setCurrentText("EUR");
  child<QLineEdit>(*sheet, "priceIncrement").setText("60/60");
  child<QDateEdit>(*sheet, "priceFrom").setDate(QDate(2024, 5, 1));
  EXPECT_FALSE(child<QAbstractButton>(*sheet, "priceTake").isEnabled());
  click(*sheet, "priceTry");
  const std::string profiles = "select count(*) from profiles";
  jet::Database& tariffs = desktop.document->smdr().tariffs()->database();
  EXPECT_EQ(tariffs.openSnapshot(profiles).at(0, 0).toLong(), 1) << "a trial";
  const auto& changes = *child<QTableView>(*sheet, "priceChanges").model();
  const auto kindOf = [&changes](const QString& prefix) {
    for (int row = 0; row < changes.rowCount(); ++row) {
      if (changes.index(row, 1).data() == prefix) return ui::fromQt(changes.index(row, 0).data().toString());
    }
    return std::string("not there");
  };
  EXPECT_EQ(kindOf("004021"), "dearer");
  EXPECT_EQ(kindOf("0033"), "added");
  // Two calls of two minutes at 0.10 EUR of 5 RON; the list doubles it.
  EXPECT_TRUE(child<QLabel>(*sheet, "priceSummary").text().contains("cost 2.00"))
      << child<QLabel>(*sheet, "priceSummary").text().toStdString();
  EXPECT_TRUE(child<QLabel>(*sheet, "priceSummary").text().contains("cost 4.00 (+100.0%)"));
  {
    const Script script({[](QDialog& dialog) { click(dialog, "yes"); }, acknowledge("was taken over")});
    click(*sheet, "priceTake");
  }
  EXPECT_EQ(tariffs.openSnapshot(profiles).at(0, 0).toLong(), 2);
  // The tables of the sheet show it, and nothing waits to be saved.
  EXPECT_EQ(child<QTableView>(*sheet, "profilesTable").model()->rowCount(), 2);
  EXPECT_FALSE(child<QAbstractButton>(*sheet, "priceTake").isEnabled());
  const Script nothingAsks({});
  sheet->reject();
}

TEST_F(WatchPages, AFileThatIsNoPriceListIsTold) {
  std::ofstream(desktop.path("prices.csv")) << "what;ever\n1;2\n";
  child<QLineEdit>(*sheet, "priceFile").setText(QString::fromStdString(desktop.path("prices.csv")));
  child<QComboBox>(*sheet, "priceProfile").setEditText("Normal");
  const Script script({[](QDialog& dialog) {
    EXPECT_FALSE(dialog.property("text").toString().isEmpty());
    click(dialog, "ok");
  }});
  click(*sheet, "priceTry");
  EXPECT_FALSE(child<QAbstractButton>(*sheet, "priceTake").isEnabled());
}

TEST_F(WatchPages, WorkingHoursAreCheckedBeforeTheyAreSaved) {
  auto& hours = child<QLineEdit>(*sheet, "WorkingHours");
  EXPECT_EQ(hours.text(), "Mon-Fri 08:00-18:00");
  hours.setText("always");
  expectRefused("always");
  hours.setText("Mon-Sun 09:00-17:00");
  click(*sheet, "apply");
  EXPECT_EQ(desktop.app->config().ReadConfigString("WorkingHours", "Calls", foundation::StoreDatabase, ""),
            "Mon-Sun 09:00-17:00");
}

}  // namespace
