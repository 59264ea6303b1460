#include "ui/main_frame.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

#include "folders/numbers.h"
#include "frame.h"
#include "ui/chart_view.h"
#include "ui/command_handler.h"
#include "ui/login_dialogs.h"
#include "ui/settings/settings_sheet.h"

namespace {

using namespace support;

TEST_F(MainFrameTest, AnImportShowsItsCallsAndSaysHowMany) {
  EXPECT_EQ(rows(), 3);
  desktop.files.writeMonitorFile(callTo("7654321", 5));
  action("IDS_ACTION_IMPORT").trigger();
  EXPECT_EQ(rows(), 4);
  EXPECT_EQ(child<QLabel>("messagePane").text(), "Calls imported: 1");
  action("IDS_ACTION_IMPORT").trigger();
  EXPECT_TRUE(child<QLabel>("messagePane").text().startsWith("No new calls in ")) << "who asked gets an answer";
  EXPECT_TRUE(child<QLabel>("countPane").text().startsWith("4 ")) << ui::fromQt(child<QLabel>("countPane").text());
}

TEST_F(MainFrameTest, AClickOnAHeadingSortsAndASecondOneTurnsTheOrder) {
  clickHeading(kKindDuration);
  EXPECT_EQ(cell(0, kKindDuration), "00:00:30");
  clickHeading(kKindDuration);
  EXPECT_EQ(cell(0, kKindDuration), "00:03:20");
}

TEST_F(MainFrameTest, FilteringByTheCurrentValueNarrowsTheListUntilTheFilterIsSwitchedOff) {
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  ASSERT_EQ(cell(2, kKindNumber), "9999999");
  EXPECT_EQ(action("IDS_ACTION_FILTER_VALUE").text(), "&Only this number: 9999999");
  action("IDS_ACTION_FILTER_VALUE").trigger();
  EXPECT_EQ(rows(), 1);
  EXPECT_TRUE(action("IDS_ACTION_FILTER_ON").isChecked());
  EXPECT_TRUE(child<QTextEdit>("filterPane").toPlainText().contains("9999999"));
  action("IDS_ACTION_FILTER_ON").trigger();
  EXPECT_EQ(rows(), 3);
  EXPECT_FALSE(action("IDS_ACTION_FILTER_ON").isChecked());
}

TEST_F(MainFrameTest, AStatisticDrawsItsRowsAndLeadsToTheirCalls) {
  EXPECT_FALSE(child<ui::ChartView>("chart").isVisibleTo(frame.get()));
  frame->selectFolder(kExtensions);
  ASSERT_EQ(rows(), 1);
  const auto& bars = child<ui::ChartView>("chart").bars();
  ASSERT_EQ(bars.size(), 1U);
  EXPECT_TRUE(bars[0].caption.startsWith("201"));
  EXPECT_TRUE(action("IDS_ACTION_SUMMARY").isEnabled());
  list().setCurrentIndex(list().model().index(0, 0));
  action("IDS_ACTION_SHOW_CALLS").trigger();
  EXPECT_EQ(list().folderId(), kCalls);
  EXPECT_EQ(rows(), 3);
}

// Every statistic leads to exactly the calls that it counted, whatever the filter could ask for.
TEST_F(MainFrameTest, TheCallsBehindARowAreThoseThatItCounts) {
  desktop.document->database().execute("update Calls set Name = 'O''Neil', Area = null where DialNumber = '9999999'");
  for (const folders::FolderDefinition& folder : folders::standardFolders()) {
    if (!folders::isStatistic(folder)) continue;
    frame->selectFolder(folder.id);
    const int groups = rows();
    ASSERT_GT(groups, 0) << folder.id;
    int calls = 0;
    for (int row = 0; row < groups; ++row) {
      list().setCurrentIndex(list().model().index(row, 0));
      const std::string counted = cell(row, kKindCount);
      action("IDS_ACTION_SHOW_CALLS").trigger();
      ASSERT_EQ(list().folderId(), kCalls);
      EXPECT_EQ(std::to_string(rows()), counted) << folder.id << " row " << row;
      calls += rows();
      child<QPushButton>("back").click();
      ASSERT_EQ(list().folderId(), folder.id);
      EXPECT_EQ(list().currentIndex().row(), row);
    }
    EXPECT_EQ(calls, 3) << folder.id;
  }
}

TEST_F(MainFrameTest, AnAxisOfTimeHasAPlaceForEveryHourAndABarLeadsToItsCalls) {
  constexpr int kHours = 116;
  frame->selectFolder(kHours);
  auto& chart = child<ui::ChartView>("chart");
  ASSERT_EQ(chart.bars().size(), 24U);
  EXPECT_EQ(chart.bars()[3].caption, "03:00 - 03:59");
  const auto hour = std::ranges::find_if(chart.bars(), [](const auto& bar) { return bar.position == 0; });
  ASSERT_NE(hour, chart.bars().end());
  frame->show();
  chart.setFocus();
  chart.grab();  // bars have their places when they were drawn
  for (auto bar = chart.bars().begin(); bar <= hour; ++bar) QTest::keyClick(&chart, Qt::Key_Right);
  QTest::keyClick(&chart, Qt::Key_Return);
  EXPECT_EQ(list().folderId(), kCalls);
  EXPECT_EQ(rows(), 3);
}

TEST_F(MainFrameTest, ALetterGoesToTheNextRowThatBeginsWithIt) {
  clickHeading(kKindDuration);
  select(0, kKindNumber);
  QTest::keyClicks(&list(), "99");
  EXPECT_EQ(cell(list().currentIndex().row(), kKindNumber), "9999999");
  QTest::keyClicks(&list(), "3");  // no row begins with 993
  EXPECT_EQ(cell(list().currentIndex().row(), kKindNumber), "9999999");
}

TEST_F(MainFrameTest, AnEmptyListSaysWhy) {
  desktop.document->database().execute("delete from Calls");
  frame->reloadFolder();
  EXPECT_TRUE(list().emptyText().startsWith("No calls yet"));
  action("IDS_ACTION_THIS_MONTH").trigger();
  EXPECT_TRUE(list().emptyText().contains("filter is on"));
}

TEST_F(MainFrameTest, TheCallsBehindARowStayNarrowedUntilAllAreAskedFor) {
  frame->selectFolder(kNumbers);
  list().setCurrentIndex(list().model().index(0, 0));
  action("IDS_ACTION_SHOW_CALLS").trigger();
  const int shown = rows();
  EXPECT_LT(shown, 3);
  action("IDS_ACTION_REFRESH").trigger();
  clickHeading(kKindDuration);
  EXPECT_EQ(rows(), shown);
  EXPECT_FALSE(child<QFrame>("narrowingBar").isHidden());
  child<QPushButton>("allCalls").click();
  EXPECT_EQ(rows(), 3);
  EXPECT_TRUE(child<QFrame>("narrowingBar").isHidden());
}

TEST_F(MainFrameTest, TheCurrentCallStaysCurrentWhenNewerOnesCome) {
  select(0, kKindNumber);
  const std::string number = cell(0, kKindNumber);
  exchange::CallRecord later = sampleCall("7654321");
  later.year += 1;
  desktop.files.writeMonitorFile(exchange::encodeRecord(later, false, 1252));
  frame->importCalls();
  EXPECT_EQ(cell(0, kKindNumber), "7654321");
  EXPECT_EQ(list().currentIndex().row(), 1);
  EXPECT_EQ(cell(1, kKindNumber), number);
}

TEST_F(MainFrameTest, SelectedCallsAreSummedInTheStatusBar) {
  action("IDS_ACTION_TOTALS").trigger();
  EXPECT_TRUE(child<QLabel>("messagePane").text().startsWith("Total cost: "))
      << child<QLabel>("messagePane").text().toStdString();
  EXPECT_TRUE(child<QLabel>("messagePane").text().endsWith("00:04:51"));
  clickHeading(kKindDuration);
  list().selectRow(0);
  list().selectionModel()->select(list().model().index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
  EXPECT_TRUE(list().selectionTotals().contains("Duration 00:01:31")) << ui::fromQt(list().selectionTotals());
  EXPECT_TRUE(child<QLabel>("countPane").text().contains("2 selected"));
}

TEST_F(MainFrameTest, ContactsAreAListOfTheirOwn) {
  desktop.document->database().execute("delete from Contacts");
  contacts::CONTACTENTRYDESC contact;
  contact.name = "Ana Pop";
  contact.telView = "3456789";
  desktop.document->contactBook().add(contact);
  frame->selectFolder(folders::FolderContacts);
  ASSERT_EQ(rows(), 1);
  EXPECT_EQ(cell(0, kKindContactName), "Ana Pop");
  list().setCurrentIndex(list().model().index(0, 0));
  {
    const Script script({[](QDialog& dialog) {
      support::child<QLineEdit>(dialog, "name").setText("Ana Popescu");
      click(dialog, "ok");
    }});
    action("IDS_ACTION_EDIT").trigger();
  }
  EXPECT_EQ(cell(0, kKindContactName), "Ana Popescu");
  list().setCurrentIndex(list().model().index(0, 0));
  action("IDS_ACTION_DELETE").trigger();
  EXPECT_EQ(rows(), 0);
}

TEST_F(MainFrameTest, AHiddenNumberMarksItsCalls) {
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  action("IDS_ACTION_HIDE_NUMBER").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Calls where Hidden"), "1");
  clickHeading(kKindDuration);
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  action("IDS_ACTION_SHOW_NUMBER").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Calls where Hidden"), "0");
}

TEST_F(MainFrameTest, CommandsAreOfferedWhereTheyMakeSense) {
  select(0, kKindNumber);
  EXPECT_TRUE(action("IDS_ACTION_HIDE_NUMBER").isEnabled());
  EXPECT_FALSE(action("IDS_ACTION_NEW").isEnabled());
  EXPECT_FALSE(action("IDS_ACTION_SUMMARY").isEnabled());
  frame->selectFolder(kUsers);
  EXPECT_TRUE(action("IDS_ACTION_NEW").isEnabled());
  list().setCurrentIndex(list().model().index(0, 0));
  EXPECT_TRUE(action("IDS_ACTION_EDIT").isEnabled());
  EXPECT_FALSE(action("IDS_ACTION_HIDE_NUMBER").isEnabled());
}

TEST_F(MainFrameTest, TheUserOfTheSessionAndTheLastAdministratorsStay) {
  frame->selectFolder(kUsers);
  list().setCurrentIndex(list().model().index(0, 0));
  action("IDS_ACTION_DELETE").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Users"), "1");
  EXPECT_EQ(desktop.person.messages.back(), desktop.app->language().Translate("IDS_DELETE_SELF"));
  frame->selectFolder(kGroups);
  list().setCurrentIndex(list().model().index(0, 0));
  action("IDS_ACTION_DELETE").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Groups"), "1");
  EXPECT_EQ(desktop.person.messages.back(), desktop.app->language().Translate("IDS_LAST_ADMINISTRATOR"));
}

TEST_F(MainFrameTest, MovedAndHiddenColumnsAreKeptForTheNextOpening) {
  list().horizontalHeader()->moveSection(0, 3);
  const int second = list().model().kindOf(1);
  list().saveLayout();
  frame->selectFolder(kExtensions);
  frame->selectFolder(kCalls);
  EXPECT_EQ(list().model().kindOf(0), second);
  EXPECT_EQ(list().model().kindOf(3), kKindNumber);
}

TEST_F(MainFrameTest, AnExtensionsNewDepartmentIsThatOfItsNextCall) {
  ui::SettingsSheet sheet(*desktop.document, *desktop.texts);
  auto& table = support::child<QTableView>(sheet, "extensionsTable");
  ASSERT_TRUE(table.model()->setData(table.model()->index(0, 2), "Marketing", Qt::EditRole));
  sheet.accept();
  desktop.files.writeMonitorFile(callTo("7654321", 5));
  frame->importCalls();
  clickHeading(kKindDuration);
  EXPECT_EQ(cell(0, kKindDepartment), "Marketing");
  EXPECT_EQ(cell(1, kKindDepartment), "Sales");
}

TEST_F(MainFrameTest, ThePriceTesterExplainsAPrice) {
  ui::SettingsSheet sheet(*desktop.document, *desktop.texts);
  QTest::keyClicks(&support::child<QLineEdit>(sheet, "testerNumber"), "3456789");
  support::child<QComboBox>(sheet, "testerTrunk").setEditText("5");
  support::child<QSpinBox>(sheet, "testerDuration").setValue(61);
  support::click(sheet, "testerCalculate");
  EXPECT_TRUE(support::child<QPlainTextEdit>(sheet, "testerSteps").toPlainText().contains("Telco"));
}

TEST(Language, WindowsAreInTheLanguageOfTheWorkstation) {
  Desktop desktop("RO");
  ASSERT_TRUE(desktop.started);
  ui::SettingsSheet sheet(*desktop.document, *desktop.texts);
  EXPECT_EQ(sheet.windowTitle(), "Setări");
  EXPECT_EQ(sheet.pages().front().caption, "Interioare");
}

TEST(Language, EntriesOfTheLogAreToldInTheOneInUse) {
  Desktop desktop("RO");
  ASSERT_TRUE(desktop.started);
  desktop.document->log().WriteLog(security::LogSecurity, "User %s changed the password", "ana");
  desktop.document->log().WriteLog(security::LogError, "%s", "nobody translates this");
  folders::FolderView log(*folders::findFolder(folders::FolderLog), desktop.document->folderServices(),
                          desktop.document->valueFormatter());
  std::set<std::string> told;
  for (const std::vector<std::string>& row : log.rows(0, 10)) told.insert(row.begin(), row.end());
  EXPECT_TRUE(told.contains("Utilizatorul ana și-a schimbat parola")) << testing::PrintToString(told);
  EXPECT_TRUE(told.contains("nobody translates this"));
}

TEST(FolderModel, AWindowOverALongFolderShowsTheSameRecordsWhereverItStands) {
  Desktop desktop;
  ASSERT_TRUE(desktop.started);
  desktop.files.writeMonitorFile(sampleRecords(300));
  desktop.document->smdr().importMonitorFile();
  constexpr std::int64_t kWindow = 100;
  ui::FolderModel model(nullptr, kWindow);
  model.setFolder(std::make_unique<folders::FolderView>(
      *folders::findFolder(kCalls), desktop.document->folderServices(), desktop.document->valueFormatter()));
  // As the list does: after a page that was slow to read, the next one is read a moment later.
  QObject::connect(&model, &ui::FolderModel::pageMissed, &model, &ui::FolderModel::readPage, Qt::QueuedConnection);
  constexpr int kKindPulses = 428;
  const auto pulses = [&](int row) { return model.text(row, model.columnOf(kKindPulses)).toInt(); };
  ASSERT_EQ(model.totalRows(), 300);
  ASSERT_EQ(model.rowCount(), kWindow);
  const QPersistentModelIndex marked(model.index(90, 0));
  model.moveWindow(50);
  EXPECT_TRUE(QTest::qWaitFor([&] { return pulses(0) == 50; }));
  EXPECT_EQ(marked.row(), 40);
  model.moveWindow(1000);
  EXPECT_EQ(model.windowStart(), 200);
  EXPECT_TRUE(QTest::qWaitFor([&] { return pulses(99) == 299; }));
  EXPECT_FALSE(marked.isValid());
}

// Logging in through the dialog, over the files of a small exchange.
class LoginTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(first.started);
    security::UserRecord ana;
    ana.Name = "ana";
    ana.Groups = ";1;";
    ASSERT_EQ(first.document->users().SaveUser(ana, "secret"), security::SaveResult::Saved);
    first.document->OnCloseDocument();
    foundation::MachineStore machine(first.storeFile());
    machine.erase("general", "AutoLoginUser");
  }

  // Starts a second copy; the script answers its dialogs.
  bool start(std::vector<Script::Step> steps) {
    const Script script(std::move(steps));
    return document.OnNewDocument(server::StartDuties{.maintain = false, .outputPort = false});
  }
  static Script::Step logIn(const char* name, const char* password) {
    return [=](QDialog& dialog) {
      support::child<QLineEdit>(dialog, "userName").setText(name);
      support::child<QLineEdit>(dialog, "password").setText(password);
      click(dialog, "ok");
    };
  }

  Desktop first;
  foundation::MachineStore store{first.storeFile()};
  foundation::ConfigManager settings{store};
  ui::QtLoginPrompt prompt{settings, [this]() -> const foundation::LanguageFile& { return first.app->language(); }};
  ScriptedOperator person;
  server::CServerApp app{first.storeFile(), TALLYBOOK_BINARY_DIR,
                         server::Surroundings{person, prompt, first.clock, first.documents, {}}};
  bool ready = app.InitInstance("", server::CServerApp::OneCopy::Shared) == server::CServerApp::Start::Ready;
  server::CServerDoc document{app};
};

TEST_F(LoginTest, TheRightPasswordOpensAndTheNameIsProposedNextTime) {
  EXPECT_TRUE(start({logIn("ana", "secret")}));
  EXPECT_EQ(document.user().CurrentUserName, "ana");
  EXPECT_EQ(first.setting("general", "LastUser"), "ana");
}

TEST_F(LoginTest, ThreeWrongPasswordsEndTheStart) {
  EXPECT_FALSE(start({logIn("ana", "x"), logIn("ana", "y"), logIn("nobody", "secret")}));
  EXPECT_EQ(person.messages.size(), 3U);
}

TEST_F(LoginTest, AnExpiredPasswordIsChangedBeforeTheStartGoesOn) {
  {
    const auto main = jet::openDatabase(first.files.folder / schema::kMainFile, jet::OpenMode::ReadWrite);
    main->execute("update Groups set PasswordExpire = 30");
    main->execute("update Users set PasswordDate = #1/1/2024# where Name = 'ana'");
  }
  EXPECT_TRUE(start({logIn("ana", "secret"), [](QDialog& dialog) {
                       support::child<QLineEdit>(dialog, "current").setText("secret");
                       support::child<QLineEdit>(dialog, "wanted").setText("better");
                       support::child<QLineEdit>(dialog, "repeated").setText("better");
                       click(dialog, "ok");
                     }}));
  EXPECT_EQ(document.user().passwordDigest, security::PasswordDigest("better"));
}

}  // namespace
