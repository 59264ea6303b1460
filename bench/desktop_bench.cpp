// What the operator of a desktop waits for over very many calls, without a display: from the start of the program to a
// list that can be used, a key in the line over it, a folder, a window. Usage: desktop_bench [CALLS] [FOLDER]
//
// With a folder, the calls made there are kept and used again. A line a measurement: what, milliseconds by the clock,
// of them of the processor. Between a key and its search lie the 40 ms in which another key may come.

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "office.h"
#include "server/data_folder.h"
#include "server/server_doc.h"
#include "ui/login_dialogs.h"
#include "ui/main_frame.h"
#include "ui/qt_document_handler.h"

namespace {

// Time since a moment, by the clock and of the processor.
class Watch {
 public:
  Watch() { clock_.start(); }
  void tell(const std::string& what) const {
    std::cout << base::format("%-44s %9d %9.1f\n", what, clock_.elapsed(), bench::processorTime() - processor_)
              << std::flush;
  }

 private:
  QElapsedTimer clock_;
  double processor_ = bench::processorTime();
};

void makeFolder(const std::filesystem::path& folder, const std::filesystem::path& store, std::int64_t calls) {
  foundation::MachineStore machine(store);
  foundation::ConfigManager config(machine);
  platform::NoOperator nobody;
  const platform::SystemClock clock;
  server::makeDataFolder({folder, "", true, false}, {config, nobody, clock},
                         [&] { server::useDataFolder(folder, config); });
  machine.writeString("general", "AutoLoginUser", server::kAdministrator);
  bench::addCalls(folder / schema::kMainFile, calls);
}

// The program's parts as its main function makes them.
struct Program {
  explicit Program(const std::filesystem::path& store)
      : machine(store), app(store, TALLYBOOK_BINARY_DIR, server::Surroundings{person, login, clock, documents, {}}) {
    if (app.InitInstance("", server::CServerApp::OneCopy::Shared) != server::CServerApp::Start::Ready ||
        !document.OnNewDocument(server::StartDuties{.outputPort = false})) {
      throw std::runtime_error("the program does not start");
    }
    person.setLanguage(app.language());
  }

  foundation::MachineStore machine;
  foundation::ConfigManager settings{machine};
  ui::QtOperator person;
  platform::SystemClock clock;
  ui::QtDocumentHandler documents{person, settings};
  ui::QtLoginPrompt login{settings, [this]() -> const foundation::LanguageFile& { return app.language(); }};
  server::CServerApp app;
  server::CServerDoc document{app};
  ui::Texts texts{app.language()};
};

template <typename Done>
void waitFor(const Done& done) {
  while (!done()) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

// As when the line is entered: what is read beside the window, and the longest that the window waits meanwhile.
void readAhead(ui::CMainFrame& frame) {
  const Watch watch;
  double longest = 0;
  frame.list().expectWords();
  while (frame.list().isReadingAhead()) {
    const double begun = bench::processorTime();
    QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    longest = std::max(longest, bench::processorTime() - begun);
  }
  watch.tell("read ahead");
  std::cout << base::format("%-44s %19.1f\n", "the longest step of it", longest);
}

void typeKeys(ui::CMainFrame& frame) {
  auto& line = *frame.findChild<QLineEdit*>("quickFilter");
  for (const char* typed : {"0", "07", "078", "0785", "a", "ab", "abo", "no such row", ""}) {
    const Watch watch;
    line.setText(typed);
    waitFor([&] { return frame.list().typed() == typed; });
    frame.list().grab();
    watch.tell(base::format("typed \"%s\"", typed));
  }
}

void openWindow(ui::CMainFrame& frame, const char* command) {
  const Watch watch;
  bool opened = false;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible() || dialog->objectName() == "progress") return;
    if (!opened) {
      dialog->grab();
      watch.tell(command);
    }
    opened = true;
    if (dialog->property("reading").toBool()) return;
    dialog->grab();
    watch.tell(base::format("%s, filled", command));
    dialog->done(QDialog::Rejected);
  });
  timer.start(1);
  frame.findChild<QAction*>(command)->trigger();
}

}  // namespace

int main(int count, char** words) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  setenv("QT_LOGGING_RULES", "qt.qpa.*=false", 0);  // what this platform lacks is known
  const std::int64_t calls = count > 1 ? std::max(1LL, std::atoll(words[1])) : 1'000'000;
  std::optional<bench::DataFolder> passing;
  const std::filesystem::path folder =
      count > 2 ? std::filesystem::absolute(words[2]) : passing.emplace("desktop_bench").path();
  std::filesystem::create_directories(folder);
  const std::filesystem::path store = folder / "machine.ini";
  if (!std::filesystem::exists(folder / "data" / schema::kMainFile)) makeFolder(folder / "data", store, calls);

  std::cout << base::format("%-44s %9s %9s\n", "", "ms", "processor");
  const Watch start;
  QApplication application(count, words);
  Program program(store);
  ui::CMainFrame frame(program.document, program.texts, program.person);
  program.person.setParent(&frame);
  frame.show();
  frame.start();
  waitFor([&] { return frame.list().model().totalRows() > 0; });
  frame.grab();
  start.tell("start to the list");
  const Watch idle;
  QApplication::processEvents();
  idle.tell("what is left to do then");
  readAhead(frame);
  typeKeys(frame);
  for (const int id : {101, 106, 114, 100}) {
    const Watch watch;
    frame.selectFolder(id);
    frame.grab();
    watch.tell(base::format("folder %d", id));
  }
  frame.list().setCurrentIndex(frame.list().model().index(0, 0));
  for (const char* command :
       {"IDS_ACTION_SETTINGS",  "IDS_ACTION_FILTER",      "IDS_ACTION_BILL",       "IDS_ACTION_SEARCH_CONTACTS",
        "IDS_ACTION_RECALC",    "IDS_ACTION_CURRENCIES",  "IDS_ACTION_LOG_FILTER", "IDS_ACTION_COLUMNS",
        "IDS_ACTION_WHY_PRICE", "IDS_ACTION_NEW_CONTACT", "IDS_ACTION_CONVERT",    "IDS_ACTION_KEYS",
        "IDS_ACTION_ABOUT",     "IDS_ACTION_WEEK",        "IDS_ACTION_MISSED",     "IDS_ACTION_TRUNK_LOAD",
        "IDS_ACTION_ALARMS",    "IDS_ACTION_MONTH",       "IDS_ACTION_PERSON",     "IDS_ACTION_ANONYMISE",
        "IDS_ACTION_PAGE_SETUP"}) {
    openWindow(frame, command);
  }
  frame.close();
  program.document.OnCloseDocument();
  return 0;
}
