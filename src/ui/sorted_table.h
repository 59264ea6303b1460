#pragma once

#include <QCollator>
#include <QSortFilterProxyModel>
#include <QStringList>
#include <QTableView>
#include <vector>

namespace ui {

// Numbers in texts by their value: trunk 2 comes before trunk 10. Rows are found by a part of any of their texts.
class NaturalOrder : public QSortFilterProxyModel {
 public:
  explicit NaturalOrder(QObject* parent);

 protected:
  // By the numbers of the sort role where the model has them.
  [[nodiscard]] bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

 private:
  QCollator collator_;
};

// Gives the columns the width of what is in the first rows.
void fitColumns(QTableView& view);

enum class CopyAs { Text, Table };
// Lines of cells to the clipboard: separated by tabs, and as a table for word processors.
void copyCells(const std::vector<QStringList>& lines, CopyAs form);

}  // namespace ui
