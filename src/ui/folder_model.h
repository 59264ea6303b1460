#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <memory>
#include <set>
#include <unordered_map>

#include "folders/folder_view.h"
#include "ui/texts.h"

namespace ui {

// An open folder for a table view. Rows are read in pages where they are looked at, so that the list of ten million
// calls opens and scrolls like one of ten.
class FolderModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // A view keeps something for each row, so of very long folders the model shows a window of rows, which is moved to
  // where the operator looks. Rows of the model are counted from the window's start.
  static constexpr std::int64_t kWindowRows = 1'000'000;
  explicit FolderModel(QObject* parent = nullptr, std::int64_t windowRows = kWindowRows)
      : QAbstractTableModel(parent), windowRows_(windowRows) {}

  enum class Window { AtStart, WhereItWas };
  // Takes the folder over; null closes it. Its first rows are read here, the others where they are looked at. Throws
  // jet::Error, and keeps the folder that was open then.
  void setFolder(std::unique_ptr<folders::FolderView> folder, Window window = Window::AtStart);
  [[nodiscard]] folders::FolderView* folder() const { return folder_.get(); }
  // The same with the first rows as they are known, at most kFirstRows; nothing else is read. More may follow them.
  static constexpr std::size_t kFirstRows = 128;
  void setFirstRows(std::unique_ptr<folders::FolderView> folder, std::vector<folders::FolderView::ShownRow> rows);
  void addFirstRows(std::vector<folders::FolderView::ShownRow> rows);
  void setLayout(const folders::ColumnLayout& layout);

  // While `busy` says so, other work uses the database: rows that are not at hand show nothing until it is done.
  void setBusy(std::function<bool()> busy) { busy_ = std::move(busy); }
  // Reads a page that was missed (pageMissed); a fault is told by readFailed.
  void readPage(std::int64_t number);

  [[nodiscard]] std::int64_t totalRows() const { return total_; }
  [[nodiscard]] std::int64_t windowStart() const { return start_; }
  // As near to `start` as the folder's end allows. Selected and current rows stay those of the same records.
  void moveWindow(std::int64_t start);
  // Place in the folder of a row of the model, and back (-1: outside the window).
  [[nodiscard]] std::int64_t position(int row) const { return start_ + row; }
  [[nodiscard]] int rowAt(std::int64_t position) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  [[nodiscard]] QString text(int row, int column) const;
  // Key of the row's record or group; empty when it is not at hand.
  [[nodiscard]] std::string key(int row) const;
  // The first row after `row`, then from the top, whose text in the column begins with `text`, whatever the case. Only
  // among the rows at hand: nothing is read. -1 when there is none.
  [[nodiscard]] int findAtHand(const QString& text, int row, int column) const;
  // Kind of a shown column.
  [[nodiscard]] int kindOf(int column) const;
  // Shown column of that kind; -1 when it is not shown.
  [[nodiscard]] int columnOf(int kind) const;

 signals:
  // Rows could not be read; the text says why.
  void readFailed(const QString& reason) const;
  // Rows that are slow to read are wanted: too slow for a window that is being drawn.
  void pageMissed(std::int64_t number) const;

 private:
  static constexpr int kPageRows = kFirstRows;
  static constexpr std::size_t kPagesKept = 64;

  using Page = std::vector<folders::FolderView::ShownRow>;
  const folders::FolderView::ShownRow* row(int row) const;
  const Page* page(std::int64_t number) const;
  const Page& keepPage(std::int64_t number) const;
  void shiftPersistentRows(std::int64_t by);

  std::unique_ptr<folders::FolderView> folder_;
  std::function<bool()> busy_;
  std::int64_t windowRows_;
  std::int64_t total_ = 0;
  std::int64_t start_ = 0;
  int rows_ = 0;
  mutable bool slow_ = false;  // the last page took longer than a window may be kept waiting
  mutable std::set<std::int64_t> missed_;
  mutable std::unordered_map<std::int64_t, Page> pages_;
};

}  // namespace ui
