#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QListWidget>
#include <QStackedWidget>
#include <memory>
#include <vector>

#include "server/server_doc.h"
#include "ui/file_line.h"
#include "ui/settings/edited_parties.h"
#include "ui/settings/edited_tariffs.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"
#include "ui/undo_stack.h"

namespace ui {

// The settings: parties, tariffs, options; a list of the pages beside the page that is open. Nothing is written before
// the sheet is confirmed or applied.
class SettingsSheet : public QDialog {
  Q_OBJECT

 public:
  SettingsSheet(server::CServerDoc& document, const Texts& texts, QWidget* parent = nullptr);

  // What is saved of parties and tariffs can be undone there from now on. It must outlive the sheet.
  void keepStepsIn(UndoStack& undo) { undo_ = &undo; }
  // Opens on the page of that caption.
  void showPage(const QString& caption);
  [[nodiscard]] const std::vector<SettingsPage>& pages() const { return pages_; }

 public slots:
  void accept() override;
  // Asks before what was edited is lost. Accepted when something was applied.
  void reject() override;
  // Writes what was edited, and stays open.
  void apply();

 private:
  void addPages();
  void addPriceListPage();
  void reloadTariffs();
  void addGroup(const char* captionKey);
  void addPage(SettingsPage page);
  void buildButtons();
  void showRow(int row);
  [[nodiscard]] const char* manualPageOfSettings(const QString& caption) const;
  [[nodiscard]] bool changed() const;
  bool save();
  void savePartiesAndTariffs();
  void exportPage(const RecordTable& table, const QString& caption);
  void writeReport();

  server::CServerDoc& document_;
  const Texts& texts_;
  bool allowed_;  // to change, not only to look
  bool applied_ = false;
  UndoStack* undo_ = nullptr;
  std::shared_ptr<EditedParties> parties_;
  std::shared_ptr<EditedTariffs> tariffs_;
  std::vector<SettingsPage> pages_;
  QListWidget* list_;      // captions of groups and pages
  QStackedWidget* stack_;  // the pages, in their order
  FileLine* written_;
  QDialogButtonBox* buttons_;
};

}  // namespace ui
