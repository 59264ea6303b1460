#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QWidget>

#include "ui/record_table_model.h"
#include "ui/texts.h"

namespace ui {

// A table of records with a search line and buttons to add, delete, import and export (CSV). The page's own keys work:
// Insert adds, Delete deletes the selected rows, Ctrl+Z takes the last change back. A value that is refused is
// explained under the table.
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
  // The operator wants the table as a file.
  void exportWanted();

 public slots:
  void addRow();
  void removeSelected();
  void undo();
  void importCsv();

 protected:
  // Enter edits the current cell; it is not the dialog's OK.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QWidget* makeButtons();
  QPushButton* addButton(QLayout& bar, const char* key, const char* name, void (RecordTable::*slot)());
  void offerButtons();
  void explainRefusal(int column, const QString& text);

  const Texts& texts_;
  RecordTableModel* model_;
  QSortFilterProxyModel* sorted_;
  QTableView* view_;
  QLineEdit* search_;
  QLabel* problem_;
  QPushButton* add_ = nullptr;  // null where rows are not added
  QPushButton* delete_ = nullptr;
  QPushButton* undo_ = nullptr;
  QPushButton* import_ = nullptr;
  bool readOnly_ = false;
};

}  // namespace ui
