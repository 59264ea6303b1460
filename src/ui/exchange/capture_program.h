#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <functional>

#include "platform/operator.h"
#include "ui/texts.h"

namespace ui {

// The capture program `tallymon`, which the desktop runs for everything that concerns exchanges. While it is waited
// for, the windows are drawn and the operator can give up waiting.
class CaptureProgram {
 public:
  // `person` and `texts` must outlive it.
  CaptureProgram(QString siteFile, platform::Operator& person, const Texts& texts)
      : siteFile_(std::move(siteFile)), person_(person), texts_(texts) {}

  struct Result {
    bool done = false;
    QByteArray output;
    QString message;  // of a failure, mostly in the program's words
  };
  // Runs a command with this site file and waits for its end, ten seconds at most.
  [[nodiscard]] Result run(const QStringList& words, const QByteArray& input = {}) const;

  // Runs a command that needs no site file.
  [[nodiscard]] Result ask(const QStringList& words, const QByteArray& input = {}) const;
  // Runs a command and calls `done` when it has ended; nothing is called when `owner` goes first.
  void query(const QStringList& words, QObject* owner, std::function<void(const Result&)> done) const;
  // The words of a command with this site file.
  [[nodiscard]] QStringList withSite(QStringList words) const { return words << "--config" << siteFile_; }
  // Runs any program; `seconds` at most.
  [[nodiscard]] Result runProgram(const QString& program, const QStringList& words, const QByteArray& input,
                                  int seconds) const;
  // How waiting ended.
  enum class End { Ended, Late, GivenUp };
  [[nodiscard]] End waitFor(QProcess& process, int milliseconds) const;

  // Where the program is: beside the desktop, or in the system's path. Empty when it is not installed.
  [[nodiscard]] static QString file();
  [[nodiscard]] const QString& siteFile() const { return siteFile_; }
  [[nodiscard]] platform::Operator& person() const { return person_; }
  [[nodiscard]] const Texts& texts() const { return texts_; }

 private:
  QString siteFile_;
  platform::Operator& person_;
  const Texts& texts_;
};

// The capture service: systemd's where that one reads this site file, else a process that the desktop starts and that
// goes on when the desktop ends. Each returns a message of what went wrong, or an empty text.
class CaptureService {
 public:
  explicit CaptureService(const CaptureProgram& program) : program_(program) {}

  [[nodiscard]] QString start() const;
  [[nodiscard]] QString stop() const;
  [[nodiscard]] QString reload() const;

 private:
  [[nodiscard]] bool isSystemd() const;
  [[nodiscard]] QString systemctl(const QStringList& words) const;
  [[nodiscard]] QString startProcess() const;

  const CaptureProgram& program_;
};

}  // namespace ui
