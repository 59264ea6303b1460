#pragma once

#include <QAbstractTableModel>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <vector>

#include "folders/plain_table.h"
#include "server/server_doc.h"
#include "ui/file_line.h"
#include "ui/sorted_table.h"
#include "ui/texts.h"

namespace ui {

// A table of results, the model of a table view.
class ResultModel : public QAbstractTableModel {
 public:
  static constexpr int kSortRole = Qt::UserRole;  // a number, where the cell is one or a moment

  explicit ResultModel(const Texts& texts, QObject* parent = nullptr);
  void setTable(folders::PlainTable table);
  [[nodiscard]] const folders::PlainTable& table() const { return table_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  folders::PlainTable table_;
  folders::Separators separators_;
};

// Results as a table to look at: found in with a line over it, sorted by its headings, copied (Ctrl+C: the selected
// rows), exported as it is shown. A double click or Enter asks for the calls of a row.
class ResultTable : public QWidget {
  Q_OBJECT

 public:
  // `name` is the object name of the view.
  ResultTable(server::CServerDoc& document, const Texts& texts, const char* name, QWidget* parent = nullptr);

  void setTable(folders::PlainTable table);
  [[nodiscard]] const folders::PlainTable& table() const { return model_->table(); }
  [[nodiscard]] QTableView* view() const { return view_; }
  // Rows of the table, whatever their order on the screen; -1 when none is current.
  [[nodiscard]] int currentRow() const;
  [[nodiscard]] std::vector<int> selectedRows() const;
  // A further button, before those that every table has.
  QPushButton* addButton(const char* key, const char* name);

 signals:
  void activated(int row);
  void selectionChanged();

 public slots:
  void copy();
  void exportRows();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  [[nodiscard]] QStringList cellsOf(int line) const;  // as shown; -1: the headings
  [[nodiscard]] std::vector<int> selectedLines() const;
  void copySelected();
  [[nodiscard]] folders::PlainTable shownTable() const;

  server::CServerDoc& document_;
  const Texts& texts_;
  ResultModel* model_;
  NaturalOrder* sorted_;
  QTableView* view_;
  QLineEdit* search_;
  QHBoxLayout* buttons_;
  FileLine* written_;
};

}  // namespace ui
