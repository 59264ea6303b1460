#include "ui/empty_guide.h"

#include <QEvent>

#include "ui/dialogs/form_dialog.h"

namespace ui {

EmptyGuide::EmptyGuide(QWidget* area, QWidget* list)
    : ScrollPage(new QWidget, list),
      area_(area),
      text_(named(new QLabel, "emptyText")),
      layout_(new QVBoxLayout(widget())) {
  setObjectName("emptyGuide");
  setFocusPolicy(Qt::NoFocus);
  // The list is seen through it.
  viewport()->setAutoFillBackground(false);
  widget()->setAutoFillBackground(false);
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignCenter);
  text_->setTextFormat(Qt::PlainText);
  layout_->addStretch();
  layout_->addWidget(text_);  // as wide as the list, so that it has the lines that it needs
  layout_->addStretch();
  area_->installEventFilter(this);
  hide();
}

void EmptyGuide::guide(const QString& text, const std::vector<QAction*>& ways) {
  for (QPushButton* button : buttons_) button->deleteLater();
  buttons_.clear();
  text_->setText(text);
  for (QAction* way : ways) {
    if (!way->isVisible() || !way->isEnabled()) continue;
    auto* button = new QPushButton(way->icon(), QString(way->text()).remove('&'), widget());
    button->setObjectName(way->objectName());
    button->setToolTip(way->toolTip());
    connect(button, &QPushButton::clicked, way, &QAction::trigger, Qt::QueuedConnection);
    layout_->insertWidget(layout_->count() - 1, button, 0, Qt::AlignHCenter);
    buttons_.push_back(button);
  }
  setGeometry(area_->geometry());
  setVisible(!text.isEmpty());
  raise();
}

bool EmptyGuide::eventFilter(QObject* watched, QEvent* event) {
  if (watched == area_ && (event->type() == QEvent::Resize || event->type() == QEvent::Move)) {
    setGeometry(area_->geometry());
  }
  return ScrollPage::eventFilter(watched, event);
}

}  // namespace ui
