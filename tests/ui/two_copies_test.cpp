// The program twice on one database: what one changes, every window of the other shows.

#include <sys/wait.h>
#include <unistd.h>

#include <QLineEdit>
#include <QTest>

#include "desktop.h"
#include "folders/numbers.h"
#include "ui/dialogs/contacts_sheet.h"
#include "ui/main_frame.h"

namespace {

using namespace support;

// A process of its own that runs statements and moves a tag when it is told to. To be started before this process
// opens a database: connections do not survive a fork.
class OtherProcess {
 public:
  OtherProcess() {
    if (pipe(orders_) != 0 || pipe(answers_) != 0) throw std::runtime_error("no pipe");
    child_ = fork();
    if (child_ != 0) return;
    close(orders_[1]);
    const int status = work();
    _exit(status);
  }
  ~OtherProcess() {
    close(orders_[1]);
    int status = 0;
    waitpid(child_, &status, 0);
    EXPECT_EQ(status, 0);
  }
  // The first line is the database's path, then each a tag and a statement.
  void order(const std::string& line) {
    const std::string text = line + "\n";
    ASSERT_EQ(write(orders_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    char done = 0;
    ASSERT_EQ(read(answers_[0], &done, 1), 1) << line;
  }

 private:
  std::string nextLine() const {
    std::string line;
    for (char c = 0; read(orders_[0], &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }
  int work() const {
    try {
      const auto database = jet::openDatabase(nextLine(), jet::OpenMode::ReadWrite);
      ScriptedOperator person;
      foundation::ChangeTags tags(person);
      tags.LoadTouch(*database);
      for (std::string line = "ready"; !line.empty(); line = nextLine()) {
        if (const auto space = line.find(' '); space != std::string::npos) {
          database->execute(line.substr(space + 1));
          tags.Touch(line.substr(0, space));
        }
        if (write(answers_[1], "+", 1) != 1) return 1;
      }
      return 0;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s\n", error.what());
      return 1;
    }
  }

  int orders_[2] = {};
  int answers_[2] = {};
  pid_t child_ = 0;
};

contacts::CONTACTENTRYDESC ana() {
  contacts::CONTACTENTRYDESC contact;
  contact.name = "Ana";
  return contact;
}

class TwoProcesses : public testing::Test {
 protected:
  static constexpr int kRounds = 100;

  void SetUp() override {
    desktop = std::make_unique<Desktop>();
    ASSERT_TRUE(desktop->started);
    desktop->files.writeMonitorFile(sampleRecords(2));
    other.order(desktop->path(schema::kMainFile));
    frame = std::make_unique<ui::CMainFrame>(*desktop->document, *desktop->texts, operator_);
    frame->start();
    frame->importCalls();
  }
  void TearDown() override {
    if (frame) frame->close();
  }
  [[nodiscard]] bool listShows(const QString& text) const {
    const ui::FolderModel& model = frame->list().model();
    for (int row = 0; row < model.rowCount(); ++row) {
      for (int column = 0; column < model.columnCount(); ++column) {
        if (model.text(row, column) == text) return true;
      }
    }
    return false;
  }

  OtherProcess other;
  std::unique_ptr<Desktop> desktop;
  ui::QtOperator operator_;
  std::unique_ptr<ui::CMainFrame> frame;
};

TEST_F(TwoProcesses, TheListShowsEveryChangeOfEveryTable) {
  struct Table {
    int folder;
    const char* order;
  };
  const Table tables[] = {
      {97, "Users update Users set Fullname = 'round %d'"},
      {98, "Groups update Groups set [Desc] = 'round %d'"},
      {99, "Log insert into Log (UserName, [Desc], [DateTime], [Level]) values ('x', 'round %d', #1/1/2026#, 1)"},
      {100, "Calls update Calls set Name = 'round %d'"},
      {folders::FolderContacts, "Contacts update Contacts set Name = 'round %d'"},
  };
  desktop->document->contactBook().add(ana());
  for (int round = 0; round < kRounds; ++round) {
    const Table& table = tables[static_cast<std::size_t>(round) % std::size(tables)];
    frame->selectFolder(table.folder);
    other.order(base::format(table.order, round));
    hearOfChanges(desktop->document->database());
    frame->refreshFromOtherCopies();
    ASSERT_TRUE(listShows(QString("round %1").arg(round))) << table.order << ' ' << round;
  }
}

TEST_F(TwoProcesses, TheSheetAndTheListBothHearOfAChangeWhoeverLooksFirst) {
  desktop->document->app().config().WriteConfigInt(1, "Next RecID", "Contacts", foundation::StoreDatabase);
  const std::int32_t id = desktop->document->contactBook().add(ana());
  frame->selectFolder(folders::FolderContacts);
  foundation::TableWatch watch(desktop->document->database(), desktop->document->tags(), contacts::kContactsTable);
  ui::ContactsSheet sheet(*desktop->document, *desktop->texts, desktop->document->contactBook().find(id), watch,
                          frame.get());
  sheet.setVisible(true);
  child<QTimer>(sheet, "watch").setInterval(1);
  const Script script(std::vector<Script::Step>(kRounds, [](QDialog& message) {
    EXPECT_TRUE(message.property("text").toString().startsWith("Another workstation changed this record"));
    click(message, "ok");
  }));
  for (int round = 0; round < kRounds; ++round) {
    const QString name = QString("round %1").arg(round);
    other.order(base::format("Contacts update Contacts set Name = 'round %d' where RecordID = %d", round, id));
    const auto sheetHears = [&] {
      return QTest::qWaitFor([&] { return child<QLineEdit>(sheet, "name").text() == name; }, 5000);
    };
    if (round % 2 == 0) sheetHears();
    hearOfChanges(desktop->document->database());
    frame->refreshFromOtherCopies();
    EXPECT_TRUE(listShows(name)) << round;
    ASSERT_TRUE(sheetHears()) << round;
  }
  sheet.close();
}

}  // namespace
