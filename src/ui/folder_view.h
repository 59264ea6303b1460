#pragma once

#include <QElapsedTimer>
#include <QTableView>
#include <QTimer>
#include <map>
#include <optional>
#include <string>

#include "folders/first_matches.h"
#include "server/server_doc.h"
#include "ui/folder_model.h"
#include "ui/read_ahead.h"
#include "ui/texts.h"

namespace ui {

// How rows are put on the clipboard: as lines of fields, with a first line of headings, or as a table too, for those
// who take one.
enum class CopyForm { Rows, WithHeadings, Table };

// The record list: a folder's rows, sorted by a click on a heading, its columns chosen and sized by the operator.
class CFolderView : public QTableView {
  Q_OBJECT

 public:
  CFolderView(server::CServerDoc& document, const Texts& texts, QWidget* parent = nullptr);

  [[nodiscard]] FolderModel& model() const { return *model_; }
  // Identifier of the open folder; 0 when none is open.
  [[nodiscard]] int folderId() const;
  // True when the list holds only the calls of a row of a statistic.
  [[nodiscard]] bool narrowed() const { return narrowing_.has_value(); }
  [[nodiscard]] const std::optional<folders::Narrowing>& narrowing() const { return narrowing_; }
  // Leaves the rows that hold every typed word; an empty text brings all back. As openFolder.
  bool find(const QString& typed);
  [[nodiscard]] const QString& typed() const { return typedWords_; }
  // True while the list holds the first rows with the typed words, and the others are still looked for.
  [[nodiscard]] bool searching() const { return first_ != nullptr; }

  // Shows the folder, or the calls of a row of a statistic. True when it is shown; when the operator stopped it, or
  // after a fault (failed), the folder that was open stays.
  bool openFolder(const folders::FolderDefinition& folder, std::optional<folders::Narrowing> narrowing = {});
  // The rows as they are now. The current record stays the current one when it is near its place. With Beside they may
  // come later, when what finds them was read beside the window: false then, and searched() tells that they are there.
  enum class Reload { AtOnce, Beside };
  bool reload(Reload how = Reload::AtOnce);
  void closeFolder();
  // Words are going to be typed: prepares for the first.
  void expectWords();
  [[nodiscard]] bool isReadingAhead() const { return readAhead_->reading(); }
  void saveLayout();

  // Rows selected, each once, ascending.
  [[nodiscard]] std::vector<int> selectedRows() const;
  [[nodiscard]] std::int64_t selectedCount() const;
  // "Duration 01:02:03  Cost 4.56": the sums of the selected rows, empty when fewer than two are, and of all rows;
  // empty when the operator stopped it. Throw jet::Error.
  [[nodiscard]] QString selectionTotals() const;
  [[nodiscard]] QString totals() const;
  // Text of the current row in the column of that kind, or of the current cell; empty when there is none.
  [[nodiscard]] QString currentText(int kind) const;
  [[nodiscard]] QString currentText() const;
  // Why there are no rows, for what can be done about it, and in words; empty words when there are some.
  enum class Nothing { HasRows, Searching, NotFound, Filtered, NoCalls, NoContacts, NoEntries };
  [[nodiscard]] Nothing nothing() const;
  [[nodiscard]] QString emptyText() const;
  // The open folder over the calls of other settings of the filter, narrowed and with columns as it is here. Throws
  // jet::Error.
  [[nodiscard]] std::unique_ptr<folders::FolderView> sameFolder(const filter::FilterSettings& settings) const;
  void copySelection(CopyForm form);
  void sortByCurrentColumn();
  // Typed letters look at the rows at hand only: the view's own search would read every row.
  void keyboardSearch(const QString& typed) override;
  void chooseColumns();

 signals:
  // More rows with the typed words are there, or all of them.
  void searched();
  void rowsSelected();
  void sorted();
  void currentCellChanged();
  void contextMenuWanted(const QPoint& globalPosition);
  void rowActivated(int row);
  void failed(const QString& reason);

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  // Milliseconds after which what was wanted while other work went on is asked for again.
  static constexpr int kRetryInterval = 50;

  struct Rows {
    std::int64_t first;
    std::int64_t count;
  };
  [[nodiscard]] QString totalsOf(const std::vector<Rows>& parts, std::int64_t count) const;

  // What leaves only some rows: those of a row of a statistic, those with the typed words.
  struct Narrowed {
    std::optional<folders::Narrowing> narrowing;
    QString words;
  };
  void narrow(folders::FolderView& view, const Narrowed& by) const;
  [[nodiscard]] Narrowed present() const { return {narrowing_, typedWords_}; }
  // Where the operator left a folder.
  struct Left {
    int sortKey = 0;
    std::int64_t position = -1;
    std::string key;
  };
  void rememberPlace();
  void returnToPlace(const Left& left);

  using View = std::unique_ptr<folders::FolderView>;
  // An opened folder, its rows counted, under progress; null when it was stopped or failed.
  [[nodiscard]] View openView(const folders::FolderDefinition& folder, int sortKey, const Narrowed& by,
                              const folders::ColumnLayout* layout);
  bool show(View view, FolderModel::Window window);
  bool showWhereItWas(View view);
  bool showFirst(const QString& typed);
  bool awaitsRows(const folders::FolderView& open);
  void goOnSearching();
  void finishSearching();
  void readMissedPage(std::int64_t number);
  void sortByColumn(int column);
  [[nodiscard]] QStringList cellsOf(int row) const;
  [[nodiscard]] std::string progressText() const;
  [[nodiscard]] folders::ColumnLayout shownLayout() const;
  void useLayout(const folders::ColumnLayout& layout);
  void applyLayout();
  void applyInterfaceOptions();
  void showSortIndicator();

  server::CServerDoc& document_;
  const Texts& texts_;
  FolderModel* model_;
  ReadAhead* readAhead_;
  bool selectsUnderPointer_ = false;
  std::optional<folders::Narrowing> narrowing_;
  QString typedWords_;
  std::unique_ptr<folders::FirstMatches> first_;
  bool awaited_ = false;  // the rows of a reload
  QTimer searching_;
  std::map<int, Left> left_;  // by folder
  QString typed_;
  QElapsedTimer sinceTyped_;
};

}  // namespace ui
