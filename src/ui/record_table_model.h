#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <deque>
#include <functional>
#include <set>
#include <vector>

namespace ui {

// One column of a table of records that an operator edits.
struct RecordColumn {
  QString caption;
  std::function<QString(int row)> read;
  // Takes the edited text; false when it is not acceptable (the cell keeps its value). Empty: the column is read-only.
  std::function<bool(int row, const QString& text)> write;
  // The values to choose from for a row; empty function: free text.
  std::function<QStringList(int row)> choices;
  bool checkbox = false;  // read gives "1" or "0", write takes them
  bool typeable = false;  // other values than the choices can be typed
  bool rightAligned = false;
  bool automatic = false;  // given by the program: only an import writes it
  // What is accepted, as a sentence: under the pointer, and when a value is refused.
  QString hint;
};

// A list of records in memory, the model of a table view: extensions, accounts, trunks, bands, currencies.
class RecordTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  struct Rows {
    std::function<int()> count;
    std::function<void(int at)> insert;  // a new, empty record; empty function: rows are not added
    std::function<void(int at)> remove;  // empty function: rows are not removed
    // Where rows are not added: the row that takes an imported record with that text in the first column, -1 for none.
    // Rows that took one already are not free any more.
    std::function<int(const QString& key, const std::set<int>& taken)> rowFor;
    // The records as they are now: what is given brings them back. Empty function: changes cannot be undone.
    std::function<std::function<void()>()> keep;
  };

  RecordTableModel(std::vector<RecordColumn> columns, Rows rows, QObject* parent = nullptr);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  bool insertRows(int row, int count, const QModelIndex& parent = {}) override;
  bool removeRows(int row, int count, const QModelIndex& parent = {}) override;

  [[nodiscard]] const RecordColumn& column(int index) const { return columns_[static_cast<std::size_t>(index)]; }
  [[nodiscard]] bool canInsert() const { return static_cast<bool>(rows_.insert); }
  [[nodiscard]] bool canRemove() const { return static_cast<bool>(rows_.remove); }
  [[nodiscard]] bool canImport() const { return canInsert() || rows_.rowFor; }
  [[nodiscard]] int rowFor(const QString& key, const std::set<int>& taken) const { return rows_.rowFor(key, taken); }
  // Without the right to change: nothing is edited, switches neither.
  void setReadOnly(bool readOnly) { readOnly_ = readOnly; }

  // Many changes at once, through the columns' write functions and these two: views hear of them at the end only.
  void beginBulkChange();
  void endBulkChange();
  int append();  // a new record; its row
  void clear();

  // Rows in any order, each once, as one change.
  void removeThese(std::vector<int> rows);
  // Takes back the last change, or the one before it when that was taken back, up to kSteps of them.
  [[nodiscard]] bool canUndo() const { return !steps_.empty(); }
  void undo();
  // The records are others now, read again: what was changed before cannot be undone here.
  void forgetSteps() { steps_.clear(); }

 signals:
  void edited();
  void refused(int column, const QString& text);

 private:
  std::vector<RecordColumn> columns_;
  Rows rows_;
  bool readOnly_ = false;
  // A step holds all records, which are small.
  static constexpr std::size_t kSteps = 30;
  void keepStep();
  std::deque<std::function<void()>> steps_;
};

}  // namespace ui
