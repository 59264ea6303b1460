#pragma once

#include <QTableView>

#include "server/server_doc.h"
#include "ui/folder_model.h"
#include "ui/texts.h"

namespace ui {

// The record list: a folder's rows, sorted by a click on a heading, its columns chosen and sized by the operator.
class CFolderView : public QTableView {
  Q_OBJECT

 public:
  CFolderView(server::CServerDoc& document, const Texts& texts, QWidget* parent = nullptr);

  [[nodiscard]] FolderModel& model() const { return *model_; }
  // Identifier of the open folder; 0 when none is open.
  [[nodiscard]] int folderId() const;

  // Throws jet::Error.
  void openFolder(const folders::FolderDefinition& folder);
  void reload();
  void saveLayout();

  // Rows selected, each once, ascending.
  [[nodiscard]] std::vector<int> selectedRows() const;
  // Text of the current row in the column of that kind, or of the current cell; empty when there is none.
  [[nodiscard]] QString currentText(int kind) const;
  [[nodiscard]] QString currentText() const;
  void copySelection();
  void chooseColumns();

 signals:
  void selectionChangedTo(int rows);
  void currentCellChanged();
  void contextMenuWanted(const QPoint& globalPosition);
  void rowActivated(int row);
  void failed(const QString& reason);

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  void sortByColumn(int column);
  [[nodiscard]] folders::ColumnLayout shownLayout() const;
  void useLayout(const folders::ColumnLayout& layout);
  void applyLayout();
  void applyInterfaceOptions();
  void showSortIndicator();

  server::CServerDoc& document_;
  const Texts& texts_;
  FolderModel* model_;
  bool selectsUnderPointer_ = false;
};

}  // namespace ui
