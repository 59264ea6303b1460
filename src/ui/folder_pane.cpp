#include "ui/folder_pane.h"

#include <QHBoxLayout>

namespace ui {

namespace {

// Rows between what is seen and the window's end below which the window is moved.
constexpr std::int64_t kMargin = 1000;

}  // namespace

FolderPane::FolderPane(CFolderView* list, QWidget* parent)
    : QWidget(parent), list_(list), whole_(new QScrollBar(Qt::Vertical)) {
  whole_->setObjectName("wholeFolder");
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(list_);
  layout->addWidget(whole_);
  setFocusProxy(list_);
  connect(&list_->model(), &QAbstractItemModel::modelReset, this, &FolderPane::chooseBar);
  connect(list_->verticalScrollBar(), &QScrollBar::rangeChanged, this, &FolderPane::follow);
  connect(list_->verticalScrollBar(), &QScrollBar::valueChanged, this, &FolderPane::follow);
  connect(whole_, &QScrollBar::valueChanged, this, &FolderPane::scrollTo);
  chooseBar();
}

void FolderPane::chooseBar() {
  list_->setVerticalScrollBarPolicy(windowed() ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
  whole_->setVisible(windowed());
}

void FolderPane::follow() {
  if (following_ || !windowed()) return;
  following_ = true;
  const QScrollBar& own = *list_->verticalScrollBar();
  const std::int64_t position = list_->model().windowStart() + own.value();
  moveWindowAround(position);
  whole_->setRange(0, static_cast<int>(list_->model().totalRows() - own.pageStep()));
  whole_->setPageStep(own.pageStep());
  whole_->setValue(static_cast<int>(position));
  following_ = false;
}

void FolderPane::scrollTo(int position) {
  if (following_) return;
  following_ = true;
  moveWindowAround(position);
  list_->verticalScrollBar()->setValue(static_cast<int>(position - list_->model().windowStart()));
  following_ = false;
}

// The rows at the position are kept away from the window's ends, but for those that are the folder's ends too.
void FolderPane::moveWindowAround(std::int64_t position) {
  FolderModel& model = list_->model();
  const std::int64_t start = model.windowStart();
  const std::int64_t end = start + model.rowCount();
  const bool tooHigh = position < start + kMargin && start > 0;
  const bool tooLow = position > end - kMargin && end < model.totalRows();
  if (!tooHigh && !tooLow) return;
  model.moveWindow(position - model.rowCount() / 2);
  list_->verticalScrollBar()->setValue(static_cast<int>(position - model.windowStart()));
}

}  // namespace ui
