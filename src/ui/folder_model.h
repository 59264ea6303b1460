#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <memory>
#include <unordered_map>

#include "folders/folder_view.h"
#include "ui/texts.h"

namespace ui {

// An open folder behind a table view. Rows are read in pages where they are looked at, so that the list of ten million
// calls opens and scrolls like one of ten.
class FolderModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit FolderModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // Takes the folder over; null closes it.
  void setFolder(std::unique_ptr<folders::FolderView> folder);
  [[nodiscard]] folders::FolderView* folder() const { return folder_.get(); }
  // Reads condition and rows again. Throws jet::Error.
  void refresh();
  void sortBy(int sortKey);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  [[nodiscard]] QString text(int row, int column) const;
  // Kind of a shown column.
  [[nodiscard]] int kindOf(int column) const;
  // Shown column of that kind; -1 when it is not shown.
  [[nodiscard]] int columnOf(int kind) const;

 signals:
  // Rows could not be read; the text says why.
  void readFailed(const QString& reason) const;

 private:
  static constexpr int kPageRows = 128;
  static constexpr std::size_t kPagesKept = 64;

  using Page = std::vector<std::vector<std::string>>;
  const std::vector<std::string>* row(int row) const;
  void forgetPages();

  std::unique_ptr<folders::FolderView> folder_;
  int rows_ = 0;
  mutable std::unordered_map<int, Page> pages_;
};

}  // namespace ui
