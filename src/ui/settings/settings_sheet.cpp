#include "ui/settings/settings_sheet.h"

#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/path.h"
#include "security/rights.h"
#include "ui/settings/option_pages.h"
#include "ui/settings/price_tester.h"
#include "ui/settings/settings_report.h"

namespace ui {

SettingsSheet::SettingsSheet(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QDialog(parent),
      document_(document),
      texts_(texts),
      parties_(std::make_shared<EditedParties>(document.parties())),
      tariffs_(std::make_shared<EditedTariffs>()),
      tabs_(new QTabWidget) {
  setObjectName("settingsSheet");
  setWindowTitle(texts("IDS_SETTINGS"));
  resize(860, 600);
  tabs_->setObjectName("pages");
  tabs_->setUsesScrollButtons(true);
  if (document.tariffs() != nullptr) {
    tariffs_->tables = tariff::loadTariffTables(document.tariffs()->database(), document.tariffs()->dayEncoding());
  }
  const auto tariffs = tariffs_;
  const auto profilesOf = [tariffs](std::int32_t providerId) {
    QStringList names;
    for (const auto& profile : tariffs->tables.profiles) {
      if (profile.providerId == providerId && !names.contains(toQt(profile.name))) names << toQt(profile.name);
    }
    return names;
  };
  addPage(extensionsPage(parties_, texts));
  addPage(accountsPage(parties_, texts));
  addPage(clientsPage(parties_, texts));
  addPage(trunksPage(parties_, profilesOf, texts));
  if (document.tariffs() != nullptr) {
    for (SettingsPage& page : tariffPages(tariffs_, parties_, texts)) addPage(std::move(page));
    addPage({texts("IDS_PAGE_PRICE_TESTER"), new PriceTester(document, texts), nullptr, nullptr});
  }
  auto& config = document.app().config();
  addPage(callOptionsPage(config, texts));
  addPage(organizationPage(config, texts));
  addPage(placePage(config, texts));
  addPage(interfacePage(config, texts));

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setText(texts("IDS_OK"));
  buttons->button(QDialogButtonBox::Cancel)->setText(texts("IDS_CANCEL"));
  auto* report = buttons->addButton(texts("IDS_SETTINGS_REPORT"), QDialogButtonBox::ActionRole);
  connect(report, &QPushButton::clicked, this, &SettingsSheet::writeReport);
  connect(buttons, &QDialogButtonBox::accepted, this, &SettingsSheet::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &SettingsSheet::reject);
  buttons->button(QDialogButtonBox::Ok)
      ->setEnabled(!document.DatabaseReadOnly() &&
                   document.HasRight(security::ObjectAdministration, security::RightChange));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addWidget(buttons);
}

void SettingsSheet::addPage(SettingsPage page) {
  tabs_->addTab(page.widget, page.caption);
  pages_.push_back(std::move(page));
}

void SettingsSheet::showPage(const QString& caption) {
  for (int i = 0; i < tabs_->count(); ++i) {
    if (tabs_->tabText(i) == caption) tabs_->setCurrentIndex(i);
  }
}

void SettingsSheet::accept() {
  for (std::size_t i = 0; i < pages_.size(); ++i) {
    const QString problem = pages_[i].check ? pages_[i].check() : QString();
    if (problem.isEmpty()) continue;
    tabs_->setCurrentIndex(static_cast<int>(i));
    QMessageBox::warning(this, windowTitle(), problem);
    return;
  }
  try {
    savePartiesAndTariffs();
    for (const SettingsPage& page : pages_) {
      if (page.save) page.save();
    }
  } catch (const jet::Error& error) {
    QMessageBox::warning(this, windowTitle(), toQt(error.description()));
    return;
  }
  QDialog::accept();
}

// Tariffs first: the definitions are loaded anew from them.
void SettingsSheet::savePartiesAndTariffs() {
  if (tariffs_->changed) {
    tariff::saveTariffTables(document_.tariffs()->database(), tariffs_->tables);
    document_.tariffs()->detectDayEncoding();
    document_.parties().load(document_.database(), &document_.tariffs()->database());
  }
  if (parties_->changed) {
    parties_->putInto(document_.parties());
    document_.parties().save(document_.database());
  }
}

void SettingsSheet::writeReport() {
  const std::string folder = document_.app().config().ReadConfigString("Path", "general", foundation::StoreMachine, "");
  const auto file = base::systemPath(folder) / "setari.html";
  if (!writeSettingsReport(file, *parties_, texts_)) {
    QMessageBox::warning(this, windowTitle(), texts_.format("IDS_CANTWRITEFILE", file.string()));
    return;
  }
  document_.app().surroundings().documents.open(file.string());
}

}  // namespace ui
