#include "ui/filter_bar.h"

#include <QKeyEvent>

#include "ui/dialogs/form_dialog.h"
#include "ui/flow_layout.h"
#include "ui/icons.h"

namespace ui {

namespace {

// Milliseconds: keys that follow each other quicker are one change.
constexpr int kRest = 40;
constexpr int kLineLetters = 34;
// Styles draw the arrow of a menu over the end of the text.
constexpr const char* kRoomForArrow = "   ";
// Longer typed words are shown cut on their button.
constexpr qsizetype kMostLetters = 40;

void showOnPart(QToolButton& button, const QString& what, const QString& removal) {
  QString text = what;
  button.setText(text.replace("&", "&&") + QString::fromUtf8("  \u00d7"));
  button.setToolTip(removal);
  button.setAccessibleName(removal);
}

QToolButton* makePart(const char* name) {
  auto* button = named(new QToolButton, name);
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

}  // namespace

FilterBar::FilterBar(const Texts& texts, QWidget* parent)
    : QWidget(parent), texts_(texts), line_(named(new QLineEdit, "quickFilter")), typedPart_(makePart("typedPart")) {
  setObjectName("filterBar");
  auto* layout = new FlowLayout(this);
  layout->setContentsMargins(4, 4, 4, 4);
  line_->setPlaceholderText(texts("IDS_QUICK_FILTER"));
  line_->setToolTip(texts("IDS_QUICK_FILTER_TIP"));
  line_->setAccessibleName(texts("IDS_QUICK_FILTER"));
  line_->setClearButtonEnabled(true);
  line_->setFixedWidth(fontMetrics().averageCharWidth() * kLineLetters);
  line_->addAction(icon(Icon::Search), QLineEdit::LeadingPosition);
  line_->installEventFilter(this);
  layout->addWidget(line_);
  periods_ = addMenuButton("IDS_FILTER_PERIODS", "periods");
  filters_ = addMenuButton("IDS_FILTER_SAVED", "savedFilters");
  periods_->setToolTip(texts("IDS_FILTER_PERIODS_TIP"));
  filters_->setToolTip(texts("IDS_FILTER_SAVED_TIP"));
  layout->addWidget(typedPart_);
  typedPart_->hide();
  connect(typedPart_, &QToolButton::clicked, this, [this] {
    line_->clear();
    line_->setFocus();
  });
  rest_.setSingleShot(true);
  rest_.setInterval(kRest);
  connect(line_, &QLineEdit::textChanged, this, [this] { rest_.start(); });
  connect(&rest_, &QTimer::timeout, this, &FilterBar::tellTyped);
}

QToolButton* FilterBar::addMenuButton(const char* key, const char* name) {
  auto* button = named(new QToolButton, name);
  button->setText(texts_(key) + kRoomForArrow);
  button->setAccessibleName(texts_(key));
  button->setPopupMode(QToolButton::InstantPopup);
  button->setFocusPolicy(Qt::TabFocus);
  button->setMenu(new QMenu(button));
  layout()->addWidget(button);
  return button;
}

void FilterBar::tellTyped() {
  if (typed() == told_) return;
  told_ = typed();
  showTypedPart();
  emit typedChanged(told_);
}

void FilterBar::showTypedPart() {
  const QString shown = told_.size() > kMostLetters ? told_.left(kMostLetters) + QChar(0x2026) : told_;
  showOnPart(*typedPart_, '"' + shown + '"', texts_.format("IDS_FILTER_REMOVE_TYPED", fromQt(told_)));
  typedPart_->setVisible(!told_.isEmpty());
}

void FilterBar::showParts(const QStringList& parts) {
  qDeleteAll(parts_);
  parts_.clear();
  for (int i = 0; i < parts.size(); ++i) {
    auto* button = makePart("filterPart");
    showOnPart(*button, parts[i], texts_.format("IDS_FILTER_REMOVE_PART", fromQt(parts[i])));
    // The button goes with the change that it asks for.
    connect(
        button, &QToolButton::clicked, this, [this, i] { emit partRemoved(i); }, Qt::QueuedConnection);
    layout()->addWidget(button);
    parts_.push_back(button);
    button->show();
  }
  layout()->removeWidget(typedPart_);
  layout()->addWidget(typedPart_);
  layout()->invalidate();
  updateGeometry();
}

void FilterBar::showCallFilter(bool counts) {
  periods_->setVisible(counts);
  filters_->setVisible(counts);
  for (QToolButton* button : parts_) button->setVisible(counts);
}

void FilterBar::clearTyped() {
  told_.clear();
  line_->clear();
  rest_.stop();
  showTypedPart();
}

void FilterBar::focusLine() {
  line_->setFocus(Qt::ShortcutFocusReason);
  line_->selectAll();
}

bool FilterBar::eventFilter(QObject* watched, QEvent* event) {
  if (watched == line_ && event->type() == QEvent::FocusIn) emit lineEntered();
  if (watched != line_ || event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Escape:
      if (line_->text().isEmpty()) break;
      line_->clear();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
      rest_.stop();
      tellTyped();
      emit listWanted();
      return true;
    default:
      break;
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace ui
