#include "ui/main_frame.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMessageBox>
#include <QStatusBar>
#include <QToolBar>

#include "alarms/alarm_list.h"
#include "base/version.h"
#include "folders/call_totals.h"
#include "folders/numbers.h"
#include "platform/progress.h"
#include "security/rights.h"
#include "server/data_folder.h"
#include "server/service.h"
#include "ui/command_handler.h"
#include "ui/exchange/exchange_place.h"
#include "ui/exchange/monitor_pane.h"
#include "ui/filter_menus.h"
#include "ui/folder_chart.h"
#include "ui/manual.h"
#include "ui/record_commands.h"
#include "ui/window_placement.h"

namespace ui {

namespace {

// Calls up to which the totals are worked out without being asked for: a moment's work.
constexpr std::int64_t kSummedRows = 500'000;
// Rows of other lists up to which they are added up.
constexpr std::int64_t kAddedRows = 5000;
// Milliseconds until words that were typed during other work are looked for.
constexpr int kRetry = 150;

}  // namespace

CMainFrame::CMainFrame(server::CServerDoc& document, const Texts& texts, const QtOperator& person)
    : document_(document),
      texts_(texts),
      person_(person),
      reconnection_(document, [this](base::Priority, const std::string& text) { say(toQt(text)); }) {
  setObjectName("mainFrame");
  server::showBarsAtFirst(document.app().config());
  setWindowIcon(icon(Icon::Program));
  // The window system's title goes on with the program's name.
  const QString folder = toQt(document.databases().describe());
  setWindowTitle(document.DatabaseReadOnly() ? texts.format("IDS_TITLE_READONLY", fromQt(folder)) : folder);
  actions_ = std::make_unique<Actions>(
      texts, [&document](int object, int right) { return document.HasRight(object, right); }, this);
  buildCentre();
  buildMenus();
  buildStatusBar();
  restorePanes();
}

CMainFrame::~CMainFrame() = default;

void CMainFrame::buildCentre() {
  selector_ = new CSelectorView(texts_);
  list_ = new CFolderView(document_, texts_);
  list_->setAccessibleName(texts_("IDS_CALLS"));
  filterPane_ = new CFilterView;
  filterPane_->setAccessibleName(texts_("IDS_ACTION_FILTER"));
  chart_ = new ChartPane(texts_, document_.app().config());
  lower_ = new QSplitter(Qt::Horizontal);
  lower_->addWidget(filterPane_);
  lower_->addWidget(chart_);
  details_ = new DetailsView;
  details_->setAccessibleName(texts_("IDS_DETAILS"));
  details_->setPlaceholderText(texts_("IDS_DETAILS_EMPTY"));
  lower_->addWidget(details_);
  lower_->setSizes({300, 700, 700});
  panes_ = new QSplitter(Qt::Vertical);
  listPane_ = new FolderPane(list_, texts_);
  panes_->addWidget(listPane_);
  panes_->addWidget(lower_);
  columns_ = new QSplitter(Qt::Horizontal);
  columns_->addWidget(selector_);
  columns_->addWidget(panes_);
  columns_->setStretchFactor(1, 1);
  columns_->setSizes({230, 900});
  setCentralWidget(columns_);

  connect(selector_, &CSelectorView::folderSelected, this, &CMainFrame::openFolder);
  connect(selector_, &CSelectorView::folderChosenAgain, this, [this](int id) {
    if (list_->narrowed() || list_->folderId() != id) openFolder(id);
  });
  connectFilterBar();
  connect(listPane_, &FolderPane::backWanted, this, &CMainFrame::backToStatistic);
  connect(listPane_, &FolderPane::allCallsWanted, this, [this] { openFolder(list_->folderId()); });
  connect(list_, &CFolderView::failed, this, &CMainFrame::showError);
  connect(list_, &CFolderView::rowsSelected, this, [this] {
    updateStatus();
    status_->refreshSoon();
  });
  connect(list_, &CFolderView::currentCellChanged, this, [this] {
    offerCommands(*actions_, *list_, document_);
    showDetails();
  });
  connect(list_, &CFolderView::rowActivated, this, &CMainFrame::drillDown);
  connect(list_, &CFolderView::searched, this, [this] {
    if (!list_->searching()) return folderShown();
    guideWhenEmpty();
    updateStatus();
  });
  connect(list_, &CFolderView::sorted, this, &CMainFrame::showChart);
  connect(chart_, &ChartPane::choiceChanged, this, &CMainFrame::showChart);
  connect(chart_, &ChartPane::saved, this, [this](const QString& file) { sayFile(fromQt(file)); });
  connect(&chart_->chart(), &ChartView::barActivated, this,
          [this](std::int64_t position) { showCallsBehind(position); });
  connect(list_, &CFolderView::contextMenuWanted, this, [this](const QPoint& at) {
    QMenu menu(this);
    actions_->fillContextMenu(menu);
    menu.exec(at);
  });
}

void CMainFrame::connectFilterBar() {
  FilterBar& bar = listPane_->filterBar();
  const FilterMenuTarget target{document_, texts_, this, [this] { reloadFolder(); }};
  QMenu* periods = bar.periods()->menu();
  QMenu* filters = bar.filters()->menu();
  connect(periods, &QMenu::aboutToShow, this, [periods, target] { fillPeriodMenu(*periods, target); });
  connect(filters, &QMenu::aboutToShow, this, [filters, target] { fillSavedFilterMenu(*filters, target); });
  connect(&bar, &FilterBar::typedChanged, this, &CMainFrame::findTyped);
  connect(&bar, &FilterBar::partRemoved, this, [this](int part) {
    if (static_cast<std::size_t>(part) >= parts_.size()) return;
    document_.callFilter().set(parts_[static_cast<std::size_t>(part)].removal);
    reloadFolder();
  });
}

// What is in the line now, however many keys ago the work began.
void CMainFrame::findTyped() {
  if (person_.busy()) return QTimer::singleShot(kRetry, this, [this] { findTyped(); });
  if (listPane_->filterBar().typed() != list_->typed() && list_->find(listPane_->filterBar().typed())) folderShown();
}

void CMainFrame::buildMenus() {
  actions_->fillMenuBar(*menuBar());
  auto& config = document_.app().config();
  auto* bar = addToolBar("main");
  bar->setObjectName("toolbar");
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  actions_->fillToolBar(*bar);
  bar->setVisible(config.ReadConfigInt(foundation::keys::iface_Toolbar) != 0);
  // Help that leads nowhere is not offered.
  const auto configured = [&config](const foundation::TextKey& key) { return !config.ReadConfigString(key).empty(); };
  (*actions_)[Command::Manual]->setVisible(!manualAddress(document_.app(), "index").empty());
  (*actions_)[Command::Support]->setVisible(configured(foundation::keys::UrlSupport));
  (*actions_)[Command::Updates]->setVisible(configured(foundation::keys::UrlCheckUpdates));
  connect(actions_.get(), &Actions::triggered, this, [this](Command command) {
    try {
      handleCommand(command, {document_, texts_, *this, *list_});
    } catch (const jet::Error& error) {
      if (!error.canceled()) showError(toQt(error.description()));
    }
  });
}

void CMainFrame::buildStatusBar() {
  status_ = new StatusPanes(*statusBar(), texts_, [this] { return shownTotals(); });
  statusBar()->insertPermanentWidget(1, new MonitorPane(exchangePlace(document_.app().config()).monitorFolder, texts_));
  connect(status_, &StatusPanes::openWanted, this, [this](const QString& path) {
    if (!document_.app().surroundings().documents.open(fromQt(path))) {
      showError(texts_.format("IDS_CANTOPENPAGE", fromQt(path)));
    }
  });
  connect(status_, &StatusPanes::alarmsWanted, (*actions_)[Command::Alarms], &QAction::trigger);
  statusBar()->setVisible(document_.app().config().ReadConfigInt(foundation::keys::iface_Statusbar) != 0);
}

void CMainFrame::restorePanes() {
  restorePlacement(*this, document_.app().config());
  const int percent = std::clamp(document_.upperPane(), 10, 95);
  panes_->setSizes({percent * 10, (100 - percent) * 10});
}

void CMainFrame::keepPanes() {
  auto& config = document_.app().config();
  keepPlacement(*this, config);
  const QList<int> sizes = panes_->sizes();
  if (sizes[0] + sizes[1] > 0) document_.setUpperPane(sizes[0] * 100 / (sizes[0] + sizes[1]));
  config.WriteConfigInt(0, foundation::keys::SelFolder_Type);
  config.WriteConfigInt(list_->folderId(), foundation::keys::SelFolder_ID);
}

void CMainFrame::start() {
  auto& config = document_.app().config();
  // The icon asks the database store while the log's filter itself lives in the machine store.
  const bool logFiltered = config.ReadConfigInt(foundation::keys::LogFilt_EnabledForIcon) != 0;
  selector_->build({document_.HasRight(security::ObjectCalls, security::RightView),
                    document_.HasRight(security::ObjectAdministration, security::RightView)},
                   logFiltered);
  const int last = config.ReadConfigInt(foundation::keys::SelFolder_ID, folders::FolderCalls);
  const bool known = folders::findFolder(last) != nullptr || last == folders::FolderContacts;
  selector_->select(known ? last : int{folders::FolderCalls});
  if (list_->folderId() == 0) selector_->select(folders::FolderCalls);
  showFilter();
  if (!document_.DatabaseReadOnly() && document_.HasRight(security::ObjectCalls, security::RightChange)) {
    openLiveChannel();
    connect(&importTimer_, &QTimer::timeout, this, &CMainFrame::importCalls);
    importTimer_.start(server::kImportInterval);
  }
  if (document_.DatabaseReadOnly()) say(toQt(document_.readOnlyReason()));
  connect(&refreshTimer_, &QTimer::timeout, this, &CMainFrame::refreshFromOtherCopies);
  refreshTimer_.start(server::kRefreshInterval);
  tellAlarms();
}

// Alarms tell about all calls. A database that is open read-only may be one from before there were any.
void CMainFrame::tellAlarms() {
  if (document_.DatabaseReadOnly() || !document_.user().SQLSubquery.empty()) return;
  if (!document_.HasRight(security::ObjectAdministration, security::RightView)) return;
  try {
    status_->showAlarms(alarms::waitingAlarms(document_.database()));
  } catch (const jet::Error& error) {
    say(toQt(error.description()));
  }
}

void CMainFrame::openFolder(int id) {
  const folders::FolderDefinition* folder =
      id == folders::FolderContacts ? &folders::contactsList() : folders::findFolder(id);
  if (folder == nullptr) return;
  auto watch = startWatch(folder->table);
  if (list_->openFolder(*folder)) {
    watch_ = std::move(watch);
    listPane_->filterBar().clearTyped();
    return folderShown();
  }
  // Not at once: the tree is still busy selecting what was clicked.
  QTimer::singleShot(0, this, [this] { selector_->mark(list_->folderId()); });
}

void CMainFrame::folderShown() {
  const folders::FolderView* folder = list_->model().folder();
  const auto& narrowing = list_->narrowing();
  listPane_->showNarrowing(narrowing ? texts_.format("IDS_NARROWED", narrowing->text) : QString());
  list_->setAccessibleName(toQt(folder->folder().caption()));
  const bool calls = folder->folder().definition().condition == folders::ConditionSource::CallFilter;
  filterPane_->setVisible(calls);
  listPane_->filterBar().showCallFilter(calls);
  guideWhenEmpty();
  totals_.clear();
  showChart();
  showDetails();
  updateStatus();
  if (list_->searching()) return status_->refresh();
  const bool allCalls = list_->folderId() == folders::FolderCalls && !narrowing && list_->typed().isEmpty();
  try {
    if (allCalls && list_->model().totalRows() <= kSummedRows) readTotals();
    if (!allCalls && list_->model().totalRows() <= kAddedRows) totals_ = list_->totals();
  } catch (const jet::Error& error) {
    if (!error.canceled()) say(toQt(error.description()));
  }
  status_->refresh();
}

// What leads on where there are no rows.
void CMainFrame::guideWhenEmpty() {
  std::vector<Command> ways;
  switch (list_->nothing()) {
    case CFolderView::Nothing::NoCalls:
      ways = {Command::MonitorFolder, Command::Connect, Command::ImportFile};
      break;
    case CFolderView::Nothing::Filtered:
      if (!list_->narrowed()) ways = {Command::ClearFilter};
      break;
    case CFolderView::Nothing::NoContacts:
      ways = {Command::NewContact};
      break;
    default:
      break;
  }
  std::vector<QAction*> actions;
  for (const Command way : ways) actions.push_back((*actions_)[way]);
  listPane_->guide().guide(list_->emptyText(), actions);
}

std::optional<foundation::TableWatch> CMainFrame::startWatch(const std::string& table) {
  try {
    return foundation::TableWatch(document_.database(), document_.tags(), table);
  } catch (const jet::Error& error) {
    say(toQt(error.description()));
    return std::nullopt;
  }
}

void CMainFrame::refreshFromOtherCopies() {
  // A message about a missing tag lets the timer go on.
  if (person_.busy() || refreshing_) return;
  refreshing_ = true;
  if (live_) live_->process();
  if (!reconnection_.ready()) {
    // Said anew, so that it stays to be read.
    say(texts_("IDS_CONNECTION_LOST"));
    refreshing_ = false;
    return;
  }
  importWhenAsked();
  try {
    document_.smdr().makeDurable();
    document_.smdr().refreshDefinitions();
    if (reconnection_.takeBack() || (watch_ && watch_->changed())) reloadFolder(CFolderView::Reload::Beside);
    tellAlarms();
  } catch (const jet::Error& error) {
    say(toQt(error.description()));
  }
  refreshing_ = false;
}

void CMainFrame::reloadFolder(CFolderView::Reload how) {
  const folders::FolderView* folder = list_->model().folder();
  auto watch = folder != nullptr ? startWatch(folder->folder().definition().table) : std::nullopt;
  const bool shown = list_->reload(how);
  if (shown) watch_ = std::move(watch);
  showFilter();
  if (shown) folderShown();
}

void CMainFrame::showTotals() {
  readTotals();
  status_->forgetMessage();
}

void CMainFrame::readTotals() {
  const platform::Progress progress(document_.app().surroundings().person, fromQt(texts_("IDS_TOTAL")),
                                    fromQt(texts_("IDS_READING_ROWS")));
  const folders::CallTotals totals = folders::filteredTotals(document_.folderServices());
  totals_ = toQt(folders::totalCostText(totals, document_.folderServices(), document_.valueFormatter()));
}

void CMainFrame::say(const QString& text) {
  status_->say(text);
}

// The sums of the selection, else of the list.
QString CMainFrame::shownTotals() {
  if (person_.busy()) {
    status_->refreshSoon();
    return {};
  }
  QString selected;
  try {
    selected = list_->selectionTotals();
  } catch (const jet::Error& error) {
    if (!error.canceled()) selected = toQt(error.description());
  }
  return selected.isEmpty() ? totals_ : selected;
}

void CMainFrame::showFilter() {
  filterPane_->show(document_.filterDescription().pieces());
  (*actions_)[Command::FilterOn]->setChecked(document_.callFilter().active());
  const filter::FilterSettings settings = document_.callFilter().settings();
  parts_ = filter::partsOf(settings, filter::readDisplayNames(document_.app().config(), settings), texts_.language(),
                           document_.app().surroundings().clock.now());
  QStringList texts;
  for (const filter::Part& part : parts_) texts << toQt(part.text);
  listPane_->filterBar().showParts(texts);
}

void CMainFrame::showDetails() {
  if (details_->isHidden()) return;
  try {
    details_->show(currentDetails(document_, texts_, *list_));
  } catch (const jet::Error& error) {
    say(toQt(error.description()));
  }
}

void CMainFrame::showChart() {
  folders::FolderView* folder = list_->model().folder();
  const bool statistic = folder != nullptr && folders::isStatistic(folder->folder().definition());
  chart_->setVisible(statistic);
  details_->setVisible(!statistic);
  if (statistic) showFolderChart(*chart_, *list_, document_, texts_);
}

void CMainFrame::updateStatus() {
  offerCommands(*actions_, *list_, document_);
  (*actions_)[Command::Undo]->setEnabled(!undo_.empty());
  actions_->tellWhat(Command::Undo, undo_.empty() ? QString() : undo_.what());
  status_->showCount(list_->searching() ? texts_.format("IDS_FOUND_SO_FAR", list_->model().totalRows())
                                        : toQt(folders::recordCountText(list_->model().totalRows(),
                                                                        list_->selectedCount(), texts_.language())));
}

void CMainFrame::showError(const QString& text) {
  QMessageBox::warning(this, base::kProgramName, text);
}

void CMainFrame::closeEvent(QCloseEvent* event) {
  // The work under way uses what would be closed.
  if (person_.busy()) return event->ignore();
  importTimer_.stop();
  refreshTimer_.stop();
  liveNotifier_.reset();
  live_.reset();
  list_->saveLayout();
  keepPanes();
  // The folder's result closes before its database does.
  list_->closeFolder();
  event->accept();
}

}  // namespace ui
