#pragma once

#include <QHash>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <memory>

#include "ui/exchange/capture_program.h"
#include "ui/texts.h"

namespace ui {

// The lines of an exchange as they come, each with the call that it gives or why it gives none: what `tallymon listen`
// tells of the site file. While the service runs these are the lines that it takes.
class ExchangeLines : public QTreeWidget {
  Q_OBJECT

 public:
  // Both must outlive it.
  ExchangeLines(platform::Operator& person, const Texts& texts);
  ~ExchangeLines() override;

  // Listens with a site as it is on the page, which need not be saved; `source` is one of it. An empty text, or what
  // is wrong.
  [[nodiscard]] QString listen(const QJsonObject& site, const QString& source);
  // Asks it to end, or waits until it has: the line has one reader at a time.
  void stop();
  void stopAndWait();
  [[nodiscard]] bool isListening() const { return process_.state() != QProcess::NotRunning && !stopping_; }
  // The raw lines that are shown.
  [[nodiscard]] QByteArray lines() const;

 signals:
  // Of the connection, or why listening has ended.
  void said(const QString& text);
  void ended();

 private:
  void readOutput();
  void take(const QJsonObject& event);
  void addLine(const QJsonObject& event);
  void showResult(const QJsonObject& event);
  [[nodiscard]] QString resultText(const QJsonObject& event) const;

  const Texts& texts_;
  platform::Operator& person_;
  QProcess process_;
  bool stopping_ = false;
  std::unique_ptr<QTemporaryDir> folder_;  // of the site file that is listened with: it may hold passwords
  QHash<qint64, QTreeWidgetItem*> items_;  // by number of the line
};

}  // namespace ui
