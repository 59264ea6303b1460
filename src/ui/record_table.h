#pragma once

#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QWidget>

#include "ui/record_table_model.h"
#include "ui/texts.h"

namespace ui {

// A table of records with a search line and buttons to add, delete, import and export (CSV). The page's own keys work:
// Insert adds, Delete deletes the selected rows.
class RecordTable : public QWidget {
  Q_OBJECT

 public:
  // Takes the model over. `name` is the object name of the view, for tests and for the widths.
  RecordTable(RecordTableModel* model, const QString& name, const Texts& texts, QWidget* parent = nullptr);

  [[nodiscard]] QTableView* view() const { return view_; }
  [[nodiscard]] RecordTableModel* model() const { return model_; }
  // Row of the model that is current; -1 when there is none.
  [[nodiscard]] int currentRow() const;
  void setReadOnly(bool readOnly);

 signals:
  void currentRowChanged(int row);

 public slots:
  void addRow();
  void removeSelected();
  void exportCsv();
  void importCsv();

 private:
  QWidget* makeButtons(const Texts& texts);

  const Texts& texts_;
  RecordTableModel* model_;
  QSortFilterProxyModel* sorted_;
  QTableView* view_;
  QWidget* buttons_ = nullptr;
};

}  // namespace ui
