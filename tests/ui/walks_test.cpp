// The ways of a receptionist, a manager and an administrator, with the number of steps that each may take. A step is a
// command chosen or its key, a row or folder clicked, a field filled, a button pressed.

#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QTreeWidget>

#include "filter/saved_filters.h"
#include "frame.h"

namespace {

using namespace support;

class Walk : public MainFrameTest {
 protected:
  void SetUp() override {
    MainFrameTest::SetUp();
    frame->show();
    frame->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(frame.get()));
    list().setFocus();
  }

  void press(const QKeySequence& key) {
    ++steps;
    QTest::keySequence(frame->focusWidget(), key);
  }
  void type(const QString& text) {
    ++steps;
    QTest::keyClicks(QApplication::focusWidget(), text);
  }
  void clickRow(int row) {
    ++steps;
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().visualRect(list().model().index(row, 0)).center());
  }
  void clickFolder(const QString& caption) {
    ++steps;
    auto& tree = child<QTreeWidget>("selector");
    const auto found = tree.findItems(caption, Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_FALSE(found.isEmpty()) << caption.toStdString();
    tree.scrollToItem(found.front());
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.visualItemRect(found.front()).center());
  }
  void choose(const char* command) {
    ++steps;
    ASSERT_TRUE(action(command).isEnabled()) << command;
    action(command).trigger();
  }
  Script::Step confirm() {
    return [this](QDialog& dialog) {
      ++steps;
      click(dialog, "ok");
    };
  }

  int steps = 0;
};

TEST_F(Walk, ACallIsFoundInTwo) {
  press(QKeySequence("Ctrl+F"));
  type("999");
  ASSERT_TRUE(QTest::qWaitFor([this] { return rows() == 1; }, 2000));
  EXPECT_EQ(cell(list().currentIndex().row(), kKindNumber), "9999999");
  EXPECT_LE(steps, 2);
}

TEST_F(Walk, ABillIsMadeInThree) {
  clickRow(0);
  const Script script({confirm()});
  press(QKeySequence("Ctrl+B"));
  EXPECT_EQ(desktop.documents.opened.size(), 1U);
  EXPECT_LE(steps, 3);
}

TEST_F(Walk, AContactIsMadeOfACallInThree) {
  desktop.document->database().execute("delete from Contacts");
  clickRow(0);
  steps = 0;  // the way begins at a call that was found
  const Script script({[this](QDialog& dialog) {
    ++steps;
    support::child<QLineEdit>(dialog, "name").setText("Ana Pop");
    confirm()(dialog);
  }});
  press(QKeySequence("Ctrl+D"));
  EXPECT_EQ(desktop.value("select count(*) as c from Contacts where Name = 'Ana Pop' or Contact = 'Ana Pop'"), "1");
  EXPECT_LE(steps, 3);
}

TEST_F(Walk, LastMonthsStatisticIsAPdfInFour) {
  clickFolder("Extensions");
  press(QKeySequence("F6"));
  const std::string file = desktop.path("month.pdf");
  const Script script({[&](QDialog& dialog) {
    ++steps;
    EXPECT_TRUE(support::child<QLineEdit>(dialog, "fileNameEdit").text().startsWith("Extensions 20"))
        << support::child<QLineEdit>(dialog, "fileNameEdit").text().toStdString();
    support::child<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(file));
    dialog.accept();
  }});
  choose("IDS_ACTION_SAVE_PDF");
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_TRUE(child<QLabel>("messagePane").text().contains("month.pdf"));
  EXPECT_LE(steps, 4);
}

TEST_F(Walk, ASavedFilterIsUsedInTwo) {
  filter::FilterSettings nines;
  nines.onFilter = 1;
  nines.number = "9999999";
  filter::SavedFilters saved(desktop.app->config(), foundation::StoreMachine);
  ASSERT_TRUE(saved.save("The nines", nines, desktop.clock.now()));
  QMenu& menu = *child<QToolButton>("savedFilters").menu();
  QTimer::singleShot(0, &menu, [&] {
    ++steps;
    for (QAction* entry : menu.actions()) {
      if (entry->text() != "The nines") continue;
      QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(entry).center());
      return;
    }
    ADD_FAILURE() << "the filter is not in the menu";
    menu.close();
  });
  ++steps;
  child<QToolButton>("savedFilters").click();
  EXPECT_TRUE(QTest::qWaitFor([this] { return rows() == 1; }, 2000));
  EXPECT_LE(steps, 2);
}

}  // namespace
