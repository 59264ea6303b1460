// What is done with rows: copied, deleted and brought back, explained, followed to a contact.

#include <QClipboard>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>

#include "folders/numbers.h"
#include "frame.h"

namespace {

using namespace support;

class ListCommands : public MainFrameTest {
 protected:
  std::int32_t addContact(const char* name, const char* number) {
    contacts::CONTACTENTRYDESC contact;
    contact.name = contact.contact = name;
    contact.telView = contact.tel = number;
    contact.telString = desktop.document->contactBook().searchedNumbers(number);
    return desktop.document->contactBook().add(contact);
  }
  void emptyContacts() { desktop.document->database().execute("delete from Contacts"); }
};

TEST_F(ListCommands, RowsAreCopiedInSeveralForms) {
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  const QClipboard& clipboard = *QApplication::clipboard();
  action("IDS_ACTION_COPY_NUMBER").trigger();
  EXPECT_EQ(clipboard.text(), "9999999");
  action("IDS_ACTION_COPY").trigger();
  EXPECT_EQ(clipboard.text().count('\n'), 1);
  action("IDS_ACTION_COPY_HEADINGS").trigger();
  EXPECT_TRUE(clipboard.text().startsWith("Number\t")) << clipboard.text().toStdString();
  action("IDS_ACTION_COPY_TABLE").trigger();
  EXPECT_TRUE(clipboard.mimeData()->html().contains("<td>9999999</td>"));
}

TEST_F(ListCommands, DeletedRecordsComeBackUntilTheProgramCloses) {
  emptyContacts();
  addContact("Ana", "0213456789");
  addContact("Ion", "0219999999");
  frame->selectFolder(folders::FolderContacts);
  list().selectAll();
  action("IDS_ACTION_DELETE").trigger();
  EXPECT_EQ(rows(), 0);
  EXPECT_EQ(desktop.person.questions.back(), desktop.app->language().TranslateFormat("IDS_CONFIRM_DELETE_MANY", 2));
  EXPECT_TRUE(action("IDS_ACTION_UNDO").text().contains("2 records"));
  action("IDS_ACTION_UNDO").trigger();
  EXPECT_EQ(rows(), 2);
  EXPECT_FALSE(action("IDS_ACTION_UNDO").isEnabled());
}

TEST_F(ListCommands, CurrenciesAreBroughtBackAsTheyWere) {
  const auto before = desktop.document->currencies().entries;
  {
    const Script script({[](QDialog& dialog) {
      click(dialog, "add");
      support::child<QLineEdit>(dialog, "name").setText("XYZ");
      emit support::child<QLineEdit>(dialog, "name").textEdited("XYZ");
      support::child<QDoubleSpinBox>(dialog, "rate").setValue(2);
      click(dialog, "ok");
    }});
    action("IDS_ACTION_CURRENCIES").trigger();
  }
  ASSERT_EQ(desktop.document->currencies().entries.size(), before.size() + 1);
  action("IDS_ACTION_UNDO").trigger();
  EXPECT_EQ(desktop.document->currencies().entries, before);
  EXPECT_EQ(desktop.value("select count(*) as c from Currency where Name = 'XYZ'"), "0");
}

TEST_F(ListCommands, BeforeAllCallsGoTheirNumberIsSaidWhateverTheFilter) {
  desktop.document->callFilter().set({{"OnFilter", "1"}, {"Number", "9999999"}});
  frame->reloadFolder();
  ASSERT_EQ(rows(), 1);
  desktop.person.answer = false;
  action("IDS_ACTION_RESET_CALLS").trigger();
  EXPECT_NE(desktop.person.questions.back().find("to be deleted: 3"), std::string::npos);
  EXPECT_EQ(desktop.value("select count(*) as c from Calls"), "3");
}

TEST_F(ListCommands, OfAPrintedListItIsSaidWhereItIsUnlessItWasNotPrinted) {
  QLabel& said = child<QLabel>("messagePane");
  desktop.documents.printing = platform::Printed::Canceled;
  action("IDS_ACTION_PRINT").trigger();
  EXPECT_FALSE(said.text().contains("list.html")) << said.text().toStdString();
  desktop.documents.printing = platform::Printed::Refused;
  {
    const Script script({acknowledge("printer does not take")});
    action("IDS_ACTION_PRINT").trigger();
  }
  desktop.documents.printing = platform::Printed::Done;
  action("IDS_ACTION_PRINT").trigger();
  EXPECT_TRUE(said.text().contains("list.html")) << said.text().toStdString();
}

TEST_F(ListCommands, AColumnSaysWhatItHolds) {
  const int cost = list().model().columnOf(408);
  const QString tip = list().model().headerData(cost, Qt::Horizontal, Qt::ToolTipRole).toString();
  EXPECT_TRUE(tip.contains("without the surcharge")) << tip.toStdString();
  EXPECT_TRUE(tip.contains("sorts")) << tip.toStdString();
}

TEST_F(ListCommands, AUserComesBackWithPasswordAndGroups) {
  security::UserRecord user;
  user.Name = "maria";
  user.Groups = ";1;";
  ASSERT_EQ(desktop.document->users().SaveUser(user, "secret"), security::SaveResult::Saved);
  frame->selectFolder(kUsers);
  for (int row = 0; row < rows(); ++row) {
    if (list().model().text(row, 0) == "maria") list().selectRow(row);
  }
  action("IDS_ACTION_DELETE").trigger();
  ASSERT_FALSE(desktop.document->users().findUser("maria"));
  action("IDS_ACTION_UNDO").trigger();
  const auto back = desktop.document->users().findUser("maria");
  ASSERT_TRUE(back);
  EXPECT_EQ(back->passwordDigest, security::PasswordDigest("secret"));
  EXPECT_EQ(back->Groups, ";1;");
}

TEST_F(ListCommands, AHiddenNumberIsShownAgainByUndo) {
  select(0, kKindNumber);
  action("IDS_ACTION_HIDE_NUMBER").trigger();
  EXPECT_NE(desktop.value("select count(*) as c from Calls where Hidden"), "0");
  action("IDS_ACTION_UNDO").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Calls where Hidden"), "0");
}

TEST_F(ListCommands, AllSelectedNumbersAreHiddenAndComeBackTogether) {
  list().selectAll();
  action("IDS_ACTION_HIDE_NUMBER").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Calls where Hidden"), "3");
  EXPECT_TRUE(child<QLabel>("messagePane").text().contains("2 numbers"));
  action("IDS_ACTION_UNDO").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Calls where Hidden"), "0");
}

TEST_F(ListCommands, TheCallsOfAContactAreThoseOfItsNumbers) {
  emptyContacts();
  addContact("Ana", "021 999 9999");
  frame->selectFolder(folders::FolderContacts);
  list().selectRow(0);
  action("IDS_ACTION_CONTACT_CALLS").trigger();
  EXPECT_EQ(list().folderId(), kCalls);
  EXPECT_EQ(rows(), 1);
  EXPECT_EQ(cell(0, kKindNumber), "9999999");
}

TEST_F(ListCommands, CancelAsksWhetherANewContactOfANumberIsKept) {
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  const std::string number = cell(2, kKindNumber);
  const auto cancel = [](QDialog& sheet) { click(sheet, "cancel"); };
  for (const auto& [button, kept] : {std::pair("no", "0"), std::pair("yes", "1")}) {
    emptyContacts();
    const Script script({cancel, [button = button](QDialog& question) {
                           EXPECT_TRUE(question.property("text").toString().contains("Keep the new contact"));
                           click(question, button);
                         }});
    action("IDS_ACTION_ADD_CONTACT").trigger();
    EXPECT_EQ(desktop.value("select count(*) as c from Contacts"), kept);
  }
  EXPECT_NE(desktop.value("select Tel_String as c from Contacts").find(number), std::string::npos);
}

TEST_F(ListCommands, WhatWasTypedForANewContactOutlivesACalledOffCancel) {
  emptyContacts();
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  const Script script({[](QDialog& sheet) {
                         support::child<QLineEdit>(sheet, "name").setText("Ana");
                         click(sheet, "cancel");
                       },
                       [](QDialog& question) {
                         click(question, "cancel");
                         QTimer::singleShot(0, qApp, [] {
                           QWidget* sheet = QApplication::activeModalWidget();
                           ASSERT_NE(sheet, nullptr);
                           EXPECT_EQ(support::child<QLineEdit>(*sheet, "name").text(), "Ana");
                           click(*sheet, "cancel");
                         });
                       },
                       [](QDialog& question) { click(question, "yes"); }});
  action("IDS_ACTION_ADD_CONTACT").trigger();
  EXPECT_EQ(desktop.value("select Name as c from Contacts"), "Ana");
}

TEST_F(ListCommands, AContactThatHasTheNumberIsOffered) {
  emptyContacts();
  addContact("Ana", "021 999 9999");
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  {
    const Script script({[](QDialog& question) {
                           EXPECT_TRUE(question.property("text").toString().contains("Ana"));
                           click(question, "yes");
                         },
                         [](QDialog& sheet) {
                           EXPECT_EQ(support::child<QLineEdit>(sheet, "name").text(), "Ana");
                           click(sheet, "cancel");
                         }});
    action("IDS_ACTION_ADD_CONTACT").trigger();
  }
  EXPECT_EQ(desktop.value("select count(*) as c from Contacts"), "1");
  const Script script({[](QDialog& question) { click(question, "no"); }, [](QDialog& sheet) { click(sheet, "cancel"); },
                       [](QDialog& question) { click(question, "no"); }});
  action("IDS_ACTION_ADD_CONTACT").trigger();
  EXPECT_EQ(desktop.value("select count(*) as c from Contacts"), "1");
}

TEST_F(ListCommands, ThePriceOfACallIsExplained) {
  select(0, kKindNumber);
  const Script script({[](QDialog& dialog) {
    const QString steps = support::child<QPlainTextEdit>(dialog, "steps").toPlainText();
    EXPECT_TRUE(steps.startsWith("Stored with the call")) << steps.toStdString();
    EXPECT_TRUE(steps.contains("Telco")) << steps.toStdString();
    click(dialog, "ok");
  }});
  action("IDS_ACTION_WHY_PRICE").trigger();
}

TEST_F(ListCommands, ColumnsAreChosenAndOrderedInADialog) {
  {
    const Script script({[](QDialog& dialog) {
      auto& columns = support::child<QListWidget>(dialog, "columnList");
      columns.item(0)->setCheckState(Qt::Unchecked);
      columns.setCurrentRow(2);
      click(dialog, "up");
      click(dialog, "ok");
    }});
    action("IDS_ACTION_COLUMNS").trigger();
  }
  EXPECT_EQ(list().model().columnOf(kKindNumber), -1);
  EXPECT_EQ(list().model().kindOf(0), 411);  // the third one moved before the second
}

TEST_F(ListCommands, OrderAndCurrentRowAreThereOnReturn) {
  clickHeading(kKindDuration);
  select(2, kKindNumber);
  frame->selectFolder(kExtensions);
  frame->selectFolder(kCalls);
  EXPECT_EQ(cell(0, kKindDuration), "00:00:30");
  EXPECT_EQ(list().currentIndex().row(), 2);
}

// In both languages, with letters of their own within each menu.
TEST(Menus, EveryEntryHasALetter) {
  for (const char* language : {"EN", "RO"}) {
    Desktop desktop(language);
    ASSERT_TRUE(desktop.started);
    const ui::QtOperator person;
    ui::CMainFrame frame(*desktop.document, *desktop.texts, person);
    QMenu ofRows;
    for (QAction* action : frame.findChildren<QAction*>()) action->setEnabled(true);
    frame.actions().fillContextMenu(ofRows);
    QMenu& periods = *frame.findChild<QToolButton*>("periods")->menu();
    emit periods.aboutToShow();
    std::vector<const QMenu*> menus{&ofRows, &periods};
    for (const QAction* top : frame.menuBar()->actions()) menus.push_back(top->menu());
    for (const QMenu* menu : menus) {
      QStringList letters;
      for (const QAction* action : menu->actions()) {
        if (action->isSeparator()) continue;
        const qsizetype mark = action->text().indexOf('&');
        ASSERT_GE(mark, 0) << action->text().toStdString();
        letters << action->text().mid(mark + 1, 1).toLower();
      }
      EXPECT_FALSE(letters.isEmpty());
      EXPECT_EQ(letters.removeDuplicates(), 0)
          << language << ' ' << menu->title().toStdString() << ' ' << menu->actions().front()->text().toStdString();
    }
    frame.close();
  }
}

}  // namespace
