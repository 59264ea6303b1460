#pragma once

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <vector>

#include "server/server_doc.h"
#include "tariff/currencies.h"
#include "ui/dialogs/form_dialog.h"

namespace ui {

// The currencies and their rates: a list, and under it the fields of the selected one. A copy is edited, which replaces
// the list when the dialog is confirmed.
class CurrenciesDialog : public FormDialog {
 public:
  CurrenciesDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent);
  void accept() override;
  // Asks before what was edited is lost.
  void reject() override;

 private:
  void buildFields();
  void fillRow(int row);
  void fillList();
  void showSelected();
  void updateRateLabels();
  [[nodiscard]] tariff::CURRENCYDESC* selected();
  [[nodiscard]] const tariff::CURRENCYDESC* defaultEntry() const;
  void add();
  void removeSelected();
  void makeDefault();
  [[nodiscard]] QString problem() const;
  enum class Saving { Done, ChangedByOther, Failed };
  Saving save();
  void openRates();

  server::CServerDoc& document_;
  std::vector<tariff::CURRENCYDESC> entries_;
  std::vector<tariff::CURRENCYDESC> stored_;  // as they were when the operator began
  bool allowed_;                              // to change, not only to look
  bool edited_ = false;
  QTableWidget* list_ = nullptr;
  QWidget* fields_ = nullptr;
  QLineEdit* name_ = nullptr;
  QLabel* rateLabel_ = nullptr;  // "1 EUR ="
  QDoubleSpinBox* rate_ = nullptr;
  QLabel* rateUnit_ = nullptr;
  QCheckBox* reverse_ = nullptr;
  QPushButton* remove_ = nullptr;
  QPushButton* makeDefault_ = nullptr;
  QLabel* hint_ = nullptr;
  bool showing_ = false;  // fields are being filled, not edited
};

}  // namespace ui
