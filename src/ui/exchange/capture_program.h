#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace ui {

// The capture program `tallymon`, which the desktop runs for everything that concerns exchanges.
class CaptureProgram {
 public:
  explicit CaptureProgram(QString siteFile) : siteFile_(std::move(siteFile)) {}

  struct Result {
    bool done = false;
    QByteArray output;
    QString message;  // of a failure, in the program's words
  };
  // Runs a command with this site file and waits for its end, ten seconds at most.
  [[nodiscard]] Result run(QStringList words, const QByteArray& input = {}) const;

  // Runs a command that needs no site file.
  [[nodiscard]] static Result ask(const QStringList& words, const QByteArray& input = {});

  // Where the program is: beside the desktop, or in the system's path. Empty when it is not installed.
  [[nodiscard]] static QString file();
  [[nodiscard]] const QString& siteFile() const { return siteFile_; }

 private:
  QString siteFile_;
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
  [[nodiscard]] QString startProcess() const;

  const CaptureProgram& program_;
};

}  // namespace ui
