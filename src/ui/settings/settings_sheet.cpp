#include "ui/settings/settings_sheet.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/path.h"
#include "foundation/definition_change.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/mnemonics.h"
#include "ui/dialogs/report_place.h"
#include "ui/manual.h"
#include "ui/record_table_csv.h"
#include "ui/screen_fit.h"
#include "ui/scroll_page.h"
#include "ui/settings/definitions_undo.h"
#include "ui/settings/exchange_settings.h"
#include "ui/settings/option_pages.h"
#include "ui/settings/party_pages.h"
#include "ui/settings/price_list_page.h"
#include "ui/settings/price_tester.h"
#include "ui/settings/settings_report.h"
#include "ui/settings/tariff_pages.h"
#include "ui/settings/watch_pages.h"

namespace ui {

namespace {

// Of an entry of the list: the page that it opens.
constexpr int kPageRole = Qt::UserRole;
constexpr int kListSpacing = 2;  // pixels around an entry

QStringList currencyCodes(const tariff::Currencies& currencies) {
  QStringList codes;
  for (const auto& currency : currencies.entries) codes << toQt(currency.name);
  return codes;
}

}  // namespace

SettingsSheet::SettingsSheet(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QDialog(parent),
      document_(document),
      texts_(texts),
      allowed_(mayChangeAdministration(document)),
      parties_(std::make_shared<EditedParties>(document.smdr().parties())),
      tariffs_(
          std::make_shared<EditedTariffs>(document.app().config().ReadConfigString(foundation::keys::CountryCode))),
      list_(named(new QListWidget, "pages")),
      stack_(new QStackedWidget),
      written_(new FileLine(document, texts)),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel |
                                    QDialogButtonBox::Help)) {
  setObjectName("settingsSheet");
  setWindowTitle(texts("IDS_SETTINGS"));
  if (document.smdr().tariffs() != nullptr) {
    tariffs_->tables =
        tariff::loadTariffTables(document.smdr().tariffs()->database(), document.smdr().tariffs()->dayEncoding());
  }
  list_->setAccessibleName(texts("IDS_SETTINGS"));
  buildButtons();
  addPages();
  list_->setSpacing(kListSpacing);
  list_->setFixedWidth(list_->sizeHintForColumn(0) + 2 * list_->frameWidth() + fontMetrics().averageCharWidth() * 4);

  auto* top = new QHBoxLayout;
  top->addWidget(list_);
  top->addWidget(stack_, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top, 1);
  if (!allowed_) {
    auto* hint = new QLabel(texts(document.DatabaseReadOnly() ? "IDS_SETTINGS_READONLY" : "IDS_MAY_ONLY_LOOK"));
    hint->setWordWrap(true);
    layout->addWidget(hint);
  }
  layout->addWidget(written_);
  layout->addWidget(buttons_);
  buttons_->button(QDialogButtonBox::Ok)->setDefault(true);
  connect(list_, &QListWidget::currentRowChanged, this, &SettingsSheet::showRow);
  showPage(pages_.front().caption);
  list_->setFocus();
  resize(fontMetrics().averageCharWidth() * 165, fontMetrics().lineSpacing() * 38);
  fitToScreen(*this);
}

void SettingsSheet::addPages() {
  addGroup("IDS_SETTINGS_EXCHANGE");
  addPage(extensionsPage(parties_, texts_));
  addPage(accountsPage(parties_, texts_));
  addPage(clientsPage(parties_, texts_));
  addPage(trunksPage(parties_, tariffs_, texts_));
  addPage(exchangePage(document_.app().config(), document_.app().surroundings().person, texts_));
  if (document_.smdr().tariffs() != nullptr) {
    addGroup("IDS_SETTINGS_TARIFFS");
    for (SettingsPage& page : tariffPages(tariffs_, parties_, currencyCodes(document_.currencies()), texts_)) {
      addPage(std::move(page));
    }
    SettingsPage tester;
    tester.caption = texts_("IDS_PAGE_PRICE_TESTER");
    tester.widget = new PriceTester(document_, texts_);
    addPage(std::move(tester));
    addPriceListPage();
  }
  addGroup("IDS_SETTINGS_WATCH");
  addPage(alarmRulesPage(document_, texts_));
  addPage(schedulesPage(document_, texts_));
  addPage(mailPage(document_, texts_));
  addGroup("IDS_SETTINGS_OPTIONS");
  server::CServerApp& app = document_.app();
  addPage(callOptionsPage(app, texts_));
  addPage(organizationPage(app, texts_));
  addPage(placePage(app, texts_));
  addPage(interfacePage(app, texts_));
}

void SettingsSheet::addPriceListPage() {
  auto* prices = new PriceListPage(document_, tariffs_, texts_);
  SettingsPage page;
  page.caption = texts_("IDS_PAGE_PRICE_LIST");
  page.widget = prices;
  addPage(std::move(page));
  connect(prices, &PriceListPage::taken, this, [this] {
    attempt(this, texts_, [this] { reloadTariffs(); });
    applied_ = true;
  });
}

// After a change of the database that was not made in the tables.
void SettingsSheet::reloadTariffs() {
  tariff::TariffDatabase& tariffs = *document_.smdr().tariffs();
  tariffs.detectDayEncoding();
  const auto tables = [this](void (RecordTableModel::*step)()) {
    for (const SettingsPage& page : pages_) {
      if (page.table != nullptr) (page.table->model()->*step)();
    }
  };
  tables(&RecordTableModel::beginBulkChange);
  tariffs_->tables = tariff::loadTariffTables(tariffs.database(), tariffs.dayEncoding());
  tariffs_->touch();
  tariffs_->markSaved();
  tables(&RecordTableModel::endBulkChange);
}

void SettingsSheet::addGroup(const char* captionKey) {
  auto* item = new QListWidgetItem(texts_(captionKey), list_);
  item->setFlags(Qt::NoItemFlags);
  QFont bold = list_->font();
  bold.setBold(true);
  item->setFont(bold);
  item->setForeground(palette().color(QPalette::Text));
}

void SettingsSheet::addPage(SettingsPage page) {
  auto* item = new QListWidgetItem("    " + page.caption, list_);
  item->setData(kPageRole, static_cast<int>(pages_.size()));
  assignMnemonics(*page.widget, assignMnemonics(*buttons_));
  if (!allowed_) {
    if (page.table != nullptr) page.table->setReadOnly(true);
    if (page.save) page.widget->setEnabled(false);
  }
  if (page.table != nullptr) {
    connect(page.table, &RecordTable::exportWanted, this,
            [this, table = page.table, caption = page.caption] { exportPage(*table, caption); });
  }
  stack_->addWidget(new ScrollPage(page.widget));
  pages_.push_back(std::move(page));
}

void SettingsSheet::buildButtons() {
  const auto prepare = [this](QDialogButtonBox::StandardButton which, const char* key, const char* name) {
    QPushButton* button = named(buttons_->button(which), name);
    button->setText(texts_(key));
    return button;
  };
  QPushButton* ok = prepare(QDialogButtonBox::Ok, "IDS_OK", "ok");
  QPushButton* applying = prepare(QDialogButtonBox::Apply, "IDS_APPLY", "apply");
  prepare(QDialogButtonBox::Cancel, "IDS_CANCEL", "cancel");
  prepare(QDialogButtonBox::Help, "IDS_HELP", "help");
  connect(buttons_, &QDialogButtonBox::helpRequested, this, [this] { askForManual(*this); });
  ok->setEnabled(allowed_);
  applying->setEnabled(allowed_);
  auto* report = named(buttons_->addButton(texts_("IDS_SETTINGS_REPORT"), QDialogButtonBox::ResetRole), "report");
  connect(report, &QPushButton::clicked, this, &SettingsSheet::writeReport);
  connect(applying, &QPushButton::clicked, this, &SettingsSheet::apply);
  connect(buttons_, &QDialogButtonBox::accepted, this, &SettingsSheet::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &SettingsSheet::reject);
}

void SettingsSheet::showRow(int row) {
  const QListWidgetItem* item = list_->item(row);
  if (item == nullptr || !item->data(kPageRole).isValid()) return;
  stack_->setCurrentIndex(item->data(kPageRole).toInt());
  setProperty(kManualPage, manualPageOfSettings(pages_[item->data(kPageRole).toUInt()].caption));
}

// The page of the manual about a page of the settings.
const char* SettingsSheet::manualPageOfSettings(const QString& caption) const {
  for (const char* key : {"IDS_PAGE_PROVIDERS", "IDS_PAGE_PROFILES", "IDS_PAGE_DESTINATIONS", "IDS_PAGE_CHARGES",
                          "IDS_AREAS", "IDS_PAGE_PRICE_TESTER"}) {
    if (texts_(key) == caption) return "tariffs";
  }
  return texts_("IDS_PAGE_ORGANIZATION") == caption ? "bills" : "exchange";
}

void SettingsSheet::showPage(const QString& caption) {
  for (int row = 0; row < list_->count(); ++row) {
    const QVariant page = list_->item(row)->data(kPageRole);
    if (page.isValid() && pages_[page.toUInt()].caption == caption) list_->setCurrentRow(row);
  }
}

bool SettingsSheet::changed() const {
  return parties_->changed() || tariffs_->changed() ||
         std::any_of(pages_.begin(), pages_.end(), [](const auto& page) { return page.changed && page.changed(); });
}

void SettingsSheet::accept() {
  if (save()) QDialog::accept();
}

void SettingsSheet::apply() {
  applied_ = save() || applied_;
}

void SettingsSheet::reject() {
  if (allowed_ && changed() && !confirmLoss(this, texts_, texts_("IDS_CONFIRM_LOSE_CHANGES"))) return;
  done(applied_ ? Accepted : Rejected);
}

bool SettingsSheet::save() {
  for (const SettingsPage& page : pages_) {
    const QString problem = page.check ? page.check() : QString();
    if (problem.isEmpty()) continue;
    showPage(page.caption);
    warn(this, texts_, problem);
    return false;
  }
  return attempt(this, texts_, [this] {
    savePartiesAndTariffs();
    for (const SettingsPage& page : pages_) {
      if (page.save) page.save();
    }
  });
}

// Tariffs first: the definitions are loaded again from them.
void SettingsSheet::savePartiesAndTariffs() {
  if (!tariffs_->changed() && !parties_->changed()) return;
  const bool withTariffs = tariffs_->changed();
  StoredDefinitions before = storedDefinitions(document_, withTariffs);
  if (withTariffs) {
    tariff::saveTariffTables(document_.smdr().tariffs()->database(), tariffs_->tables);
    document_.smdr().tariffs()->detectDayEncoding();
    document_.smdr().parties().load(document_.database(), &document_.smdr().tariffs()->database());
    tariffs_->markSaved();
  }
  {
    tariff::TariffDatabase* const tariffs = document_.smdr().tariffs();
    foundation::DefinitionChange change(document_.smdr().parties(), document_.database(),
                                        tariffs == nullptr ? nullptr : &tariffs->database());
    parties_->putInto(document_.smdr().parties());
    change.save();
  }
  for (const SettingsPage& page : pages_) {
    if (page.table != nullptr) page.table->model()->beginBulkChange();
  }
  parties_->takeFrom(document_.smdr().parties());
  for (const SettingsPage& page : pages_) {
    if (page.table == nullptr) continue;
    page.table->model()->endBulkChange();
    page.table->model()->forgetSteps();
  }
  if (undo_ == nullptr) return;
  undo_->push(texts_("IDS_UNDO_DEFINITIONS"),
              bringBackDefinitions(document_, std::move(before), storedDefinitions(document_, withTariffs)));
}

void SettingsSheet::exportPage(const RecordTable& table, const QString& caption) {
  const std::filesystem::path file =
      askFile(document_.app().config(), texts_, this, {"saveTable", "IDS_EXPORT_CSV", {"CSV (*.csv)"}, caption});
  if (!file.empty() && exportTable(*table.model(), texts_, this, toQt(file.string()))) written_->say(file);
}

void SettingsSheet::writeReport() {
  const auto file = reportFile(document_, "setari.html");
  if (!writeSettingsReport(file, pages_, texts_)) {
    return warn(this, texts_, texts_.format("IDS_CANTWRITEFILE", file.string()));
  }
  handOver(document_, texts_, this, file, ReportUse::Open);
}

}  // namespace ui
