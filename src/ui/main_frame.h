#pragma once

#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QSocketNotifier>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>

#include "filter/parts.h"
#include "foundation/table_watch.h"
#include "platform/live_channel.h"
#include "server/reconnection.h"
#include "server/server_doc.h"
#include "ui/actions.h"
#include "ui/chart_pane.h"
#include "ui/details_view.h"
#include "ui/filter_view.h"
#include "ui/folder_pane.h"
#include "ui/folder_view.h"
#include "ui/heat_map.h"
#include "ui/qt_operator.h"
#include "ui/selector_view.h"
#include "ui/status_panes.h"
#include "ui/texts.h"
#include "ui/undo_stack.h"

namespace ui {

// The main window: folder tree, list of the selected folder, filter pane and chart, status bar with its panes.
class CMainFrame : public QMainWindow {
  Q_OBJECT

 public:
  // Timers rest while `person` shows progress: the work must not meet itself.
  CMainFrame(server::CServerDoc& document, const Texts& texts, const QtOperator& person);
  ~CMainFrame() override;

  // Starts the timers and the live channel; the desktop's first list is shown.
  void start();
  void openFolder(int id);
  // Selects it in the tree, which opens it.
  void selectFolder(int id) { selector_->select(id); }
  // The list of the calls of the current row of a statistic; the filter stays as it is. Throws jet::Error.
  void showCallsBehindRow();
  void showCallsBehind(std::int64_t position);
  // The sums of the filtered calls, in the status bar. Throws jet::Error.
  void showTotals();
  [[nodiscard]] CFolderView& list() { return *list_; }
  [[nodiscard]] UndoStack& undo() { return undo_; }
  [[nodiscard]] const Actions& actions() const { return *actions_; }
  // A message in the status bar; the totals come back after a while.
  void say(const QString& text);
  // The list of the calls of a contact.
  void showCallsOf(const contacts::CONTACTENTRYDESC& contact);
  // Those of a row of another window.
  void showCallsOf(const folders::Narrowing& calls) { openNarrowed(calls, 0); }
  // Those of a weekday's hour.
  void showCallsOf(const WeekHour& hour);
  // Where a file is that was written; nothing for an empty path.
  void sayFile(const std::filesystem::path& file) { status_->sayFile(file); }
  void focusQuickFilter() { listPane_->filterBar().focusLine(); }

 public slots:
  void importCalls();
  void importAtOnce();
  // Those of a file of the monitor that are not recorded yet.
  void importCallsOf(const std::filesystem::path& file);
  // Rows of the shown folder again: after a change of the filter, of calls by this or another copy.
  void reloadFolder(CFolderView::Reload how = CFolderView::Reload::AtOnce);
  void updateStatus();
  // Reads and shows what other copies changed.
  void refreshFromOtherCopies();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void buildCentre();
  void connectFilterBar();
  void findTyped();
  void buildMenus();
  void buildStatusBar();
  void restorePanes();
  void keepPanes();
  void openLiveChannel();
  void importWhenAsked();
  // The calls that meet the condition; the origin is where "Back" leads.
  void openNarrowed(const folders::Narrowing& narrowing, std::int64_t originPosition);
  // To be started before the table's rows are read, so that no change falls between.
  [[nodiscard]] std::optional<foundation::TableWatch> startWatch(const std::string& table);
  void showFilter();
  void showDetails();
  void showChart();
  void drillDown(int row);
  void backToStatistic();
  // What is shown around the list follows what the list shows now.
  void folderShown();
  void guideWhenEmpty();
  void tellAlarms();
  void tellImport(const ingest::ImportResult& result);
  [[nodiscard]] QString shownTotals();
  void readTotals();
  void showError(const QString& text);

  server::CServerDoc& document_;
  const Texts& texts_;
  const QtOperator& person_;
  server::Reconnection reconnection_;
  std::unique_ptr<Actions> actions_;
  CSelectorView* selector_ = nullptr;
  CFolderView* list_ = nullptr;
  FolderPane* listPane_ = nullptr;
  CFilterView* filterPane_ = nullptr;
  ChartPane* chart_ = nullptr;
  DetailsView* details_ = nullptr;
  QSplitter* columns_ = nullptr;  // tree | right side
  QSplitter* panes_ = nullptr;    // list / lower panes
  QSplitter* lower_ = nullptr;    // filter | chart or details
  StatusPanes* status_ = nullptr;
  // Where the calls of a row were asked for.
  struct Origin {
    int folder = 0;
    std::int64_t position = 0;
  };
  Origin origin_;
  QString totals_;  // of what is shown; empty: not worked out
  QTimer importTimer_;
  QTimer refreshTimer_;
  bool refreshing_ = false;
  UndoStack undo_;
  std::vector<filter::Part> parts_;              // of the filter that is on, as the bar shows them
  std::optional<foundation::TableWatch> watch_;  // of the shown folder's table
  std::unique_ptr<platform::LiveChannelServer> live_;
  bool importAsked_ = false;  // by a sender, since the last import
  std::unique_ptr<QSocketNotifier> liveNotifier_;
};

}  // namespace ui
