#include "ui/exchange/capture_program.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace ui {

namespace {

constexpr const char* kSystemSiteFile = "/etc/tallymon/tallymon.toml";
constexpr int kCommandTime = 10'000;     // milliseconds
constexpr int kPermissionTime = 60'000;  // somebody may be asked for a password
constexpr int kStartLooks = 50;
constexpr unsigned long kStartPause = 100;  // milliseconds

CaptureProgram::Result runProgram(const QString& program, const QStringList& words, const QByteArray& input,
                                  int milliseconds) {
  QProcess process;
  process.start(program, words);
  process.write(input);
  process.closeWriteChannel();
  CaptureProgram::Result result;
  const bool ended = process.waitForFinished(milliseconds);
  result.output = process.readAllStandardOutput();
  result.message = QString::fromUtf8(process.readAllStandardError()).trimmed();
  result.done = ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
  if (!ended && result.message.isEmpty()) result.message = program + ": " + process.errorString();
  if (!ended) process.kill();
  process.waitForFinished(kCommandTime);
  if (result.message.startsWith("tallymon: ")) result.message.remove(0, QString("tallymon: ").size());
  return result;
}

QString systemctl(const QStringList& words) {
  const auto result = runProgram("systemctl", words, {}, kPermissionTime);
  return result.done ? QString() : result.message;
}

}  // namespace

QString CaptureProgram::file() {
  const QString beside = QCoreApplication::applicationDirPath() + "/tallymon";
  return QFileInfo(beside).isExecutable() ? beside : QStandardPaths::findExecutable("tallymon");
}

CaptureProgram::Result CaptureProgram::run(QStringList words, const QByteArray& input) const {
  words << "--config" << siteFile_;
  return ask(words, input);
}

CaptureProgram::Result CaptureProgram::ask(const QStringList& words, const QByteArray& input) {
  return runProgram(file(), words, input, kCommandTime);
}

bool CaptureService::isSystemd() const {
  return program_.siteFile() == kSystemSiteFile && QFileInfo::exists("/run/systemd/system") &&
         systemctl({"cat", "tallymon.service"}).isEmpty();
}

QString CaptureService::start() const {
  return isSystemd() ? systemctl({"enable", "--now", "tallymon.service"}) : startProcess();
}

QString CaptureService::stop() const {
  if (isSystemd()) return systemctl({"disable", "--now", "tallymon.service"});
  const auto result = program_.run({"stop"});
  return result.done ? QString() : result.message;
}

QString CaptureService::reload() const {
  if (isSystemd()) return systemctl({"reload", "tallymon.service"});
  const auto result = program_.run({"reload"});
  return result.done ? QString() : result.message;
}

// What it says goes to a file, which tells why it ended at once when it did.
QString CaptureService::startProcess() const {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/tallymon";
  const QString log = folder + "/tallymon.log";
  QDir().mkpath(folder);
  QFile::remove(log);
  QProcess process;
  process.setProgram(CaptureProgram::file());
  process.setArguments({"run", "--config", program_.siteFile()});
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(log);
  qint64 number = 0;
  if (!process.startDetached(&number)) return process.errorString();
  for (int look = 0; look < kStartLooks; ++look) {
    QThread::msleep(kStartPause);
    if (program_.run({"status"}).done) return {};
    if (!QFileInfo::exists("/proc/" + QString::number(number))) break;
  }
  QFile said(log);
  said.open(QIODevice::ReadOnly);
  const QString why = QString::fromUtf8(said.readAll()).trimmed();
  return why.isEmpty() ? "tallymon: " + log : why;
}

}  // namespace ui
