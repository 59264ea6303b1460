// ui_pictures FOLDER: pictures of every window over the sample exchange, in both languages and with a light and a dark
// palette. QT_SCALE_FACTOR=2 makes those of a dense screen. For looking at, after a change of the windows or texts.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QListWidget>
#include <QPalette>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTableView>
#include <QTableWidget>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "alarms/rule.h"
#include "album.h"
#include "folders/catalogue.h"
#include "platform/clock.h"
#include "sample/call_file.h"
#include "sample/company.h"
#include "schedule/schedule_table.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "server/server_doc.h"
#include "support/temporary_folder.h"
#include "ui/dialogs.h"
#include "ui/dialogs/columns_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/first_run/first_run_wizard.h"
#include "ui/login_dialogs.h"
#include "ui/main_frame.h"
#include "ui/page_setup.h"
#include "ui/qt_texts.h"
#include "ui/readable_palette.h"
#include "ui/readable_style.h"
#include "ui/results/results.h"
#include "ui/screen_fit.h"
#include "ui/settings/settings_sheet.h"

namespace {

using namespace support;

using pictures::Album;

constexpr std::int64_t kCalls = 3000;
// Screens as offices have them, and what a window's frame and the desktop's bar take of them.
constexpr QSize kUsualScreen(1280, 800);
constexpr QSize kLargeScreen(1920, 1080);
constexpr QSize kWindowFrame(0, 60);

// Opens nothing: the pictures are all that is wanted.
class NoDocuments : public platform::DocumentHandler {
 public:
  bool open(const std::string&) override { return true; }
  platform::Printed print(const std::filesystem::path&) override { return platform::Printed::Done; }
};

QPalette darkPalette() {
  QPalette palette;
  const QColor window(0x2b, 0x2d, 0x30);
  const QColor base(0x1e, 0x1f, 0x22);
  const QColor text(0xdf, 0xe1, 0xe5);
  const QColor faint(0x85, 0x88, 0x8d);
  for (const auto role : {QPalette::Window, QPalette::Button, QPalette::AlternateBase}) palette.setColor(role, window);
  for (const auto role : {QPalette::Base, QPalette::ToolTipBase}) palette.setColor(role, base);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, faint);
  }
  palette.setColor(QPalette::BrightText, Qt::white);
  palette.setColor(QPalette::PlaceholderText, faint);
  palette.setColor(QPalette::Highlight, QColor(0x2f, 0x65, 0xca));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x6b, 0x9b, 0xfa));
  palette.setColor(QPalette::Light, window.lighter(150));
  palette.setColor(QPalette::Midlight, window.lighter(125));
  palette.setColor(QPalette::Mid, window.darker(130));
  palette.setColor(QPalette::Dark, window.darker(160));
  palette.setColor(QPalette::Shadow, Qt::black);
  return palette;
}

template <typename Widget>
Widget& child(QWidget& window, const char* name) {
  auto* found = window.findChild<Widget*>(name);
  if (found == nullptr) throw std::runtime_error(std::string("there is no ") + name);
  return *found;
}

// A workstation of one language over a data folder.
struct Workstation {
  Workstation(const std::filesystem::path& storeFile, const char* language) : store(storeFile), settings(store) {
    store.writeString("general", "Lang", language);
    store.writeString("general", "AutoLoginUser", server::kAdministrator);
    app.InitInstance("", server::CServerApp::OneCopy::Shared);
    person.setLanguage(app.language());
    QApplication::installTranslator(&qtTexts);
  }

  foundation::MachineStore store;
  foundation::ConfigManager settings;
  ui::QtOperator person;
  NoDocuments documents;
  platform::SystemClock clock;
  ui::QtLoginPrompt login{settings, [this]() -> const foundation::LanguageFile& { return app.language(); }};
  server::CServerApp app{store.file(), TALLYBOOK_BINARY_DIR, server::Surroundings{person, login, clock, documents, {}}};
  ui::QtTexts qtTexts{app.language()};
};

constexpr const char* kPriceList =
    "prefix;name;price;increment\n0044;Great Britain;0,09;60/1\n0033;France;0,05;1/1\n004072;Mobile;0,08;1/1\n"
    "0049;Germany;0,21;60/60\n00210;Nowhere;x;1/1\n";

// Alarm rules that the sample's calls meet, and a report by mail.
void addWatches(jet::Database& main) {
  alarms::saveRule(main, {.name = "Abroad at night",
                          .kind = alarms::Kind::Destination,
                          .subject = alarms::Subject::Extension,
                          .prefixes = "abroad",
                          .outsideHours = true,
                          .mail = "office@example.com"});
  alarms::saveRule(main, {.name = "Dear department", .subject = alarms::Subject::Department, .limit = 20});
  schedule::Schedule month{.name = "Month for the office",
                           .folder = schedule::kMonthPage,
                           .period = "last-month",
                           .days = "1",
                           .recipients = "office@example.com",
                           .user = server::kAdministrator};
  schedule::beginAnew(month, platform::SystemClock().now());
  schedule::ScheduleTable(main).save(month);
}

void makeSample(const std::filesystem::path& folder, const std::filesystem::path& storeFile) {
  foundation::MachineStore store(storeFile);
  foundation::ConfigManager config(store);
  platform::NoOperator nobody;
  const platform::SystemClock clock;
  server::makeDataFolder({folder, "secret", true}, {config, nobody, clock},
                         [&] { server::useDataFolder(folder, config); });
  sample::CallPlan plan;
  plan.count = kCalls;
  plan.days = 60;
  plan.lastDay = clock.now();
  sample::writeCalls(folder / "monitor" / "monitor.data", plan, false, nobody);
  addWatches(*schema::DatabasePlace::ofFolder(folder).open(schema::Which::Main, jet::OpenMode::ReadWrite));
  std::ofstream(folder / "prices.csv") << kPriceList;
  config.WriteConfigString("secret", "AutoLoginPassword", "general", foundation::StoreMachine);
  config.WriteConfigString("https://rates.example", "UrlCurrency", "general", foundation::StoreMachine);
}

// The chart in its shapes, beside the period before.
void takeCharts(Album& album, server::CServerDoc& document, ui::CMainFrame& frame) {
  document.callFilter().thisMonth();
  frame.selectFolder(114);
  frame.reloadFolder();
  auto& shapes = child<QComboBox>(frame, "chartShape");
  child<QCheckBox>(frame, "chartCompare").click();
  for (int shape = 0; shape < shapes.count(); ++shape) {
    shapes.setCurrentIndex(shape);
    emit shapes.activated(shape);
    album.take(frame, "chart-days-" + std::to_string(shape));
  }
  frame.selectFolder(106);
  album.take(frame, "chart-departments");
  child<QCheckBox>(frame, "chartCompare").click();
  document.callFilter().clear();
  frame.reloadFolder();
}

void takeFrame(Album& album, Workstation& station, server::CServerDoc& document, const ui::Texts& texts) {
  ui::CMainFrame frame(document, texts, station.person);
  frame.start();
  frame.resize((kUsualScreen - kWindowFrame).boundedTo(ui::availableSize(frame)));
  for (const int folder : {100, 101, 103, 113, 115, 97, 98, 99}) {
    if (folders::findFolder(folder) == nullptr) continue;
    frame.selectFolder(folder);
    album.take(frame, "main-" + std::to_string(folder));
  }
  takeCharts(album, document, frame);
  frame.resize((kLargeScreen - kWindowFrame).boundedTo(ui::availableSize(frame)));
  for (const int folder : {100, 101}) {
    frame.selectFolder(folder);
    album.take(frame, "wide-" + std::to_string(folder));
  }
  frame.selectFolder(100);
}

void takeSettings(Album& album, server::CServerDoc& document, const ui::Texts& texts) {
  ui::SettingsSheet sheet(document, texts);
  for (int i = 0; i < static_cast<int>(sheet.pages().size()); ++i) {
    const ui::SettingsPage& page = sheet.pages()[static_cast<std::size_t>(i)];
    sheet.showPage(page.caption);
    if (auto* calculate = page.widget->findChild<QPushButton*>("testerCalculate")) {
      child<QLineEdit>(sheet, "testerNumber").setText("0044207946000");
      calculate->click();
    }
    if (auto* tried = page.widget->findChild<QPushButton*>("priceTry")) {
      child<QLineEdit>(sheet, "priceFile").setText(ui::toQt(document.databases().setting() + "prices.csv"));
      child<QLineEdit>(sheet, "priceIncrement").setText("60/1");
      tried->click();
    }
    album.take(sheet, QString("settings-%1").arg(i, 2, 10, QChar('0')).toStdString());
  }
}

void takeDialogs(Album& album, Workstation& station, server::CServerDoc& document, const ui::Texts& texts) {
  album.takeModal("filter", [&] { ui::editCallFilter(document, texts, nullptr); });
  album.takeModal("log-filter", [&] { ui::editLogFilter(document, texts, nullptr); });
  album.takeModal("currencies", [&] { ui::editCurrencies(document, texts, nullptr); });
  album.takeModal("recalc", [&] { ui::updateStoredCalls(document, texts, nullptr); });
  album.takeModal("bill", [&] { ui::makeBill(document, texts, nullptr, "201"); });
  album.takeModal("contact-search", [&] { ui::searchContacts(document, texts, nullptr); });
  album.takeModal(
      "contact-search-found", [&] { ui::searchContacts(document, texts, nullptr); },
      [](QDialog& dialog) {
        child<QLineEdit>(dialog, "name").setText("a");
        child<QPushButton>(dialog, "ok").click();
      });
  album.takeModal("contact", [&] { ui::editContact(document, texts, nullptr, 1); });
  album.takeModal("contact-new", [&] { ui::addContact(document, texts, nullptr); });
  album.takeModal("user", [&] { ui::editUser(document, texts, nullptr, server::kAdministrator); });
  album.takeModal(
      "user-sight", [&] { ui::editUser(document, texts, nullptr, server::kAdministrator); },
      [](QDialog& dialog) {
        child<QTabWidget>(dialog, "tabs").setCurrentIndex(1);
        auto& departments = child<QListWidget>(dialog, "restrictDepartments");
        departments.item(0)->setCheckState(Qt::Checked);
      });
  album.takeModal("user-new", [&] { ui::editUser(document, texts, nullptr, ""); });
  const QString group = ui::toQt(document.users().groups().front().Name);
  album.takeModal("group", [&] { ui::editGroup(document, texts, nullptr, group); });
  album.takeModal(
      "group-members", [&] { ui::editGroup(document, texts, nullptr, group); },
      [](QDialog& dialog) { child<QTabWidget>(dialog, "tabs").setCurrentIndex(1); });
  album.takeModal("convert", [&] { ui::convertOldDatabase(document, texts, nullptr); });
  album.takeModal("columns", [&] {
    const folders::FolderDefinition& calls = *folders::findFolder(100);
    const folders::ColumnLayout layout = folders::defaultLayout(calls.columns, calls.flags);
    ui::ColumnsDialog(texts, calls, layout, layout, nullptr).exec();
  });
  album.takeModal("page-setup", [&] { ui::editPageSetup(nullptr, station.app.config()); });
  album.takeModal("preview", [&] {
    folders::FolderView extensions(*folders::findFolder(101), document.folderServices(), document.valueFormatter());
    ui::previewFolder(document, texts, nullptr, extensions);
  });
  album.takeModal("week", [&] { ui::showWeek(document, texts, nullptr); });
  album.takeModal("price", [&] { ui::explainPrice(document, texts, nullptr, 1); });
  album.takeModal("keys", [&] { ui::showKeys(texts, nullptr, {{texts("IDS_ACTION_COPY"), "Ctrl+C"}}); });
  album.takeModal("about", [&] { ui::showAbout(document, texts, nullptr); });
  album.takeModal("login", [&] { station.login.askLogin(server::kAdministrator); });
  album.takeModal("password", [&] { station.login.askPasswordChange(server::kAdministrator, false); });
  album.takeModal("message", [&] { ui::warn(nullptr, texts, texts("IDS_PERIOD_ORDER")); });
  album.takeModal("question", [&] { ui::ask(nullptr, texts, texts("IDS_SAVERECORD"), ui::Choices::YesNoCancel); });
}

void takeResults(Album& album, server::CServerDoc& document, const ui::Texts& texts) {
  album.takeModal("missed", [&] { ui::showMissedCalls(document, texts, nullptr); });
  album.takeModal(
      "missed-by-hour", [&] { ui::showMissedCalls(document, texts, nullptr); },
      [](QDialog& dialog) { child<QTabWidget>(dialog, "tabs").setCurrentIndex(2); });
  album.takeModal("trunk-load", [&] { ui::showTrunkLoad(document, texts, nullptr); });
  album.takeModal(
      "trunk-load-lines", [&] { ui::showTrunkLoad(document, texts, nullptr); },
      [](QDialog& dialog) { child<QTabWidget>(dialog, "tabs").setCurrentIndex(1); });
  album.takeModal(
      "alarms", [&] { ui::showAlarms(document, texts, nullptr, [] {}); },
      [](QDialog& dialog) {
        child<QTableView>(dialog, "alarmList").selectRow(0);
        child<QPushButton>(dialog, "acknowledge").click();
      });
  album.takeModal("month", [&] { ui::showMonth(document, texts, nullptr); });
  album.takeModal(
      "person", [&] { ui::showPersonData(document, texts, nullptr); },
      [&document](QDialog& dialog) {
        const jet::Snapshot call = document.database().openSnapshot("select DialNumber from Calls where Incoming = 0");
        child<QLineEdit>(dialog, "person").setText(ui::toQt(call.at(0, 0).toText()));
        child<QPushButton>(dialog, "find").click();
      });
  album.takeModal("anonymise", [&] { ui::anonymiseCalls(document, texts, nullptr); });
}

void takeWizard(Album& album, const char* language) {
  const TemporaryFolder folder;
  Workstation station(folder / "machine.ini", language);
  ui::FirstRunWizard wizard(station.app, {});
  const auto go = [&](const std::string& name) {
    album.take(wizard, "wizard-" + name);
    wizard.next();
  };
  wizard.show();
  go("1-language");
  go("2-task");
  child<QLineEdit>(wizard, "folder").setText(ui::toQt((folder / "data").string()));
  child<QCheckBox>(wizard, "sample").setChecked(true);
  go("3-folder");
  go("4-place");
  go("5-exchange");
  album.take(wizard, "wizard-6-password");
  wizard.restart();
  wizard.next();
  child<QRadioButton>(wizard, "convert").setChecked(true);
  wizard.next();
  album.take(wizard, "wizard-7-convert");
}

void takeAll(const std::string& folder, const char* language, const QPalette& palette, const char* look,
             const std::filesystem::path& store) {
  QApplication::setPalette(ui::readablePalette(palette));
  const int percent = static_cast<int>(qApp->devicePixelRatio() * 100);
  Album album(folder, std::string(language) + '-' + look + '-' + std::to_string(percent));
  takeWizard(album, language);
  Workstation station(store, language);
  server::CServerDoc document(station.app);
  if (!document.OnNewDocument(server::StartDuties{.outputPort = false})) throw std::runtime_error("no document");
  const ui::Texts texts(station.app.language());
  takeFrame(album, station, document, texts);
  takeSettings(album, document, texts);
  takeDialogs(album, station, document, texts);
  takeResults(album, document, texts);
  document.OnCloseDocument();
  std::printf("%s %s: %d pictures\n", language, look, album.taken());
}

// A screen as offices have them; the platform's own is small.
void chooseScreen(const std::filesystem::path& file) {
  std::ofstream(file) << R"({"screens": [{"name": "desk", "x": 0, "y": 0, "width": 1920, "height": 1080,
    "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
  setenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + file.string()).c_str(), 0);
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryFolder folder;
  chooseScreen(folder / "screen.json");
  setenv("QT_LOGGING_RULES", "qt.qpa.*=false", 0);  // what this platform lacks is known
  // Folders that the windows propose are no real user's.
  QStandardPaths::setTestModeEnabled(true);
  QApplication application(argc, argv);
  QApplication::setApplicationDisplayName("Tallybook");
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  ui::useReadableStyle();
  if (argc != 2) {
    std::fputs("usage: ui_pictures FOLDER\n", stderr);
    return 2;
  }
  try {
    std::filesystem::create_directories(argv[1]);
    makeSample(folder / "data", folder / "machine.ini");
    const QPalette light = QApplication::style()->standardPalette();
    for (const char* language : {"EN", "RO"}) {
      takeAll(argv[1], language, light, "light", folder / "machine.ini");
      takeAll(argv[1], language, darkPalette(), "dark", folder / "machine.ini");
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
