#pragma once

#include <QDialog>
#include <QTabWidget>
#include <memory>
#include <vector>

#include "server/server_doc.h"
#include "ui/settings/party_pages.h"
#include "ui/settings/settings_page.h"
#include "ui/settings/tariff_pages.h"
#include "ui/texts.h"

namespace ui {

// The settings: parties, tariffs, options. Nothing is written before the sheet is confirmed.
class SettingsSheet : public QDialog {
  Q_OBJECT

 public:
  SettingsSheet(server::CServerDoc& document, const Texts& texts, QWidget* parent = nullptr);

  // Opens on the page of that caption.
  void showPage(const QString& caption);

 public slots:
  void accept() override;

 private:
  void addPage(SettingsPage page);
  void savePartiesAndTariffs();
  void writeReport();

  server::CServerDoc& document_;
  const Texts& texts_;
  std::shared_ptr<EditedParties> parties_;
  std::shared_ptr<EditedTariffs> tariffs_;
  std::vector<SettingsPage> pages_;
  QTabWidget* tabs_;
};

}  // namespace ui
