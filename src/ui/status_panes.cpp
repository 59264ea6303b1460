#include "ui/status_panes.h"

#include "ui/dialogs/form_dialog.h"
#include "ui/file_line.h"

namespace ui {

namespace {

// Milliseconds: how long a message stays, and how long a selection has to rest before it is summed.
constexpr int kMessageTime = 10'000;
constexpr int kFileTime = 60'000;
constexpr int kSelectionRest = 150;

}  // namespace

StatusPanes::StatusPanes(QStatusBar& bar, const Texts& texts, std::function<QString()> totals)
    : QObject(&bar),
      texts_(texts),
      totals_(std::move(totals)),
      message_(named(new QLabel, "messagePane")),
      alarms_(named(new QLabel, "alarmPane")),
      live_(named(new QLabel, "livePane")),
      count_(named(new QLabel, "countPane")) {
  for (QLabel* pane : {message_, alarms_, live_, count_}) pane->setContentsMargins(8, 0, 8, 0);
  message_->setTextInteractionFlags(Qt::TextBrowserInteraction);
  connect(message_, &QLabel::linkActivated, this, &StatusPanes::openWanted);
  for (QTimer* timer : {&messageTimer_, &restTimer_}) {
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, &StatusPanes::refresh);
  }
  bar.addWidget(message_, 1);
  alarms_->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  alarms_->hide();
  connect(alarms_, &QLabel::linkActivated, this, &StatusPanes::alarmsWanted);
  bar.addPermanentWidget(alarms_);
  bar.addPermanentWidget(live_);
  bar.addPermanentWidget(count_);
}

void StatusPanes::showAlarms(std::int64_t waiting) {
  alarms_->setVisible(waiting > 0);
  if (waiting > 0) alarms_->setText(linkTo("alarms", texts_.format("IDS_STATUS_ALARMS", waiting)));
}

void StatusPanes::say(const QString& text) {
  sayFor(text, kMessageTime);
}

void StatusPanes::sayFile(const std::filesystem::path& file) {
  if (file.empty()) return;
  sayFor(fileLinks(file, texts_), kFileTime);
}

void StatusPanes::sayFor(const QString& text, int milliseconds) {
  said_ = text;
  messageTimer_.start(milliseconds);
  message_->setText(text);
}

void StatusPanes::forgetMessage() {
  said_.clear();
  refresh();
}

void StatusPanes::refresh() {
  if (messageTimer_.isActive() && !said_.isEmpty()) return;
  message_->setText(totals_());
}

void StatusPanes::refreshSoon() {
  restTimer_.start(kSelectionRest);
}

}  // namespace ui
