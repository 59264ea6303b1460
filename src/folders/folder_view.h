#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "folders/column_layout.h"
#include "folders/db_folder.h"
#include "folders/value_formatter.h"

namespace folders {

// A shown column of an open folder.
struct ViewColumn {
  const ColumnDefinition* definition;
  std::string caption;  // translated
  Alignment alignment;
  int width;  // pixels; 0 = not kept
};

// One cell as it was read: the second value is the currency of an amount, else Null.
struct CellValue {
  const jet::Value* first;
  const jet::Value* second;
};

// What the calls of a row of a statistic have in common.
struct Narrowing {
  std::string criteria;  // a condition over `Calls`
  std::string text;      // "Area: București"
};

// An open folder as a list of texts that scrolls: rows are read where they are looked at. Throws jet::Error
// (filter::FilterError too) from the constructor, narrow, refresh and the reading calls.
class FolderView {
 public:
  // All must outlive the view.
  FolderView(const FolderDefinition& definition, const FolderServices& services, const ValueFormatter& formatter,
             int sortKey = 0);
  FolderView(const FolderView&) = delete;
  FolderView& operator=(const FolderView&) = delete;
  ~FolderView() { folder_.release(); }

  [[nodiscard]] const CDbFolder& folder() const { return folder_; }
  [[nodiscard]] const FolderServices& services() const { return services_; }
  [[nodiscard]] const ValueFormatter& formatter() const { return formatter_; }

  // The shown columns; the key column is never among them.
  [[nodiscard]] const std::vector<ViewColumn>& columns() const { return columns_; }
  void setLayout(const ColumnLayout& layout);
  [[nodiscard]] ColumnLayout layout() const;

  [[nodiscard]] int sortKey() const { return folder_.sortKey(); }
  // Leaves only the calls of a row of a statistic; nothing lifts that.
  void narrow(std::optional<Narrowing> narrowing);
  [[nodiscard]] const std::optional<Narrowing>& narrowing() const { return narrowing_; }
  // What the rows are: the folder's caption, and what narrows it ("Calls - Area: București").
  [[nodiscard]] std::string name() const {
    return narrowing_ ? folder_.caption() + " - " + narrowing_->text : folder_.caption();
  }
  // What the calls of a row of this statistic have in common; nothing beyond the last row.
  [[nodiscard]] std::optional<Narrowing> callsBehind(std::int64_t position);
  // The rows of other settings of the filter than the stored ones, within the user's restriction, until a refresh.
  // Nothing changes in a folder that has no call filter.
  void useSettings(const filter::FilterSettings& settings);
  // Reads the condition from its source and the rows from the database again.
  void refresh();

  [[nodiscard]] std::int64_t rowCount() { return folder_.result()->rowCount(); }
  struct ShownRow {
    std::vector<std::string> texts;  // as displayed, a text a shown column
    std::string key;                 // of the record or group
    bool hidden = false;             // a call that is marked so
  };
  // Rows [first, first + count), fewer at the end.
  [[nodiscard]] std::vector<ShownRow> shownRows(std::int64_t first, std::int64_t count);
  // Their texts alone.
  [[nodiscard]] std::vector<std::vector<std::string>> rows(std::int64_t first, std::int64_t count);

  std::optional<std::int64_t> findRow(const RowKey& key) { return folder_.FindRow(key); }
  std::optional<RowKey> readKey(std::int64_t position) { return folder_.ReadKey(position); }

  using RowReader = std::function<bool(std::span<const CellValue>)>;
  // Rows [first, first + count) of the open result. `row` gets a cell a shown column and returns false to stop.
  void readRows(std::int64_t first, std::int64_t count, const RowReader& row);

  // A row of the table with what it is sorted by, for lists of single records that are sorted.
  struct OrderedRow {
    jet::Value by;
    std::int64_t key = 0;
    ShownRow row;
  };
  // The rows in order as the database finds them, without counting them or reading others; `row` returns false to stop.
  void forEachOrderedRow(const std::function<bool(OrderedRow&&)>& row);

  // Every row in order, streamed: memory does not grow with their number. `row` as for readRows.
  void forEachRow(const RowReader& row);
  // From now on forEachRow tells how many rows it has handed out, every kWatchedRows; the watcher throws to stop it.
  void watchRows(std::function<void(std::int64_t rows)> watcher) { watcher_ = std::move(watcher); }
  static constexpr std::int64_t kWatchedRows = 256;
  [[nodiscard]] std::string text(std::size_t column, const CellValue& cell) const;

  // Sums a column's values as rows go by; columns without a total stay at nothing.
  class Totals {
   public:
    explicit Totals(const FolderView& view);
    void add(std::span<const CellValue> row);
    [[nodiscard]] std::optional<double> sum(std::size_t column) const { return sums_[column]; }
    [[nodiscard]] std::string text(std::size_t column) const;  // empty without a total
    // The same, an amount with the name of the default currency.
    [[nodiscard]] std::string textWithCurrency(std::size_t column) const;

   private:
    const FolderView& view_;
    std::vector<std::size_t> summed_;  // columns
    std::vector<std::optional<double>> sums_;
  };
  // The totals of all rows, read through.
  [[nodiscard]] std::vector<std::string> totals();

 private:
  const FolderServices& services_;
  const ValueFormatter& formatter_;
  CDbFolder folder_;
  std::optional<Narrowing> narrowing_;
  std::vector<ViewColumn> columns_;
  // Where the values of each column of the definition are in a row of the result.
  struct Place {
    std::size_t first;
    std::optional<std::size_t> second;
  };
  [[nodiscard]] Place placeOf(int kind) const;
  // A row whose values are asked for by their place in the result.
  template <typename ValueAt>
  [[nodiscard]] ShownRow shownRow(const ValueAt& valueAt) const;
  [[nodiscard]] CellValue cellOf(const jet::Snapshot& rows, std::size_t row, std::size_t column) const;
  std::vector<Place> places_;  // of the shown columns
  std::function<void(std::int64_t)> watcher_;
};

}  // namespace folders
