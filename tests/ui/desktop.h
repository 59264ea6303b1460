#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "security/users.h"
#include "server/server_doc.h"
#include "support/exchange.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/texts.h"

namespace support {

class NobodyLogsIn : public security::LoginPrompt {
 public:
  std::optional<security::Credentials> askLogin(const std::string&) override { return {}; }
  std::optional<security::PasswordChange> askPasswordChange(const std::string&, bool) override { return {}; }
};

// Keeps what would have been opened or printed.
class ListeningDesktop : public platform::DocumentHandler {
 public:
  bool open(const std::string& pathOrUrl) override {
    opened.push_back(pathOrUrl);
    return answer;
  }
  platform::Printed print(const std::filesystem::path& document) override {
    printed.push_back(document.string());
    return printing;
  }

  std::vector<std::string> opened;
  std::vector<std::string> printed;
  bool answer = true;
  platform::Printed printing = platform::Printed::Done;
};

// With work of its own, beside which nothing is to begin, while it says so.
class PersonAtDesk : public ScriptedOperator {
 public:
  [[nodiscard]] bool busy() const override { return isBusy; }

  bool isBusy = false;
};

// The document over a small exchange's files, with an administrator logged in and reports going to the same folder.
class Desktop {
 public:
  // `placeOf` gives the databases' setting when it is not that of the files' own place.
  explicit Desktop(const std::string& language = "EN",
                   const std::function<std::string(const ExchangeFiles&)>& placeOf = {}) {
    {
      const auto main = jet::openDatabase(files.folder / schema::kMainFile, jet::OpenMode::ReadWrite);
      main->execute(
          "insert into Groups (RecordID, Name, ObjectAccess) values (1, 'Administrators', '6;1;6;2;9;1;9;2')");
      main->execute(
          base::format("insert into Users (RecordID, Name, Fullname, [Password], Flags, Groups) values (1, 'admin', "
                       "'Ana Pop', %d, 0, "
                       "';1;')",
                       static_cast<std::int32_t>(security::PasswordDigest(""))));
    }
    foundation::MachineStore machine(storeFile());
    machine.writeString("general", "PathDatabase", placeOf ? placeOf(files) : files.folder.setting());
    machine.writeString("general", "Path", path(""));
    machine.writeString("general", "AutoLoginUser", "admin");
    machine.writeString("general", "Language", language);
    app = std::make_unique<server::CServerApp>(storeFile(), TALLYBOOK_BINARY_DIR,
                                               server::Surroundings{person, login, clock, documents, {}});
    started = app->InitInstance("", server::CServerApp::OneCopy::Shared) == server::CServerApp::Start::Ready;
    document = std::make_unique<server::CServerDoc>(*app);
    started = started && document->OnNewDocument(server::StartDuties{.outputPort = false});
    texts = std::make_unique<ui::Texts>(app->language());
  }

  [[nodiscard]] std::filesystem::path storeFile() const { return files.folder / "machine.ini"; }
  [[nodiscard]] std::string path(const std::string& name) const { return (files.folder / name).string(); }
  // A stored setting, as a text.
  [[nodiscard]] std::string setting(const char* section, const char* key) const {
    const foundation::MachineStore machine(storeFile());
    if (const auto text = machine.readString(section, key)) return *text;
    const auto number = machine.readInt(section, key);
    return number ? std::to_string(*number) : "not stored";
  }
  std::string value(const std::string& sql) const {
    const jet::Snapshot rows = document->database().openSnapshot(sql);
    return rows.empty() ? "no row" : rows.at(0, 0).toText();
  }

  ExchangeFiles files;
  PersonAtDesk person;
  NobodyLogsIn login;
  StoppedClock clock;
  ListeningDesktop documents;
  std::unique_ptr<server::CServerApp> app;
  std::unique_ptr<server::CServerDoc> document;
  std::unique_ptr<ui::Texts> texts;
  bool started = false;
};

template <typename Widget>
Widget& child(QWidget& window, const char* name) {
  auto* found = window.findChild<Widget*>(name);
  if (found == nullptr) throw std::runtime_error(std::string("there is no ") + name);
  return *found;
}

inline void click(QWidget& window, const char* name) {
  child<QAbstractButton>(window, name).click();
}

// What an operator does with each modal window that opens, in order; windows beyond the script, and those that a step
// leaves open, are closed and counted: a test fails by them, and does not wait for them.
class Script {
 public:
  using Step = std::function<void(QDialog& dialog)>;
  explicit Script(std::vector<Step> steps) : steps_(std::move(steps)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { act(); });
    timer_.start(5);
    ++running_;
  }
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;
  ~Script() {
    --running_;
    EXPECT_EQ(done_, steps_.size()) << "windows that did not open";
    EXPECT_EQ(unexpected_, 0) << "windows that were not expected";
  }
  // Whether there is one that answers a window.
  [[nodiscard]] static bool isRunning() { return running_ > 0; }

 private:
  static constexpr qint64 kLongestOpen = 120'000;  // milliseconds; longer than any step waits

  void act() {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog != open_) {
      open_ = dialog;
      opened_.start();
    }
    if (dialog == nullptr || dialog->property(ui::kStillReading).toBool()) return;  // what it shows is still read
    if (opened_.elapsed() > kLongestOpen) return dismiss(*dialog, "window that was left open");
    if (!seen_.insert(dialog).second) return;
    QObject::connect(dialog, &QObject::destroyed, &timer_, [this, dialog] { seen_.erase(dialog); });
    if (done_ == steps_.size()) {
      ++unexpected_;
      return dismiss(*dialog, "unexpected window");
    }
    // Not from the timer's own slot: it would not fire for a window that the step opens.
    QTimer::singleShot(0, dialog, [dialog, step = steps_[done_++]] {
      try {
        step(*dialog);
      } catch (const std::exception& error) {
        ADD_FAILURE() << error.what() << " in " << fromQString(dialog->objectName());
        dialog->done(QDialog::Rejected);
      }
    });
  }
  // Not close(): a question without a Cancel does not heed it.
  static void dismiss(QDialog& dialog, const char* why) {
    ADD_FAILURE() << why << ' ' << fromQString(dialog.objectName() + ": " + dialog.property("text").toString());
    dialog.done(QDialog::Rejected);
  }
  static std::string fromQString(const QString& text) { return text.toStdString(); }

  inline static int running_ = 0;
  QTimer timer_;
  QPointer<QDialog> open_;
  QElapsedTimer opened_;
  std::vector<Step> steps_;
  std::size_t done_ = 0;
  int unexpected_ = 0;
  std::set<QDialog*> seen_;
};

// A message that holds the text: read and closed.
inline Script::Step acknowledge(const char* text) {
  return [text](QDialog& dialog) {
    EXPECT_TRUE(dialog.property("text").toString().contains(text)) << dialog.property("text").toString().toStdString();
    click(dialog, "ok");
  };
}

}  // namespace support
