// From a row of a statistic, a contact or a window of results to its calls, and back.

#include "base/printf.h"
#include "folders/numbers.h"
#include "ui/contact_calls.h"
#include "ui/main_frame.h"

namespace ui {

void CMainFrame::drillDown(int) {
  const folders::FolderView* folder = list_->model().folder();
  if (folder == nullptr) return;
  const bool statistic = folders::isStatistic(folder->folder().definition());
  const Command command = statistic ? Command::ShowCalls : Command::Edit;
  if ((*actions_)[command]->isEnabled()) (*actions_)[command]->trigger();
}

void CMainFrame::showCallsBehindRow() {
  if (list_->currentIndex().isValid()) showCallsBehind(list_->model().position(list_->currentIndex().row()));
}

void CMainFrame::showCallsBehind(std::int64_t position) {
  folders::FolderView* folder = list_->model().folder();
  if (folder == nullptr || person_.busy()) return;
  if (const auto narrowing = folder->callsBehind(position)) openNarrowed(*narrowing, position);
}

void CMainFrame::showCallsOf(const contacts::CONTACTENTRYDESC& contact) {
  const QModelIndex current = list_->currentIndex();
  openNarrowed(callsOf(contact), current.isValid() ? list_->model().position(current.row()) : 0);
}

void CMainFrame::showCallsOf(const WeekHour& hour) {
  const std::string day = document_.valueFormatter().formatCell(folders::KindWeekday, jet::Value(hour.weekday));
  openNarrowed({base::format("Weekday([DateTime]) = %d And Hour([DateTime]) = %d", hour.weekday, hour.hour),
                texts_.language().TranslateFormat("IDS_WEEK_CELL", day, hour.hour, hour.hour)},
               0);
}

void CMainFrame::openNarrowed(const folders::Narrowing& narrowing, std::int64_t originPosition) {
  const Origin origin{list_->folderId(), originPosition};
  const folders::FolderDefinition& calls = *folders::findFolder(folders::FolderCalls);
  auto watch = startWatch(calls.table);
  if (!list_->openFolder(calls, narrowing)) return;
  watch_ = std::move(watch);
  origin_ = origin;
  listPane_->filterBar().clearTyped();
  selector_->mark(folders::FolderCalls);
  folderShown();
  list_->setFocus();
}

void CMainFrame::backToStatistic() {
  const Origin origin = origin_;
  selector_->select(origin.folder);
  const int row = list_->model().rowAt(origin.position);
  if (list_->folderId() == origin.folder && row >= 0) list_->setCurrentIndex(list_->model().index(row, 0));
  list_->setFocus();
}

}  // namespace ui
