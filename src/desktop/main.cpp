#include <csignal>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "base/version.h"
#include "platform/clock.h"
#include "server/library_versions.h"
#include "server/program_files.h"
#include "server/server_app.h"
#include "server/server_doc.h"
#include "ui/cut_texts.h"
#include "ui/first_run.h"
#include "ui/focus_outline.h"
#include "ui/guarded_application.h"
#include "ui/login_dialogs.h"
#include "ui/main_frame.h"
#include "ui/manual.h"
#include "ui/qt_document_handler.h"
#include "ui/qt_operator.h"
#include "ui/qt_texts.h"
#include "ui/readable_palette.h"
#include "ui/readable_style.h"
#include "ui/single_lines.h"

namespace {

// The words after the program's name, as one text: a profile or "/v".
std::string commandLineOf(const QStringList& arguments) {
  return ui::fromQt(QStringList(arguments.mid(1)).join(' '));
}

void printVersions() {
  std::cout << base::kProgramName << ' ' << base::kProgramVersion << "\nQt " << qVersion() << '\n';
  for (const std::string& library : server::libraryVersions()) std::cout << library << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  // Before anything that needs a display.
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    printVersions();
    return 0;
  }
  // A limit on the size of files is met like a full disk: by the write that fails, with its message.
  std::signal(SIGXFSZ, SIG_IGN);
  ui::GuardedApplication application(argc, argv);
  QApplication::setApplicationName(base::kProgramName);
  QApplication::setApplicationDisplayName(base::kProgramName);
  QApplication::setApplicationVersion(base::kProgramVersion);
  QApplication::setDesktopFileName("tallybook");

  ui::useReadableStyle();
  ui::keepPaletteReadable();
  ui::showFocusOutlines();
  ui::tellCutTexts();
  ui::keepLinesSingle();
  ui::QtOperator person;
  application.setReport([&person](const std::string& fault) { person.messageBox(fault); });
  const platform::SystemClock clock;
  const auto storeFile = foundation::MachineStore::defaultFile();

  // The login prompt needs the application's settings and texts, which need the prompt among their surroundings.
  foundation::MachineStore store(storeFile);
  foundation::ConfigManager settings(store);
  ui::QtDocumentHandler documents(person, settings);
  foundation::LanguageFile noTexts;
  std::unique_ptr<server::CServerApp> app;
  ui::QtLoginPrompt login(
      settings, [&app, &noTexts]() -> const foundation::LanguageFile& { return app ? app->language() : noTexts; });
  app = std::make_unique<server::CServerApp>(
      storeFile, server::programFilesFolder(),
      server::Surroundings{person, login, clock, documents, [&](const std::string& reason) {
                             return ui::chooseDatabase(settings, reason, ui::Texts(app->language()));
                           }});
  person.setLanguage(app->language());
  ui::QtTexts qtTexts(app->language());
  QApplication::installTranslator(&qtTexts);
  const ui::ManualKeys manualKeys(*app);
  switch (app->InitInstance(commandLineOf(QApplication::arguments()), server::CServerApp::OneCopy::Enforced)) {
    case server::CServerApp::Start::Ended:
      return 0;
    case server::CServerApp::Start::Failed:
      if (app->anotherCopyRuns()) person.messageBox(app->language().Translate("IDS_ANOTHER_COPY"));
      return 1;
    case server::CServerApp::Start::Ready:
      break;
  }
  const ui::Texts texts(app->language());
  try {
    std::optional<security::Credentials> chosen;
    if (!ui::firstRun(*app, chosen)) return 0;
    if (chosen) login.answerOnce(*chosen);
  } catch (const std::exception& error) {
    person.messageBox(error.what());
    return 1;
  }

  server::CServerDoc document(*app);
  if (!document.OnNewDocument(server::StartDuties{})) return 1;
  int status = 0;
  {
    ui::CMainFrame frame(document, texts, person);
    person.setParent(&frame);
    login.setParent(&frame);
    // Seen at once, however long the first list takes.
    frame.show();
    frame.start();
    status = QApplication::exec();
  }
  document.OnCloseDocument();
  return status;
}
