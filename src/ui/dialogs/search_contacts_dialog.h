#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>

#include "contacts/contact_search.h"
#include "server/server_doc.h"
#include "ui/dialogs/form_dialog.h"

namespace ui {

// Finds contacts by name, telephone number and address.
class CSearchContactsDlg : public FormDialog {
 public:
  CSearchContactsDlg(server::CServerDoc& document, const Texts& texts, QWidget* parent);

  // The confirming button searches; the dialog stays.
  void accept() override;

 private:
  void buildInputs();
  void buildList();
  void buildButtons();
  void search();
  void showResult();
  void openSelected();
  void writePage();
  [[nodiscard]] contacts::SearchInput input() const;
  void storeOptions();

  server::CServerDoc& document_;
  contacts::SearchResult result_;
  QLineEdit* name_ = nullptr;
  QLineEdit* telephone_ = nullptr;
  QLineEdit* address_ = nullptr;
  QCheckBox* ownArea_ = nullptr;
  QCheckBox* allPlaces_ = nullptr;
  QTableWidget* list_ = nullptr;
  QLabel* count_ = nullptr;
  QPushButton* page_ = nullptr;
};

}  // namespace ui
