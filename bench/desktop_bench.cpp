// What the operator of a desktop waits for over very many calls, without a display: from the start of the program to a
// list that can be used, a key in the line over it, a folder, a window. Usage: desktop_bench [CALLS] [FOLDER] or
// desktop_bench [CALLS] --postgres ADDRESS
//
// With a folder, the calls made there are kept and used again; on a server a database of its own is made and dropped. A
// line a measurement: what, milliseconds by the clock, of them of the processor, and the longest time for which the
// window was neither drawn nor heard, by the clock and of the processor: on a machine that does other things too the
// clock tells of them. Between a key and its search lie the 40 ms in which another key may
// come.

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>

#include "office.h"
#include "server/data_folder.h"
#include "server/server_doc.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/login_dialogs.h"
#include "ui/main_frame.h"
#include "ui/qt_document_handler.h"

namespace {

// Beats as long as events are worked on; what lies between two beats is a halt.
class Heartbeat {
 public:
  Heartbeat() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] { beat(); });
    timer_.start(kInterval);
    since_.start();
  }
  void begin() {
    longest_ = longestWork_ = 0;
    worked_ = bench::processorTime();
    since_.restart();
  }
  // The longest halts since begin(), in milliseconds by the clock and of the processor.
  struct Halts {
    double clock;
    double processor;
  };
  [[nodiscard]] Halts longest() {
    beat();
    return {longest_, longestWork_};
  }

 private:
  static constexpr int kInterval = 1;

  void beat() {
    longest_ = std::max(longest_, static_cast<double>(since_.nsecsElapsed()) / 1e6 - kInterval);
    since_.restart();
    const double worked = bench::processorTime();
    longestWork_ = std::max(longestWork_, worked - worked_);
    worked_ = worked;
  }

  QTimer timer_;
  QElapsedTimer since_;
  double longest_ = 0;
  double worked_ = 0;
  double longestWork_ = 0;
};

// Time since a moment, by the clock and of the processor.
class Watch {
 public:
  explicit Watch(Heartbeat* heart) : heart_(heart) {
    if (heart_ != nullptr) heart_->begin();
    clock_.start();
  }
  void tell(const std::string& what) const {
    std::string halt;
    if (heart_ != nullptr) {
      const Heartbeat::Halts halts = heart_->longest();
      halt = base::format("%9.1f %9.1f", halts.clock, halts.processor);
    }
    std::cout << base::format("%-44s %9d %9.1f %s\n", what, clock_.elapsed(), bench::processorTime() - processor_, halt)
              << std::flush;
  }

 private:
  Heartbeat* heart_;
  QElapsedTimer clock_;
  double processor_ = bench::processorTime();
};

// A database of its own on a server.
class ServerDatabase {
 public:
  explicit ServerDatabase(const std::string& address) : server_(address), name_(base::format("bench%d", ::getpid())) {
    server_.execute("CREATE DATABASE " + name_);
    const std::string given = address.substr(0, address.size() - 1);
    address_ = given.substr(0, given.rfind('/') + 1) + name_ + '/';
  }
  ServerDatabase(const ServerDatabase&) = delete;
  ServerDatabase& operator=(const ServerDatabase&) = delete;
  ~ServerDatabase() {
    try {
      server_.execute("DROP DATABASE " + name_ + " WITH (FORCE)");
    } catch (const std::exception&) {
      // One that is left behind is seen and harmless.
    }
  }
  [[nodiscard]] const std::string& address() const { return address_; }

 private:
  bench::Server server_;
  std::string name_;
  std::string address_;
};

// `place`: a folder, or the address of a server.
void makeData(const std::filesystem::path& place, const std::filesystem::path& store) {
  foundation::MachineStore machine(store);
  foundation::ConfigManager config(machine);
  platform::NoOperator nobody;
  const platform::SystemClock clock;
  server::makeDataFolder({place, "", false, false}, {config, nobody, clock},
                         [&] { server::useDataFolder(place, config); });
  machine.writeString("general", "AutoLoginUser", server::kAdministrator);
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

// As when the line is entered: what is read beside the window, and then the rows of what was typed before.
void readAhead(ui::CMainFrame& frame, Heartbeat& heart) {
  const Watch watch(&heart);
  frame.list().expectWords();
  waitFor([&] { return !frame.list().isReadingAhead(); });
  waitFor([&] { return !frame.list().searching(); });
  watch.tell("read ahead");
}

void typeKey(ui::CMainFrame& frame, Heartbeat& heart, const QString& typed) {
  const Watch watch(&heart);
  frame.findChild<QLineEdit*>("quickFilter")->setText(typed);
  waitFor([&] { return frame.list().typed() == typed; });
  frame.list().grab();
  watch.tell(base::format("typed \"%s\"", typed.toStdString()));
}

void openWindow(ui::CMainFrame& frame, Heartbeat& heart, const char* command) {
  const Watch watch(&heart);
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
    if (dialog->property(ui::kStillReading).toBool()) return;
    dialog->grab();
    watch.tell(base::format("%s, filled", command));
    dialog->done(QDialog::Rejected);
  });
  timer.start(1);
  frame.findChild<QAction*>(command)->trigger();
}

constexpr const char* kWindows[] = {
    "IDS_ACTION_SETTINGS",   "IDS_ACTION_FILTER",      "IDS_ACTION_BILL",       "IDS_ACTION_SEARCH_CONTACTS",
    "IDS_ACTION_RECALC",     "IDS_ACTION_CURRENCIES",  "IDS_ACTION_LOG_FILTER", "IDS_ACTION_COLUMNS",
    "IDS_ACTION_WHY_PRICE",  "IDS_ACTION_NEW_CONTACT", "IDS_ACTION_CONVERT",    "IDS_ACTION_KEYS",
    "IDS_ACTION_ABOUT",      "IDS_ACTION_WEEK",        "IDS_ACTION_MISSED",     "IDS_ACTION_TRUNK_LOAD",
    "IDS_ACTION_ALARMS",     "IDS_ACTION_MONTH",       "IDS_ACTION_PERSON",     "IDS_ACTION_ANONYMISE",
    "IDS_ACTION_PAGE_SETUP", "IDS_ACTION_PASSWORD",    "IDS_ACTION_CONNECT"};

}  // namespace

int main(int count, char** words) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  setenv("QT_LOGGING_RULES", "qt.qpa.*=false", 0);  // what this platform lacks is known
  const std::optional<std::string> address = bench::takeAddress(count, words);
  const std::int64_t calls = count > 1 ? std::max(1LL, std::atoll(words[1])) : 1'000'000;
  std::optional<bench::DataFolder> passing;
  const std::filesystem::path folder =
      count > 2 ? std::filesystem::absolute(words[2]) : passing.emplace("desktop_bench").path();
  std::filesystem::create_directories(folder);
  const std::filesystem::path store = folder / "machine.ini";
  std::optional<ServerDatabase> server;
  if (address) {
    server.emplace(*address);
    makeData(server->address(), store);
    bench::addCallsOnServer(server->address(), "tallybook", calls);
  } else if (!std::filesystem::exists(folder / "data" / schema::kMainFile)) {
    makeData(folder / "data", store);
    bench::addCalls(folder / "data" / schema::kMainFile, calls);
  }

  std::cout << base::format("%-44s %9s %9s %9s %9s\n", "", "ms", "processor", "halt", "processor");
  const Watch start(nullptr);
  QApplication application(count, words);
  Program program(store);
  ui::CMainFrame frame(program.document, program.texts, program.person);
  program.person.setParent(&frame);
  frame.show();
  frame.start();
  waitFor([&] { return frame.list().model().totalRows() > 0; });
  frame.grab();
  start.tell("start to the list");
  Heartbeat heart;
  const Watch idle(&heart);
  QApplication::processEvents();
  idle.tell("what is left to do then");
  std::cout << "At once:\n";
  typeKey(frame, heart, "0785");
  readAhead(frame, heart);
  std::cout << "After a while:\n";
  for (const char* typed : {"0", "07", "078", "0785", "a", "ab", "abo", "no such row", ""}) {
    typeKey(frame, heart, typed);
  }
  for (const int id : {101, 106, 114, 100}) {
    const Watch watch(&heart);
    frame.selectFolder(id);
    frame.grab();
    watch.tell(base::format("folder %d", id));
  }
  frame.list().setCurrentIndex(frame.list().model().index(0, 0));
  for (const char* command : kWindows) openWindow(frame, heart, command);
  frame.close();
  program.document.OnCloseDocument();
  return 0;
}
