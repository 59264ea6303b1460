#include "ui/exchange/capture_program.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <chrono>

#include "platform/progress.h"

namespace ui {

namespace {

constexpr const char* kSystemSiteFile = "/etc/tallymon/tallymon.toml";
constexpr int kCommandTime = 10;     // seconds
constexpr int kPermissionTime = 60;  // seconds: somebody may be asked for a password
constexpr int kKillTime = 2000;      // milliseconds
constexpr int kLook = 20;            // milliseconds between two looks at the window
constexpr int kStartLooks = 50;
constexpr int kStartPause = 100;  // milliseconds

CaptureProgram::Result resultOf(QProcess& process) {
  CaptureProgram::Result result;
  result.output = process.readAllStandardOutput();
  result.message = QString::fromUtf8(process.readAllStandardError()).trimmed();
  if (result.message.startsWith("tallymon: ")) result.message.remove(0, QString("tallymon: ").size());
  if (process.error() == QProcess::FailedToStart) {
    result.message = process.program() + ": " + process.errorString();
    return result;
  }
  result.done = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
  return result;
}

}  // namespace

CaptureProgram::End CaptureProgram::waitFor(QProcess& process, int milliseconds) const {
  const platform::Progress progress(person_, fromQt(texts_("IDS_PAGE_EXCHANGE")), fromQt(texts_("IDS_EXCHANGE_BUSY")));
  QElapsedTimer waited;
  waited.start();
  while (process.state() != QProcess::NotRunning && !process.waitForFinished(kLook)) {
    if (process.state() == QProcess::NotRunning) break;
    if (waited.elapsed() >= milliseconds) return End::Late;
    if (!person_.progressStep(0)) return End::GivenUp;
  }
  return End::Ended;
}

CaptureProgram::Result CaptureProgram::runProgram(const QString& program, const QStringList& words,
                                                  const QByteArray& input, int seconds) const {
  constexpr int kMilliseconds = 1000;
  QProcess process;
  process.start(program, words);
  process.write(input);
  process.closeWriteChannel();
  const End end = waitFor(process, seconds * kMilliseconds);
  if (end == End::Ended) return resultOf(process);
  process.kill();
  process.waitForFinished(kKillTime);
  Result result;
  result.message = end == End::GivenUp ? texts_("IDS_EXCHANGE_GIVEN_UP")
                                       : texts_.format("IDS_EXCHANGE_NO_ANSWER", fromQt(program), seconds);
  return result;
}

QString CaptureProgram::file() {
  const QString beside = QCoreApplication::applicationDirPath() + "/tallymon";
  return QFileInfo(beside).isExecutable() ? beside : QStandardPaths::findExecutable("tallymon");
}

CaptureProgram::Result CaptureProgram::run(const QStringList& words, const QByteArray& input) const {
  return ask(withSite(words), input);
}

CaptureProgram::Result CaptureProgram::ask(const QStringList& words, const QByteArray& input) const {
  return runProgram(file(), words, input, kCommandTime);
}

// The process is no child of its owner, which may go first: a process that goes while it runs still tells of its end.
void CaptureProgram::query(const QStringList& words, QObject* owner, std::function<void(const Result&)> done) const {
  auto* process = new QProcess(qApp);
  const auto tell = [process, done = std::move(done)] { done(resultOf(*process)); };
  QObject::connect(process, &QProcess::finished, owner, tell);
  QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
  QObject::connect(process, &QProcess::errorOccurred, owner, [tell](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) tell();  // it does not finish then
  });
  QObject::connect(process, &QProcess::errorOccurred, process, [process](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) process->deleteLater();
  });
  QTimer::singleShot(std::chrono::seconds(kCommandTime), process, [process] { process->kill(); });
  process->start(file(), words);
}

QString CaptureService::systemctl(const QStringList& words) const {
  const auto result = program_.runProgram("systemctl", words, {}, kPermissionTime);
  return result.done ? QString() : result.message;
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
  platform::Operator& person = program_.person();
  const platform::Progress progress(person, fromQt(program_.texts()("IDS_PAGE_EXCHANGE")),
                                    fromQt(program_.texts()("IDS_EXCHANGE_BUSY")));
  for (int look = 0; look < kStartLooks; ++look) {
    for (int pause = 0; pause < kStartPause; pause += kLook) {
      QThread::msleep(kLook);
      if (!person.progressStep(0)) return program_.texts()("IDS_EXCHANGE_GIVEN_UP");
    }
    if (program_.run({"status"}).done) return {};
    if (!QFileInfo::exists("/proc/" + QString::number(number))) break;
  }
  QFile said(log);
  said.open(QIODevice::ReadOnly);
  const QString why = QString::fromUtf8(said.readAll()).trimmed();
  return why.isEmpty() ? "tallymon: " + log : why;
}

}  // namespace ui
