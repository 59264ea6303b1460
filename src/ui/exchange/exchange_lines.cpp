#include "ui/exchange/exchange_lines.h"

#include <QFontDatabase>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>

#include "ui/exchange/exchange_faults.h"

namespace ui {

namespace {

constexpr int kMostLines = 500;
constexpr int kLinesBefore = 20;
constexpr int kEndTime = 2000;  // milliseconds
constexpr int kLineRole = Qt::UserRole;

const QHash<QString, const char*>& outcomeKeys() {
  static const QHash<QString, const char*> keys = {
      {"part", "IDS_EXCHANGE_PART"},   {"heading", "IDS_EXCHANGE_HEADING"},        {"skipped", "IDS_EXCHANGE_SKIPPED"},
      {"alarm", "IDS_EXCHANGE_ALARM"}, {"unknown", "IDS_EXCHANGE_UNKNOWN"},        {"outgoing", "IDS_OUTGOING"},
      {"incoming", "IDS_INCOMING"},    {"internal", "IDS_EXCHANGE_INTERNAL_CALL"},
  };
  return keys;
}

}  // namespace

ExchangeLines::ExchangeLines(platform::Operator& person, const Texts& texts) : texts_(texts), person_(person) {
  setHeaderLabels({texts("IDS_EXCHANGE_LINE_COLUMN"), texts("IDS_EXCHANGE_RECORD_COLUMN")});
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAccessibleName(texts("IDS_EXCHANGE_LINES"));
  header()->setSectionResizeMode(QHeaderView::Interactive);
  header()->resizeSection(0, fontMetrics().averageCharWidth() * 60);
  connect(&process_, &QProcess::readyReadStandardOutput, this, &ExchangeLines::readOutput);
  connect(&process_, &QProcess::finished, this, [this] {
    stopping_ = false;
    readOutput();
    QString why = QString::fromUtf8(process_.readAllStandardError()).trimmed();
    emit said(captureSaid(why.remove("tallymon: "), texts_));
    emit ended();
  });
}

ExchangeLines::~ExchangeLines() {
  process_.disconnect(this);
  process_.terminate();
  if (!process_.waitForFinished(kEndTime)) process_.kill();
  process_.waitForFinished(kEndTime);
}

QString ExchangeLines::listen(const QJsonObject& site, const QString& source) {
  stopAndWait();
  clear();
  items_.clear();
  folder_ = std::make_unique<QTemporaryDir>();
  const CaptureProgram program(folder_->filePath("site.toml"), person_, texts_);
  const auto written = program.run({"site", "set"}, QJsonDocument(site).toJson());
  if (!written.done) return written.message;
  process_.start(CaptureProgram::file(),
                 {"listen", source, "--json", "--last", QString::number(kLinesBefore), "--config", program.siteFile()});
  return process_.waitForStarted() ? QString() : process_.errorString();
}

void ExchangeLines::stop() {
  if (!isListening()) return;
  stopping_ = true;
  process_.terminate();
  QTimer::singleShot(kEndTime, &process_, [this] {
    if (stopping_) process_.kill();
  });
}

void ExchangeLines::stopAndWait() {
  stop();
  const CaptureProgram program({}, person_, texts_);
  if (program.waitFor(process_, kEndTime) != CaptureProgram::End::Ended) process_.kill();
  process_.waitForFinished(kEndTime);
}

QByteArray ExchangeLines::lines() const {
  QByteArray all;
  for (int i = 0; i < topLevelItemCount(); ++i) all += topLevelItem(i)->text(0).toUtf8() + '\n';
  return all;
}

void ExchangeLines::readOutput() {
  while (process_.canReadLine()) {
    take(QJsonDocument::fromJson(process_.readLine()).object());
  }
}

void ExchangeLines::take(const QJsonObject& event) {
  const QString kind = event["event"].toString();
  if (kind == "line") {
    addLine(event);
  } else if (kind == "result") {
    showResult(event);
  } else if (kind == "connection") {
    const std::string text = fromQt(captureSaid(event["text"].toString(), texts_));
    emit said(
        texts_.format(event["connected"].toBool() ? "IDS_EXCHANGE_CONNECTED" : "IDS_EXCHANGE_NOT_CONNECTED", text));
  }
}

void ExchangeLines::addLine(const QJsonObject& event) {
  auto* item = new QTreeWidgetItem(this, {event["text"].toString(), texts_("IDS_EXCHANGE_WAITS")});
  const qint64 number = event["line"].toInteger();
  item->setData(0, kLineRole, number);
  item->setFont(0, QFontDatabase::systemFont(QFontDatabase::FixedFont));
  item->setToolTip(0, item->text(0));
  items_.insert(number, item);
  while (topLevelItemCount() > kMostLines) {
    QTreeWidgetItem* oldest = takeTopLevelItem(0);
    items_.remove(oldest->data(0, kLineRole).toLongLong());
    delete oldest;
  }
  scrollToItem(item);
}

void ExchangeLines::showResult(const QJsonObject& event) {
  QTreeWidgetItem* item = items_.value(event["line"].toInteger());
  if (item == nullptr) return;
  item->setText(1, resultText(event));
  item->setToolTip(1, item->text(1));
  QFont font = item->font(1);
  font.setBold(event["outcome"].toString() == "unknown");
  item->setFont(1, font);
}

QString ExchangeLines::resultText(const QJsonObject& event) const {
  const auto word = [this](const QString& name) {
    const char* key = outcomeKeys().value(name);
    return key == nullptr ? name : texts_(key);
  };
  QStringList calls;
  for (const QJsonValue& record : event["records"].toArray()) {
    QStringList parts{word(record["type"].toString()), record["start"].toString()};
    const auto add = [&](const char* key, const char* field) {
      const QString text = record[field].toVariant().toString();
      if (!text.isEmpty()) parts << texts_(key) + ' ' + text;
    };
    add("IDS_EXTENSION", "extension");
    add("IDS_TRUNK", "trunk");
    add("IDS_NUMBER", "number");
    parts << QString::number(record["duration"].toInteger()) + " s";
    calls << parts.join(", ");
  }
  if (!calls.isEmpty()) return calls.join("; ");
  const QString reason = captureSaid(event["reason"].toString(), texts_);
  return word(event["outcome"].toString()) + (reason.isEmpty() ? "" : ": " + reason);
}

}  // namespace ui
