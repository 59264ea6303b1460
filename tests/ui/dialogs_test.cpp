#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSet>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>
#include <QTimeEdit>

#include "desktop.h"
#include "folders/catalogue.h"
#include "security/restriction.h"
#include "security/rights.h"
#include "ui/dialogs.h"

namespace {

using namespace support;

class DialogsTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(desktop.started) << testing::PrintToString(desktop.person.messages); }

  server::CServerDoc& document() { return *desktop.document; }
  const ui::Texts& texts() { return *desktop.texts; }
  // Records of the sample exchange's calls.
  void importCalls(int count) {
    desktop.files.writeMonitorFile(sampleRecords(count));
    document().smdr().importMonitorFile();
  }

  Desktop desktop;
};

Script::Step clickStep(const char* name) {
  return [name](QDialog& dialog) { click(dialog, name); };
}
// Expects a message that holds the text, and answers it.
Script::Step messageStep(const char* text, const char* answer = "ok") {
  return [text, answer](QDialog& dialog) {
    EXPECT_TRUE(dialog.property("text").toString().contains(text)) << dialog.property("text").toString().toStdString();
    click(dialog, answer);
  };
}
void type(QDialog& dialog, const char* name, const char* text) {
  auto& line = child<QLineEdit>(dialog, name);
  line.selectAll();
  QTest::keyClicks(&line, text);
}
void typeChoice(QDialog& dialog, const char* name, const char* text) {
  QLineEdit& line = *child<QComboBox>(dialog, name).lineEdit();
  line.selectAll();
  QTest::keyClicks(&line, text);
}

TEST_F(DialogsTest, TheFilterDialogWritesWhatWasEntered) {
  Script script({[](QDialog& dialog) {
    child<QCheckBox>(dialog, "onFilter").setChecked(true);
    child<QCheckBox>(dialog, "hidden").setChecked(true);
    child<QCheckBox>(dialog, "onOutgoing").setChecked(true);
    typeChoice(dialog, "extension", "201");
    typeChoice(dialog, "trunk", "5");
    typeChoice(dialog, "area", "local");
    type(dialog, "name", "!Pop");
    type(dialog, "numberPrefix", "0744");
    child<QSpinBox>(dialog, "minDuration").setValue(30);
    child<QDateEdit>(dialog, "periodStart").setDate({2024, 2, 1});
    child<QDateEdit>(dialog, "periodEnd").setDate({2024, 2, 29});
    // A value entered is a value that counts.
    for (const char* on : {"on_extension", "on_trunk", "on_area", "on_name", "onPeriod", "onMinDuration"}) {
      EXPECT_TRUE(child<QCheckBox>(dialog, on).isChecked()) << on;
    }
    click(dialog, "ok");
  }});
  EXPECT_TRUE(ui::editCallFilter(document(), texts(), nullptr));
  EXPECT_EQ(
      document().callFilter().condition(),
      " not Hidden AND Incoming=1 AND (Extension='201') AND (Trunk=5) AND (Name NOT LIKE 'Pop*' or Name IS NULL) "
      "AND (Area='' or Area is null) AND (DateTime >= #02/01/2024 00:00:00# and DateTime <= #02/29/2024 23:59:59#)"
      " AND  (DialNumber LIKE \"0744*\") AND  (TotalTime>=30)");
  // The description names the extension as the list did.
  EXPECT_EQ(desktop.setting("Denumire", "Interior"), "201 (Desk)");
}

TEST_F(DialogsTest, TheFilterDialogShowsWhatIsStoredAndConfirmingChangesNothing) {
  filter::FilterSettings stored;
  stored.onFilter = 1;
  stored.onExtension = 2;  // acts only when it is 1
  stored.onClient = 2;     // acts on anything
  stored.extension = "201";
  stored.client = "Ana";
  stored.onAccount = 1;
  stored.account = "12??";
  stored.accountName = "12?? (Project)";
  stored.onArea = 1;
  stored.onPeriod = 1;
  stored.intervalStart = "03/01/2024 08:30:15";
  stored.intervalEnd = "03/31/2024 23:59:59";
  ASSERT_TRUE(document().callFilter().write(stored));
  const std::string before = document().callFilter().condition();
  Script script({[](QDialog& dialog) {
    EXPECT_FALSE(child<QCheckBox>(dialog, "on_extension").isChecked());
    EXPECT_TRUE(child<QCheckBox>(dialog, "on_client").isChecked());
    EXPECT_EQ(child<QComboBox>(dialog, "area").currentText(), "Local");
    EXPECT_EQ(child<QDateEdit>(dialog, "periodStart").text(), "01/Mar/2024");
    EXPECT_EQ(child<QTimeEdit>(dialog, "periodStartTime").text(), "08:30");
    click(dialog, "ok");
  }});
  EXPECT_TRUE(ui::editCallFilter(document(), texts(), nullptr));
  EXPECT_EQ(document().callFilter().condition(), before);
  EXPECT_EQ(desktop.setting("Calls", "ContName"), "12?? (Project)");
}

TEST_F(DialogsTest, TheFilterDialogHasItsOwnDefaultPeriod) {
  Script script({[](QDialog& dialog) {
    EXPECT_EQ(child<QDateEdit>(dialog, "periodStart").text(), "01/Jan/2001");
    EXPECT_EQ(child<QDateEdit>(dialog, "periodEnd").text(), "31/Dec/2002");
    EXPECT_EQ(child<QTimeEdit>(dialog, "periodEndTime").text(), "23:59");
    click(dialog, "cancel");
  }});
  EXPECT_FALSE(ui::editCallFilter(document(), texts(), nullptr));
  EXPECT_EQ(desktop.setting("Calls", "OnFilter"), "not stored");
}

TEST_F(DialogsTest, TheFilterDialogOffersAreasClientsAndTheClientsFolders) {
  document().database().execute("insert into Calls (Area, owner, Folder) values ('Cluj', 'Ana', 'A')");
  document().database().execute("insert into Calls (Area, owner, Folder) values ('Arad', 'Ion', 'B')");
  Script script({[](QDialog& dialog) {
    const auto offered = [&](const char* name) {
      auto& box = child<QComboBox>(dialog, name);
      QTest::keyClick(&box, Qt::Key_F4);
      box.hidePopup();
      QStringList entries;
      for (int i = 0; i < box.count(); ++i) entries << box.itemText(i);
      return entries.join('|');
    };
    EXPECT_EQ(offered("area"), "Local|Arad|Cluj");
    EXPECT_EQ(offered("client"), "Ana|Ion");
    typeChoice(dialog, "client", "Ion");
    EXPECT_EQ(offered("folder"), "B");
    typeChoice(dialog, "client", "Ana");
    EXPECT_EQ(offered("folder"), "A");
    click(dialog, "cancel");
  }});
  ui::editCallFilter(document(), texts(), nullptr);
}

TEST_F(DialogsTest, AFilterThatWouldLiftTheUsersRestrictionIsRefused) {
  document().user().SQLSubquery = "Department='Sales'";
  Script script({[](QDialog& dialog) {
                   child<QCheckBox>(dialog, "onFilter").setChecked(true);
                   typeChoice(dialog, "client", "x') OR (1=1");
                   click(dialog, "ok");
                   EXPECT_TRUE(dialog.isVisible());
                   click(dialog, "cancel");
                 },
                 clickStep("ok")});
  EXPECT_FALSE(ui::editCallFilter(document(), texts(), nullptr));
  EXPECT_EQ(desktop.setting("Calls", "Client"), "not stored");
}

TEST_F(DialogsTest, WorkOnAllCallsIsRefusedToWhoSeesAPart) {
  document().user().SQLSubquery = "Department='Sales'";
  EXPECT_THROW(ui::updateStoredCalls(document(), texts(), nullptr), security::RestrictedUserError);
  EXPECT_THROW(ui::convertOldDatabase(document(), texts(), nullptr), security::RestrictedUserError);
}

TEST_F(DialogsTest, TheLogFilterDialogWritesTheFilterOfTheLog) {
  Script script({[](QDialog& dialog) {
    click(dialog, "LogFilt_Security");
    click(dialog, "LogFilt_Err");
    typeChoice(dialog, "LogFilt_User", "adm");
    click(dialog, "ok");
  }});
  EXPECT_TRUE(ui::editLogFilter(document(), texts(), nullptr));
  EXPECT_EQ(document().log().BuildLogFilter(), "( Level = 2  OR  Level = 9 ) AND  UserName = \"adm\" ");
}

TEST_F(DialogsTest, CurrenciesAreEditedAsACopy) {
  document().app().config().WriteConfigInt(7, "LastCurrencyID", "general", foundation::StoreDatabase);
  const std::string main = document().currencies().Default().name;
  Script script({[&main](QDialog& dialog) {
    auto& list = child<QTableWidget>(dialog, "list");
    ASSERT_EQ(list.rowCount(), 2);
    EXPECT_EQ(list.item(0, 3)->text(), "Yes");
    list.setCurrentCell(1, 0);
    EXPECT_EQ(child<QLabel>(dialog, "rateLabel").text(), "1 EUR =");
    EXPECT_EQ(list.item(1, 1)->text(), "5.0000");
    child<QDoubleSpinBox>(dialog, "rate").setValue(4.975);
    EXPECT_EQ(list.item(1, 2)->text(), "04/03/2024");  // today
    click(dialog, "add");
    type(dialog, "name", "HUF");
    child<QDoubleSpinBox>(dialog, "rate").setValue(80);
    click(dialog, "reverse");
    EXPECT_EQ(child<QLabel>(dialog, "rateLabel").text(), QString("1 %1 =").arg(QString::fromStdString(main)));
    click(dialog, "ok");
  }});
  EXPECT_TRUE(ui::editCurrencies(document(), texts(), nullptr));
  EXPECT_DOUBLE_EQ(document().currencies().rate("EUR"), 4.975);
  EXPECT_DOUBLE_EQ(document().currencies().Convert(800, "HUF"), 10);
  EXPECT_EQ(desktop.value("select CurrencyID from Currency where Name='HUF'"), "7");
}

TEST_F(DialogsTest, CurrenciesThatAnotherCopyChangedAreNotOverwrittenUnasked) {
  const auto editRate = [this](const char* another) {
    return [this, another](QDialog& dialog) {
      const auto copy = jet::openDatabase(document().database().path(), jet::OpenMode::ReadWrite);
      copy->execute(std::string("update Currency set Ratio = ") + another + " where Name = 'EUR'");
      child<QTableWidget>(dialog, "list").setCurrentCell(1, 0);
      child<QDoubleSpinBox>(dialog, "rate").setValue(4);
      click(dialog, "ok");
      if (dialog.isVisible()) click(dialog, "cancel");
    };
  };
  {
    Script script({editRate("6"), messageStep("Another workstation", "no"), messageStep("not saved yet", "yes")});
    EXPECT_FALSE(ui::editCurrencies(document(), texts(), nullptr));
    EXPECT_EQ(document().currencies().rate("EUR"), 6);
  }
  Script script({editRate("7"), messageStep("Another workstation", "yes")});
  EXPECT_TRUE(ui::editCurrencies(document(), texts(), nullptr));
  EXPECT_EQ(desktop.value("select Ratio from Currency where Name='EUR'"), "4");
}

TEST_F(DialogsTest, ACurrencyWithoutACodeIsNotSaved) {
  Script script({[](QDialog& dialog) {
                   click(dialog, "add");
                   click(dialog, "ok");
                   EXPECT_TRUE(dialog.isVisible());
                   click(dialog, "cancel");
                 },
                 messageStep("has no code"), messageStep("not saved yet", "yes")});
  EXPECT_FALSE(ui::editCurrencies(document(), texts(), nullptr));
  EXPECT_EQ(document().currencies().entries.size(), 2U);
}

TEST_F(DialogsTest, CurrentRatesAreOfferedWhenAnAddressIsSet) {
  foundation::MachineStore(desktop.storeFile()).writeString("general", "UrlCurrency", "https://rates.example");
  Script script({[](QDialog& dialog) {
    click(dialog, "rates");
    click(dialog, "cancel");
  }});
  ui::editCurrencies(document(), texts(), nullptr);
  EXPECT_EQ(desktop.documents.opened, std::vector<std::string>{"https://rates.example"});
}

TEST_F(DialogsTest, StoredCallsAreUpdatedOverThePeriod) {
  importCalls(3);
  ASSERT_EQ(desktop.value("select count(*) as c from Calls where TotalTime=61"), "3");
  document().database().execute("update Calls set Department='none'");
  Script script({[](QDialog& dialog) {
                   EXPECT_FALSE(child<QAbstractButton>(dialog, "ok").isEnabled());  // nothing was asked for
                   click(dialog, "department");
                   child<QSpinBox>(dialog, "addSeconds").setValue(-30);
                   click(dialog, "ok");
                 },
                 messageStep("3 calls were looked at, 3 were updated")});
  EXPECT_TRUE(ui::updateStoredCalls(document(), texts(), nullptr));
  EXPECT_EQ(desktop.value("select count(*) as c from Calls where TotalTime=31 and Department='Sales'"), "3");
  EXPECT_FALSE(desktop.person.ranges.empty());
}

TEST_F(DialogsTest, TheBillOfAnExtensionIsWrittenAndOpened) {
  importCalls(2);
  Script script({[](QDialog& dialog) {
    EXPECT_EQ(child<QComboBox>(dialog, "extension").currentText(), "201 (Desk)");
    click(dialog, "ok");
  }});
  ui::makeBill(document(), texts(), nullptr, "201");
  EXPECT_EQ(desktop.documents.opened, std::vector<std::string>{desktop.path("list.html")});
  std::ifstream page(desktop.path("list.html"));
  const std::string text((std::istreambuf_iterator<char>(page)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("00:02:02"), std::string::npos) << text;  // two calls of 61 seconds
}

// Typing takes the place of the proposed extension; a bill of nothing is no bill.
TEST_F(DialogsTest, ABillWithoutCallsSaysWhy) {
  importCalls(2);
  Script script({[](QDialog& dialog) {
                   QLineEdit& extension = *child<QComboBox>(dialog, "extension").lineEdit();
                   EXPECT_TRUE(QTest::qWaitFor([&] { return extension.hasSelectedText(); }, 2000));
                   QTest::keyClicks(&extension, "999");
                   EXPECT_EQ(extension.text(), "999");
                   click(dialog, "ok");
                   typeChoice(dialog, "extension", "201");
                   child<QDateEdit>(dialog, "periodStart").setDate({1999, 1, 1});
                   child<QDateEdit>(dialog, "periodEnd").setDate({1999, 1, 2});
                   click(dialog, "ok");
                   click(dialog, "cancel");
                 },
                 messageStep("There is no extension \"999\""),
                 messageStep("Extension 201 has no calls from 01.01.1999")});
  ui::makeBill(document(), texts(), nullptr, "201");
  EXPECT_TRUE(desktop.documents.opened.empty());
}

TEST_F(DialogsTest, ABillNeedsAnExtensionAndAPeriodInOrder) {
  Script script({[](QDialog& dialog) {
                   click(dialog, "ok");
                   typeChoice(dialog, "extension", "201");
                   child<QDateEdit>(dialog, "periodEnd").setDate({1999, 1, 1});
                   click(dialog, "ok");
                   click(dialog, "cancel");
                 },
                 messageStep("Enter the extension"), messageStep("ends before it begins")});
  ui::makeBill(document(), texts(), nullptr, "");
  EXPECT_TRUE(desktop.documents.opened.empty());
}

TEST_F(DialogsTest, AListReportIsPrintedOrStopped) {
  importCalls(600);
  folders::FolderView folder(*folders::findFolder(100), document().folderServices(), document().valueFormatter());
  ui::makeListReport(document(), texts(), nullptr, folder, ui::ReportUse::Print);
  EXPECT_EQ(desktop.documents.printed, std::vector<std::string>{desktop.path("list.html")});
  EXPECT_EQ(desktop.person.windowsClosed, desktop.person.ranges.size());

  std::filesystem::remove(desktop.path("list.html"));
  desktop.person.stopAt = 512;
  ui::makeListReport(document(), texts(), nullptr, folder, ui::ReportUse::Open);
  EXPECT_TRUE(desktop.documents.opened.empty());
  EXPECT_FALSE(std::filesystem::exists(desktop.path("list.html")));
  EXPECT_EQ(desktop.person.windowsClosed, desktop.person.ranges.size());
}

TEST_F(DialogsTest, AReportThatNoProgramOpensSaysWhereItIs) {
  importCalls(1);
  desktop.documents.answer = false;
  Script script({messageStep("list.html")});
  folders::FolderView folder(*folders::findFolder(100), document().folderServices(), document().valueFormatter());
  ui::makeListReport(document(), texts(), nullptr, folder, ui::ReportUse::Open);
}

TEST_F(DialogsTest, SummariesAreOfStatistics) {
  importCalls(1);
  folders::FolderView calls(*folders::findFolder(100), document().folderServices(), document().valueFormatter());
  folders::FolderView hours(*folders::findFolder(115), document().folderServices(), document().valueFormatter());
  Script script({messageStep("statistic")});
  ui::makeSummaryPage(document(), texts(), nullptr, calls);
  EXPECT_TRUE(desktop.documents.opened.empty());
  ui::makeSummaryPage(document(), texts(), nullptr, hours);
  EXPECT_EQ(desktop.documents.opened, std::vector<std::string>{desktop.path("summary.html")});
}

// By keyboard: the first field has the focus, Tab leaves the last one for the buttons, and fields have letters of their
// own.
TEST_F(DialogsTest, DialogsAreWalkedByKeyboard) {
  const auto walk = [](const char* first) {
    return [first](QDialog& dialog) {
      EXPECT_EQ(dialog.focusWidget()->objectName(), first) << dialog.objectName().toStdString();
      QSet<QString> letters;
      for (const auto* label : dialog.findChildren<QLabel*>()) {
        if (label->buddy() == nullptr) continue;
        const qsizetype mark = label->text().indexOf('&');
        if (mark < 0) continue;  // all of its letters stand for others
        EXPECT_FALSE(letters.contains(label->text().mid(mark + 1, 1).toLower())) << label->text().toStdString();
        letters.insert(label->text().mid(mark + 1, 1).toLower());
      }
      EXPECT_FALSE(letters.isEmpty()) << dialog.objectName().toStdString();
      EXPECT_TRUE(child<QPushButton>(dialog, "ok").isDefault()) << dialog.objectName().toStdString();
      dialog.done(QDialog::Rejected);
    };
  };
  Script script({walk("onFilter"), walk("LogFilt_Enabled"), walk("name"), walk("name"), walk("userName"),
                 walk("periodStart"), walk("oldFolder")});
  ui::editCallFilter(document(), texts(), nullptr);
  ui::editLogFilter(document(), texts(), nullptr);
  ui::searchContacts(document(), texts(), nullptr);
  ui::addContact(document(), texts(), nullptr);
  ui::editUser(document(), texts(), nullptr, "");
  ui::updateStoredCalls(document(), texts(), nullptr);
  ui::convertOldDatabase(document(), texts(), nullptr);
}

TEST_F(DialogsTest, AboutTellsTheVersion) {
  Script script({[](QDialog& dialog) {
    EXPECT_TRUE(child<QLabel>(dialog, "version").text().startsWith("Version "));
    click(dialog, "ok");
  }});
  ui::showAbout(document(), texts(), nullptr);
}

class ContactsSheetTest : public DialogsTest {
 protected:
  void SetUp() override {
    DialogsTest::SetUp();
    document().app().config().WriteConfigInt(10, "Next RecID", "Contacts", foundation::StoreDatabase);
    contacts::CONTACTENTRYDESC contact;
    contact.name = "Ion Pop";
    contact.organization = "Alfa";
    contact.address = "Cluj";
    recordId = document().contactBook().add(contact);
  }
  // What another workstation does to the same row.
  void byAnother(const std::string& statement) {
    RunningCopy other(desktop.files);
    other.main->execute(statement);
    other.tags.Touch("Contacts");
  }
  std::string stored(const std::string& column) {
    return desktop.value(base::format("select %s from Contacts where RecordID=%d", column, recordId));
  }

  std::int32_t recordId = 0;
};

TEST_F(ContactsSheetTest, AContactIsEdited) {
  Script script({[](QDialog& dialog) {
    type(dialog, "phones", "021 345 6789; +49 30 1234");
    child<QComboBox>(dialog, "relationship").setCurrentIndex(2);
    child<QPlainTextEdit>(dialog, "note").setPlainText("calls on Mondays");
    click(dialog, "ok");
  }});
  EXPECT_TRUE(ui::editContact(document(), texts(), nullptr, recordId));
  EXPECT_EQ(stored("Name"), "Ion Pop");
  EXPECT_EQ(stored("Tip"), "2");
  EXPECT_EQ(stored("Note"), "calls on Mondays");
  EXPECT_EQ(stored("Tel_View"), "021 345 6789; +49 30 1234");
  EXPECT_EQ(stored("Tel"), "021 345 6789");
  EXPECT_NE(stored("Tel_String").find("0040213456789"), std::string::npos);
  EXPECT_NE(stored("Tel_String").find("0049301234"), std::string::npos);
}

TEST_F(ContactsSheetTest, ClosingWithChangesAsks) {
  for (const char* answer : {"no", "yes"}) {
    Script script({[](QDialog& dialog) {
                     type(dialog, "organization", "Beta");
                     dialog.close();
                   },
                   messageStep("Do you want to save it?", answer)});
    EXPECT_EQ(ui::editContact(document(), texts(), nullptr, recordId), answer == std::string("yes"));
    EXPECT_EQ(stored("Organization"), answer == std::string("yes") ? "Beta" : "Alfa");
  }
}

TEST_F(ContactsSheetTest, AnotherCopysChangeIsTakenOverAndOwnEditsStay) {
  Script script({[this](QDialog& dialog) {
                   type(dialog, "organization", "Beta");
                   byAnother(base::format("update Contacts set Address='Iasi' where RecordID=%d", recordId));
                   click(dialog, "ok");  // refused once, since the row is another one now
                   EXPECT_EQ(child<QPlainTextEdit>(dialog, "address").toPlainText(), "Iasi");
                   EXPECT_EQ(child<QLineEdit>(dialog, "organization").text(), "Beta");
                   click(dialog, "ok");
                 },
                 messageStep("Another workstation changed this record")});
  EXPECT_TRUE(ui::editContact(document(), texts(), nullptr, recordId));
  EXPECT_EQ(stored("Address"), "Iasi");
  EXPECT_EQ(stored("Organization"), "Beta");
}

TEST_F(ContactsSheetTest, AnotherCopysChangeIsNoticedWhileTheSheetIsOpen) {
  Script script({[this](QDialog& dialog) {
                   byAnother(base::format("update Contacts set Address='Iasi' where RecordID=%d", recordId));
                   EXPECT_TRUE(QTest::qWaitFor(
                       [&] { return child<QPlainTextEdit>(dialog, "address").toPlainText() == "Iasi"; }, 5000));
                   click(dialog, "cancel");  // nothing was edited here: no question
                 },
                 messageStep("Another workstation changed this record")});
  EXPECT_FALSE(ui::editContact(document(), texts(), nullptr, recordId));
}

TEST_F(ContactsSheetTest, WhereTwoEditedTheSameFieldTheOperatorChooses) {
  for (const char* choice : {"mine", "theirs"}) {
    byAnother(base::format("update Contacts set Organization='Alfa' where RecordID=%d", recordId));
    Script script({[this](QDialog& dialog) {
                     type(dialog, "organization", "Beta");
                     byAnother(base::format("update Contacts set Organization='Gama' where RecordID=%d", recordId));
                     click(dialog, "ok");
                   },
                   [choice](QDialog& conflict) {
                     EXPECT_EQ(child<QAbstractButton>(conflict, "mine").text().remove('&'), "Mine: Beta");
                     EXPECT_EQ(child<QAbstractButton>(conflict, "theirs").text().remove('&'), "The other one: Gama");
                     click(conflict, choice);
                     QDialog& sheet = *qobject_cast<QDialog*>(conflict.parentWidget());
                     QTimer::singleShot(50, &sheet, [&sheet] { click(sheet, "ok"); });
                     click(conflict, "ok");
                   }});
    ui::editContact(document(), texts(), nullptr, recordId);
    EXPECT_EQ(stored("Organization"), choice == std::string("mine") ? "Beta" : "Gama");
  }
}

TEST_F(ContactsSheetTest, AContactDeletedByAnotherCopyCanBeKept) {
  Script script({[this](QDialog& dialog) {
                   type(dialog, "organization", "Beta");
                   byAnother(base::format("delete from Contacts where RecordID=%d", recordId));
                   click(dialog, "ok");
                 },
                 messageStep("save it as a new one", "yes")});
  EXPECT_TRUE(ui::editContact(document(), texts(), nullptr, recordId));
  EXPECT_EQ(desktop.value("select Organization from Contacts where Name='Ion Pop'"), "Beta");
}

TEST_F(ContactsSheetTest, AnUneditedContactDeletedByAnotherCopyCloses) {
  Script script({[this](QDialog&) { byAnother(base::format("delete from Contacts where RecordID=%d", recordId)); },
                 messageStep("Another workstation deleted this record.")});
  EXPECT_TRUE(ui::editContact(document(), texts(), nullptr, recordId));
}

TEST_F(ContactsSheetTest, AContactIsDeletedAfterAQuestion) {
  Script script({clickStep("delete"), messageStep("Ion Pop (Alfa)", "yes")});
  EXPECT_TRUE(ui::editContact(document(), texts(), nullptr, recordId));
  EXPECT_EQ(stored("Name"), "no row");
}

TEST_F(ContactsSheetTest, AMissingContactCannotBeEdited) {
  Script script({messageStep("cannot be opened for editing")});
  EXPECT_FALSE(ui::editContact(document(), texts(), nullptr, 4711));
}

TEST_F(ContactsSheetTest, WithoutTheRightToChangeNothingCanBeSaved) {
  document().user().rights = {{security::ObjectCalls, security::RightView}};
  Script script({[](QDialog& dialog) {
    EXPECT_FALSE(child<QAbstractButton>(dialog, "ok").isEnabled());
    EXPECT_FALSE(child<QAbstractButton>(dialog, "delete").isEnabled());
    EXPECT_TRUE(child<QLineEdit>(dialog, "name").isReadOnly());
    click(dialog, "cancel");
  }});
  EXPECT_FALSE(ui::editContact(document(), texts(), nullptr, recordId));
}

TEST_F(ContactsSheetTest, ANewContactNeedsAName) {
  Script script({[](QDialog& dialog) {
                   click(dialog, "ok");
                   type(dialog, "organization", "Gama");
                   click(dialog, "ok");
                 },
                 messageStep("Enter a name")});
  EXPECT_TRUE(ui::addContact(document(), texts(), nullptr));
  EXPECT_EQ(desktop.value("select Contact from Contacts where Organization='Gama'"), "Gama");
}

TEST_F(ContactsSheetTest, SearchListsOpensAndWritesAPage) {
  Script script({[](QDialog& dialog) {
                   EXPECT_FALSE(child<QAbstractButton>(dialog, "page").isEnabled());
                   type(dialog, "name", "alfa pop");
                   click(dialog, "ok");
                   auto& list = child<QTableWidget>(dialog, "list");
                   ASSERT_EQ(list.rowCount(), 1);
                   EXPECT_EQ(list.item(0, 0)->text(), "Ion Pop (Alfa)");
                   EXPECT_EQ(child<QLabel>(dialog, "count").text(), "1 contacts found");
                   click(dialog, "page");
                   list.setCurrentCell(0, 0);
                   emit list.cellDoubleClicked(0, 0);
                   EXPECT_EQ(list.item(0, 1)->text(), "Arad");
                   click(dialog, "cancel");
                 },
                 [](QDialog& dialog) {
                   child<QPlainTextEdit>(dialog, "address").setPlainText("Arad");
                   click(dialog, "ok");
                 }});
  ui::searchContacts(document(), texts(), nullptr);
  EXPECT_EQ(desktop.documents.opened, std::vector<std::string>{desktop.path("cautare.html")});
}

TEST_F(ContactsSheetTest, TooManyMatchesAreCutAndOptionsKept) {
  contacts::CONTACTENTRYDESC another;
  another.name = "Ion Radu";
  document().contactBook().add(another);
  document().app().config().WriteConfigInt(1, "iface_searchmaxresults", "general", foundation::StoreMachine);
  Script script({[](QDialog& dialog) {
    click(dialog, "extendedSearch");
    type(dialog, "name", "ion");
    click(dialog, "ok");
    EXPECT_EQ(child<QTableWidget>(dialog, "list").rowCount(), 1);
    EXPECT_TRUE(child<QLabel>(dialog, "count").text().contains("too many"));
    click(dialog, "cancel");
  }});
  ui::searchContacts(document(), texts(), nullptr);
  EXPECT_EQ(desktop.setting("general", "ExtendedSearch"), "1");
}

}  // namespace
