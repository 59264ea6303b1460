#include "ui/folder_pane.h"

#include <QHBoxLayout>
#include <QPushButton>

#include "ui/icons.h"

namespace ui {

namespace {

// Rows between what is seen and the window's end below which the window is moved.
constexpr std::int64_t kRowsToEdge = 1000;

}  // namespace

FolderPane::FolderPane(CFolderView* list, const Texts& texts, QWidget* parent)
    : QWidget(parent),
      list_(list),
      filter_(new FilterBar(texts)),
      whole_(new QScrollBar(Qt::Vertical)),
      guide_(new EmptyGuide(list->viewport(), list)) {
  whole_->setObjectName("wholeFolder");
  buildBar(texts);
  auto* rows = new QHBoxLayout;
  rows->setSpacing(0);
  rows->addWidget(list_);
  rows->addWidget(whole_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(filter_);
  layout->addWidget(bar_);
  layout->addLayout(rows, 1);
  setFocusProxy(list_);
  connect(filter_, &FilterBar::lineEntered, list_, &CFolderView::expectWords);
  connect(filter_, &FilterBar::listWanted, list_, [this] { list_->setFocus(); });
  connect(&list_->model(), &QAbstractItemModel::modelReset, this, &FolderPane::chooseBar);
  connect(list_->verticalScrollBar(), &QScrollBar::rangeChanged, this, &FolderPane::follow);
  connect(list_->verticalScrollBar(), &QScrollBar::valueChanged, this, &FolderPane::follow);
  connect(whole_, &QScrollBar::valueChanged, this, &FolderPane::scrollTo);
  chooseBar();
}

void FolderPane::buildBar(const Texts& texts) {
  bar_ = new QFrame;
  bar_->setObjectName("narrowingBar");
  bar_->setAutoFillBackground(true);
  bar_->setBackgroundRole(QPalette::AlternateBase);
  narrowing_ = new QLabel;
  narrowing_->setObjectName("narrowing");
  narrowing_->setTextFormat(Qt::PlainText);
  auto* back = new QPushButton(icon(Icon::Back), texts("IDS_NARROWED_BACK"));
  back->setObjectName("back");
  auto* all = new QPushButton(texts("IDS_NARROWED_ALL"));
  all->setObjectName("allCalls");
  auto* layout = new QHBoxLayout(bar_);
  layout->setContentsMargins(8, 4, 8, 4);
  layout->addWidget(back);
  layout->addWidget(narrowing_, 1);
  layout->addWidget(all);
  connect(back, &QPushButton::clicked, this, &FolderPane::backWanted);
  connect(all, &QPushButton::clicked, this, &FolderPane::allCallsWanted);
  bar_->hide();
}

void FolderPane::showNarrowing(const QString& text) {
  narrowing_->setText(text);
  bar_->setVisible(!text.isEmpty());
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
  const bool tooHigh = position < start + kRowsToEdge && start > 0;
  const bool tooLow = position > end - kRowsToEdge && end < model.totalRows();
  if (!tooHigh && !tooLow) return;
  model.moveWindow(position - model.rowCount() / 2);
  list_->verticalScrollBar()->setValue(static_cast<int>(position - model.windowStart()));
}

}  // namespace ui
