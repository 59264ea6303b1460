#include "ui/manual.h"

#include <QApplication>
#include <QKeyEvent>
#include <filesystem>

#include "base/text.h"
#include "folders/catalogue.h"
#include "folders/numbers.h"

namespace ui {

namespace {

struct WindowPage {
  std::string_view window;  // its object name
  const char* page;
};
constexpr WindowPage kPages[] = {
    {"mainFrame", "index"},
    {"callsFilter", "filter"},
    {"saveFilter", "filter"},
    {"since", "filter"},
    {"currencies", "tariffs"},
    {"recalc", "tariffs"},
    {"whyPrice", "tariffs"},
    {"bill", "bills"},
    {"searchContacts", "contacts"},
    {"contactsSheet", "contacts"},
    {"conflict", "contacts"},
    {"convertDialog", "moving"},
    {"conversionReport", "moving"},
    {"userDialog", "users"},
    {"groupDialog", "users"},
    {"logFilter", "users"},
    {"loginDialog", "users"},
    {"passwordDialog", "users"},
    {"week", "statistics"},
    {"columns", "calls"},
    {"pageSetup", "reports"},
    {"preview", "reports"},
    {"savePdf", "reports"},
    {"export", "reports"},
    {"saveChart", "statistics"},
    {"monthPage", "reports"},
    {"missed", "managers"},
    {"trunkLoad", "managers"},
    {"alarms", "managers"},
    {"alarmTrial", "managers"},
    {"personData", "contacts"},
    {"anonymise", "contacts"},
    {"keys", "index"},
    {"about", "index"},
    {"firstRun", "start"},
    {"chooseDatabase", "problems"},
    {"serverAddress", "problems"},
    {"message", "problems"},
    {"settingsSheet", "exchange"},
};

const char* knownPage(const QWidget& window) {
  const std::string name = window.objectName().toStdString();
  for (const WindowPage& known : kPages) {
    if (known.window == name) return known.page;
  }
  return nullptr;
}

std::string pageFile(server::CServerApp& app, const std::string& language, std::string_view page) {
  const std::filesystem::path file = app.programFolder() / "manual" / language / (std::string(page) + ".html");
  std::error_code fault;
  return std::filesystem::is_regular_file(file, fault) ? file.string() : std::string();
}

}  // namespace

std::string manualPageOf(const QWidget& window) {
  for (const QWidget* each = &window; each != nullptr; each = each->parentWidget()) {
    if (const QVariant page = each->property(kManualPage); page.isValid()) return page.toString().toStdString();
    if (const char* page = knownPage(*each)) return page;
  }
  return "index";
}

std::string manualPageOfFolder(int folder) {
  if (folder == folders::FolderContacts) return "contacts";
  const folders::FolderDefinition* definition = folders::findFolder(folder);
  if (definition == nullptr) return "index";
  if (folders::isStatistic(*definition)) return "statistics";
  return definition->condition == folders::ConditionSource::CallFilter ? "calls" : "users";
}

std::string manualAddress(server::CServerApp& app, std::string_view page) {
  const std::string configured = app.config().ReadConfigString(foundation::keys::Manual);
  if (!configured.empty()) return configured;
  const std::string own = pageFile(app, base::foldAscii(app.language().NativeLanguage()), page);
  return own.empty() ? pageFile(app, "en", page) : own;
}

bool openManual(server::CServerApp& app, std::string_view page) {
  const std::string address = manualAddress(app, page);
  return !address.empty() && app.surroundings().documents.open(address);
}

void askForManual(QWidget& window) {
  QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
  QCoreApplication::sendEvent(&window, &press);
}

ManualKeys::ManualKeys(server::CServerApp& app) : app_(app) {
  qApp->installEventFilter(this);
}

bool ManualKeys::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return false;
  const auto* const key = static_cast<const QKeyEvent*>(event);
  // Widgets hand keys on to their parents: once is enough, at the first that is asked.
  const auto* const widget = qobject_cast<const QWidget*>(watched);
  if (widget == nullptr || key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier) return false;
  return openManual(app_, manualPageOf(*widget));
}

}  // namespace ui
