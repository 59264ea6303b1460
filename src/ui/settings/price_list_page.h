#pragma once

#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <memory>
#include <optional>

#include "server/server_doc.h"
#include "server/tariff_trial.h"
#include "tariff/price_list_import.h"
#include "ui/results/result_table.h"
#include "ui/settings/edited_tariffs.h"

namespace ui {

// Takes a provider's price list over as a new profile: first what would change, and what last month would have cost,
// then it is written at once.
class PriceListPage : public QWidget {
  Q_OBJECT

 public:
  PriceListPage(server::CServerDoc& document, std::shared_ptr<EditedTariffs> tariffs, const Texts& texts,
                QWidget* parent = nullptr);

 signals:
  // The tariff database changed.
  void taken();

 protected:
  // Enter tries the list; it is not the sheet's OK.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void browse();
  void offerProfiles();
  void forgetTrial();
  void tryList();
  void takeList();
  [[nodiscard]] const exchange::ProviderDefinition* provider() const;
  // Throws tariff::PriceListError.
  void readList();
  [[nodiscard]] tariff::PriceListImport plan();
  void showPlan(const tariff::PriceListImport& plan, const server::TariffTrial& trial);

  server::CServerDoc& document_;
  std::shared_ptr<EditedTariffs> tariffs_;
  const Texts& texts_;
  QLineEdit* file_;
  QComboBox* provider_;
  QComboBox* profile_;
  QDateEdit* from_;
  QComboBox* currency_;
  QLineEdit* increment_;
  QLineEdit* headings_;
  QPushButton* try_;
  QPushButton* take_;
  QLabel* summary_;
  ResultTable* changes_;
  tariff::PriceList list_;  // that was tried
  std::int64_t worth_ = 0;  // prices of it that differ
};

}  // namespace ui
