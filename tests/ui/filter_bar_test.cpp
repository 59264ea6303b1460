// The line over the list, the parts of the filter, periods and saved filters.

#include "ui/filter_bar.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>

#include "filter/saved_filters.h"
#include "frame.h"
#include "security/audit_log.h"

namespace {

using namespace support;

class FilterBarTest : public MainFrameTest {
 protected:
  QLineEdit& line() { return child<QLineEdit>("quickFilter"); }
  // As typed; the list follows after a moment.
  void type(const QString& text) {
    line().clear();
    QTest::keyClicks(&line(), text);
    EXPECT_TRUE(QTest::qWaitFor([&] { return list().typed() == text.trimmed(); }, 2000)) << text.toStdString();
  }
  QStringList parts() {
    QStringList texts;
    for (const auto* part : frame->findChildren<QToolButton*>("filterPart")) {
      if (part->isVisibleTo(frame.get())) texts << part->text().section("  ", 0, 0);
    }
    return texts;
  }
  void removeFirstPart() {
    frame->findChildren<QToolButton*>("filterPart").constFirst()->click();
    QApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  QAction& entry(const char* button, const QString& text) {
    QMenu& menu = *child<QToolButton>(button).menu();
    emit menu.aboutToShow();
    for (QAction* action : menu.actions()) {
      if (action->objectName() == text || action->text() == text) return *action;
    }
    throw std::runtime_error("there is no entry " + text.toStdString());
  }
};

TEST_F(FilterBarTest, WordsAreFoundInAnyShownColumn) {
  const struct {
    const char* typed;
    int rows;
  } cases[] = {
      {"5678", 2},            // a part of the number
      {"999", 1},             //
      {"3456789 desk", 2},    // the extension's description, whatever the case
      {"3456789 nobody", 0},  // every word counts
      {"34*9", 0},            // no wildcard
      {"o'neil", 0},          // no end of a literal
      {"\"", 0},              //
      {"", 3},
  };
  for (const auto& sample : cases) {
    type(sample.typed);
    EXPECT_EQ(rows(), sample.rows) << sample.typed;
  }
  type("9999999");
  EXPECT_EQ(list().currentIndex().row(), 0);  // the first hit is the current row
  QTest::keyClick(&line(), Qt::Key_Escape);
  EXPECT_TRUE(QTest::qWaitFor([&] { return rows() == 3; }, 2000));
}

TEST_F(FilterBarTest, TypedWordsArePartOfTheBarInEveryFolder) {
  for (const int folder : {kCalls, kExtensions}) {
    frame->selectFolder(folder);
    auto& part = child<QToolButton>("typedPart");
    EXPECT_FALSE(part.isVisibleTo(frame.get()));
    const int all = rows();
    type("no such thing & none");
    EXPECT_EQ(rows(), 0);
    EXPECT_TRUE(part.isVisibleTo(frame.get()));
    EXPECT_EQ(part.text().section("  ", 0, 0), "\"no such thing && none\"");
    part.click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return rows() == all; }, 2000));
    EXPECT_FALSE(part.isVisibleTo(frame.get()));
    EXPECT_TRUE(line().text().isEmpty());
  }
}

// A cell that was copied from a spreadsheet ends with a line break.
TEST_F(FilterBarTest, PastedLinesBecomeOneLine) {
  frame->show();
  for (const auto& [pasted, text] : {std::pair{"9999999\r\n", "9999999"}, {"\n3456789\ndesk", "3456789 desk"}}) {
    QApplication::clipboard()->setText(pasted);
    line().clear();
    line().paste();
    EXPECT_EQ(line().text(), text);
  }
}

// Entries are stored in the language of the program that wrote them.
TEST_F(FilterBarTest, TheLogIsFoundByTheWordsThatAreShown) {
  desktop.document->log().WriteLog(security::LogAdd, "Contact ad\u0103ugat: %s", "Pop");
  frame->selectFolder(kLog);
  const struct {
    const char* typed;
    int rows;
  } cases[] = {{"ADDED", 1}, {"added pop", 1}, {"added ionescu", 0}, {"pop", 1}};
  for (const auto& sample : cases) {
    type(sample.typed);
    EXPECT_EQ(rows(), sample.rows) << sample.typed;
  }
}

TEST_F(FilterBarTest, TheFilterAndTheUsersRestrictionHoldWhateverIsTyped) {
  desktop.document->user().SQLSubquery = "DialNumber = '3456789'";
  frame->reloadFolder();
  ASSERT_EQ(rows(), 2);
  for (const char* typed : {"999", "9) or (1=1", "x' or '1'='1"}) {
    type(typed);
    EXPECT_EQ(rows(), 0) << typed;
  }
  type("");
  desktop.document->callFilter().set({{"OnFilter", "1"}, {"OnMinDuration", "1"}, {"MinDuration", "60"}});
  frame->reloadFolder();
  type("345");
  EXPECT_EQ(rows(), 1);
}

TEST_F(FilterBarTest, WhatWasTypedBelongsToOneFolder) {
  type("999");
  frame->selectFolder(kExtensions);
  EXPECT_TRUE(line().text().isEmpty());
  type("desk");
  EXPECT_EQ(rows(), 1);
  frame->selectFolder(kCalls);
  EXPECT_EQ(rows(), 3);
}

TEST_F(FilterBarTest, EveryPartOfTheFilterIsTakenOutByItself) {
  EXPECT_EQ(parts(), QStringList());
  entry("periods", "IDS_PERIOD_TODAY").trigger();
  desktop.document->callFilter().set({{"NumberPrefix", "99"}, {"OnDepartment", "1"}, {"Department", "Sales"}});
  frame->reloadFolder();
  EXPECT_EQ(parts(), QStringList({"Today", "Department: Sales", "Number: 99..."}));
  removeFirstPart();
  EXPECT_EQ(parts(), QStringList({"Department: Sales", "Number: 99..."}));
  EXPECT_EQ(rows(), 1);
  removeFirstPart();
  removeFirstPart();
  EXPECT_EQ(parts(), QStringList());
  EXPECT_EQ(rows(), 3);
}

TEST_F(FilterBarTest, AFilterIsKeptUnderANameAndUsedAgain) {
  desktop.document->callFilter().set({{"OnFilter", "1"}, {"Number", "9999999"}});
  frame->reloadFolder();
  {
    const Script script({[](QDialog& dialog) {
      support::child<QLineEdit>(dialog, "filterName").setText("The nines");
      support::child<QCheckBox>(dialog, "filterShared").setChecked(true);
      click(dialog, "ok");
    }});
    entry("savedFilters", "IDS_FILTER_SAVE_AS").trigger();
  }
  action("IDS_ACTION_CLEAR_FILTER").trigger();
  ASSERT_EQ(rows(), 3);
  entry("savedFilters", "The nines  (shared)").trigger();
  EXPECT_EQ(rows(), 1);
  EXPECT_EQ(parts(), QStringList({"Number: 9999999"}));
}

// While what a search needs is still to be read, the first rows are there; the others follow, and nothing moves.
TEST_F(FilterBarTest, TheFirstRowsDoNotWaitForTheOthers) {
  desktop.person.isBusy = true;  // nothing is read ahead
  ASSERT_TRUE(list().find("3456789"));
  EXPECT_TRUE(list().searching());
  ASSERT_EQ(rows(), 2);
  const std::vector<std::string> found = {list().model().key(0), list().model().key(1)};
  list().setCurrentIndex(list().model().index(1, 0));
  desktop.person.isBusy = false;
  EXPECT_TRUE(QTest::qWaitFor([this] { return !list().searching(); }));
  ASSERT_EQ(rows(), 2);
  EXPECT_EQ((std::vector<std::string>{list().model().key(0), list().model().key(1)}), found);
  EXPECT_EQ(list().currentIndex().row(), 1);

  desktop.person.isBusy = true;
  ASSERT_TRUE(list().find("nobody"));
  EXPECT_EQ(list().nothing(), ui::CFolderView::Nothing::Searching);
  desktop.person.isBusy = false;
  EXPECT_TRUE(QTest::qWaitFor([this] { return !list().searching(); }));
  EXPECT_EQ(list().nothing(), ui::CFolderView::Nothing::NotFound);
}

// A search that the operator left for another word, or for another folder, is over.
TEST_F(FilterBarTest, ASearchEndsWithItsWords) {
  desktop.person.isBusy = true;
  ASSERT_TRUE(list().find("3456789"));
  ASSERT_TRUE(list().find("9999999"));
  EXPECT_EQ(rows(), 1);
  ASSERT_TRUE(list().find(""));
  EXPECT_FALSE(list().searching());
  EXPECT_EQ(rows(), 3);
  ASSERT_TRUE(list().find("3456789"));
  frame->selectFolder(kExtensions);
  EXPECT_FALSE(list().searching());
  desktop.person.isBusy = false;
}

// What finds the rows of a long list is read again beside the window; the list is as it was until then.
TEST_F(FilterBarTest, CallsOfAnotherCopyAreFoundBesideTheWindow) {
  jet::Database& database = desktop.document->database();
  {
    jet::Transaction transaction(database);
    const auto calls = database.openRecordset("select * from Calls");
    for (int i = 0; i < 12'000; ++i) {
      calls->addNew();
      calls->set("DateTime", desktop.clock.now());
      calls->set("DialNumber", "07" + std::to_string(i));
      calls->update();
    }
    transaction.commit();
  }
  frame->reloadFolder();
  ASSERT_TRUE(list().find("3456789"));
  ASSERT_TRUE(QTest::qWaitFor([this] { return !list().searching(); }, 20'000));
  const int found = rows();
  database.execute("update Calls set DialNumber = '0723456789' where DialNumber = '0711'");
  foundation::ChangeTags other(desktop.person);
  other.LoadTouch(database);
  other.Touch("Calls");
  frame->refreshFromOtherCopies();
  EXPECT_TRUE(QTest::qWaitFor([&] { return rows() == found + 1; }, 20'000)) << rows();
  EXPECT_EQ(list().typed(), "3456789");
}

// What a search reads is read beforehand; when the operator is about to type, and not when the list is gone.
TEST_F(FilterBarTest, ReadingAheadEndsByItselfAndWithTheList) {
  frame->selectFolder(kCalls);
  EXPECT_TRUE(list().isReadingAhead());
  EXPECT_TRUE(QTest::qWaitFor([this] { return !list().isReadingAhead(); }));
  frame->show();
  frame->activateWindow();
  EXPECT_TRUE(QTest::qWaitForWindowActive(frame.get()));
  action("IDS_ACTION_QUICK_FILTER").trigger();
  EXPECT_TRUE(list().isReadingAhead());
  list().closeFolder();
  EXPECT_FALSE(list().isReadingAhead());
}

}  // namespace
