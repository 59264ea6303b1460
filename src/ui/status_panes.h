#pragma once

#include <QLabel>
#include <QObject>
#include <QStatusBar>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "ui/texts.h"

namespace ui {

// What the status bar tells: a message for a while, else what the shown list amounts to; whether calls arrive live; the
// counts of records.
class StatusPanes : public QObject {
  Q_OBJECT

 public:
  // `totals` gives what the message pane shows while there is no message; it may say nothing.
  StatusPanes(QStatusBar& bar, const Texts& texts, std::function<QString()> totals);

  // A message; the totals come back after ten seconds.
  void say(const QString& text);
  // Where a file is that was written, with links that open it and its folder; it stays for a minute.
  void sayFile(const std::filesystem::path& file);
  void forgetMessage();
  // The totals now, unless a message is still to be read.
  void refresh();
  // The totals once a selection that is still being drawn has come to rest.
  void refreshSoon();
  // How many alarms wait, as a link; 0: nothing.
  void showAlarms(std::int64_t waiting);
  void showLive(const QString& text) { live_->setText(text); }
  void showCount(const QString& text) { count_->setText(text); }

 signals:
  // The operator wants this file or folder to be opened.
  void openWanted(const QString& path);
  void alarmsWanted();

 private:
  void sayFor(const QString& text, int milliseconds);

  const Texts& texts_;
  std::function<QString()> totals_;
  QLabel* message_;
  QLabel* alarms_;
  QLabel* live_;
  QLabel* count_;
  QString said_;
  QTimer messageTimer_;
  QTimer restTimer_;
};

}  // namespace ui
