#include "ui/exchange/exchange_page.h"

#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <algorithm>
#include <stdexcept>

#include "server/monitor_status.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/exchange/exchange_faults.h"
#include "ui/sentence.h"

namespace ui {

namespace {

constexpr int kTitleShown = 24;  // characters of a title, at least
constexpr int kRefresh = 3000;   // milliseconds between two looks at the service
constexpr int kSpare = 4;        // pixels

QJsonObject objectOf(const QByteArray& json) {
  return QJsonDocument::fromJson(json).object();
}

void addRow(QFormLayout& form, const QString& caption, QWidget* editor) {
  auto* label = new QLabel(caption);
  label->setBuddy(editor);
  editor->setAccessibleName(caption);
  form.addRow(label, editor);
}

// Forms that stand below each other have their fields in one line; there is room left for the marks of letters.
void alignLabels(const QWidget& tab) {
  const auto labels = tab.findChildren<QLabel*>();
  int widest = 0;
  for (const QLabel* label : labels) widest = std::max(widest, label->sizeHint().width() + kSpare);
  for (QLabel* label : labels) label->setMinimumWidth(widest);
}

}  // namespace

ExchangePage::ExchangePage(ExchangePlace place, platform::Operator& person, const Texts& texts)
    : texts_(texts),
      place_(std::move(place)),
      program_(place_.siteFile, person, texts),
      source_(named(new QComboBox, "exchangeSource")),
      tabs_(named(new QTabWidget, "exchangeTabs")),
      id_(named(new QLineEdit, "exchangeId")),
      format_(named(new QComboBox, "exchangeFormat")),
      transport_(named(new QComboBox, "exchangeTransport")),
      reading_(named(new FieldForm(readingFields(), texts), "exchangeReading")),
      quiet_(named(new FieldForm(quietFields(), texts), "exchangeQuiet")),
      lines_(named(new ExchangeLines(person, texts), "exchangeLines")),
      message_(named(makeSentence(), "exchangeMessage")),
      state_(named(makeSentence(), "exchangeState")) {
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(buildChoice());
  tabs_->addTab(buildConnection(), texts_("IDS_EXCHANGE_TAB_CONNECTION"));
  tabs_->addTab(buildReading(), texts_("IDS_EXCHANGE_TAB_READING"));
  tabs_->addTab(buildLines(), texts_("IDS_EXCHANGE_TAB_LINES"));
  layout->addWidget(tabs_, 1);
  layout->addWidget(message_);
  layout->addLayout(buildService());
  timer_.setInterval(kRefresh);
  connect(&timer_, &QTimer::timeout, this, &ExchangePage::lookAtService);
}

QLayout* ExchangePage::buildChoice() {
  auto* row = new QHBoxLayout;
  auto* label = new QLabel(texts_("IDS_PAGE_EXCHANGE"));
  label->setBuddy(source_);
  source_->setAccessibleName(label->text());
  row->addWidget(label);
  row->addWidget(source_, 1);
  auto* add = named(new QPushButton(texts_("IDS_ADD")), "exchangeAdd");
  remove_ = named(new QPushButton(texts_("IDS_REMOVE")), "exchangeRemove");
  row->addWidget(add);
  row->addWidget(remove_);
  connect(source_, &QComboBox::activated, this, [this](int index) {
    keepShown();
    showSource(index);
  });
  connect(add, &QPushButton::clicked, this, &ExchangePage::addSource);
  connect(remove_, &QPushButton::clicked, this, &ExchangePage::removeSource);
  return row;
}

QWidget* ExchangePage::buildConnection() {
  auto* tab = new QWidget;
  auto* layout = new QVBoxLayout(tab);
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  for (QComboBox* box : {format_, transport_}) {
    // Titles are long; the list shows them whole.
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(kTitleShown);
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  }
  addRow(*form, texts_("IDS_EXCHANGE_ID"), id_);
  addRow(*form, texts_("IDS_EXCHANGE_FORMAT"), format_);
  addRow(*form, texts_("IDS_EXCHANGE_TRANSPORT"), transport_);
  layout->addLayout(form);
  for (const ExchangeTransport& transport : exchangeTransports()) {
    transport_->addItem(texts_(transport.captionKey), transport.key);
    parameters_.push_back(named(new FieldForm(transport.fields, texts_), transport.key));
    layout->addWidget(parameters_.back());
  }
  layout->addStretch();
  connect(format_, &QComboBox::currentIndexChanged, this, &ExchangePage::useFormat);
  connect(transport_, &QComboBox::currentIndexChanged, this, &ExchangePage::useTransport);
  alignLabels(*tab);
  useTransport();
  return tab;
}

QWidget* ExchangePage::buildReading() {
  auto* tab = new QWidget;
  auto* layout = new QVBoxLayout(tab);
  layout->addWidget(reading_);
  layout->addWidget(quiet_);
  layout->addStretch();
  alignLabels(*tab);
  return tab;
}

QWidget* ExchangePage::buildLines() {
  auto* tab = new QWidget;
  auto* layout = new QVBoxLayout(tab);
  auto* row = new QHBoxLayout;
  listen_ = named(new QPushButton(texts_("IDS_EXCHANGE_LISTEN_NOW")), "exchangeListen");
  guess_ = named(new QPushButton(texts_("IDS_EXCHANGE_GUESS")), "exchangeGuess");
  row->addWidget(listen_);
  row->addWidget(guess_);
  row->addStretch();
  connect(listen_, &QPushButton::clicked, this, &ExchangePage::toggleListening);
  connect(guess_, &QPushButton::clicked, this, &ExchangePage::guessFormat);
  connect(lines_, &ExchangeLines::said, this, &ExchangePage::say);
  connect(lines_, &ExchangeLines::ended, this, [this] { listen_->setText(texts_("IDS_EXCHANGE_LISTEN_NOW")); });
  layout->addLayout(row);
  layout->addWidget(lines_, 1);
  layout->addWidget(makeSentence(texts_("IDS_EXCHANGE_LINES_HINT")));
  return tab;
}

QLayout* ExchangePage::buildService() {
  auto* row = new QHBoxLayout;
  start_ = named(new QPushButton(texts_("IDS_EXCHANGE_START")), "exchangeStart");
  stop_ = named(new QPushButton(texts_("IDS_EXCHANGE_STOP")), "exchangeStop");
  row->addWidget(state_, 1);
  row->addWidget(start_);
  row->addWidget(stop_);
  connect(start_, &QPushButton::clicked, this, [this] { control(&CaptureService::start); });
  connect(stop_, &QPushButton::clicked, this, [this] { control(&CaptureService::stop); });
  return row;
}

void ExchangePage::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (!loaded_ && !asking_) ask();
  if (loaded_) timer_.start();
}

void ExchangePage::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  timer_.stop();
  lines_->stop();
}

// The page is seen at once, and can be used when the capture program has answered.
void ExchangePage::ask() {
  if (CaptureProgram::file().isEmpty()) {
    setEnabled(false);
    return say(texts_("IDS_EXCHANGE_NO_PROGRAM"));
  }
  setAsking(true);
  const auto query = [this](const QStringList& words, std::optional<CaptureProgram::Result>& answer) {
    answer.reset();
    program_.query(words, this, [this, &answer](const CaptureProgram::Result& result) {
      answer = result;
      useAnswers();
    });
  };
  query({"formats", "--json"}, formatsAnswer_);
  query(program_.withSite({"site", "--json"}), siteAnswer_);
}

void ExchangePage::setAsking(bool asking) {
  asking_ = asking;
  setEnabled(!asking);
  window()->setProperty(kStillReading, asking);
  if (asking) state_->setText(texts_("IDS_EXCHANGE_BUSY"));
}

void ExchangePage::useAnswers() {
  if (!formatsAnswer_ || !siteAnswer_) return;
  setAsking(false);
  for (const auto* answer : {&*formatsAnswer_, &*siteAnswer_}) {
    if (answer->done) continue;
    state_->clear();
    return say(captureSaid(answer->message, texts_));  // the next time it is shown, it asks again
  }
  showFormats(QJsonDocument::fromJson(formatsAnswer_->output).array());
  showSite(objectOf(siteAnswer_->output));
  if (isVisible()) timer_.start();
}

void ExchangePage::showSite(const QJsonObject& found) {
  say(exchangeFault(found["fault"].toString(), texts_));
  site_ = found["site"].toObject();
  sources_.clear();
  removed_ = {};
  shown_ = -1;
  for (const QJsonValue& source : site_["source"].toArray()) sources_.push_back({{}, source.toObject()});
  // What the file says in another form than the page would write it is no change.
  for (int i = 0; i < static_cast<int>(sources_.size()); ++i) {
    showSource(i);
    keepShown();
    sources_[static_cast<std::size_t>(i)].unchanged = sources_[static_cast<std::size_t>(i)].now;
  }
  loaded_ = true;
  if (sources_.empty()) {
    addSource();
  } else {
    showSource(0);
  }
  ++looks_;
  showService(found);
}

void ExchangePage::showFormats(const QJsonArray& formats) {
  const QSignalBlocker quiet(format_);
  format_->clear();
  format_->addItem(texts_("IDS_EXCHANGE_CHOOSE"), QString());
  for (const QJsonValue& format : formats) {
    const QString name = format["name"].toString();
    const QString title = format["title"].toString();
    format_->addItem(title.isEmpty() ? name : title, name);
    format_->setItemData(format_->count() - 1, format.toObject(), Qt::UserRole + 1);
  }
}

FieldForm* ExchangePage::parameters() const {
  return parameters_[static_cast<std::size_t>(std::max(0, transport_->currentIndex()))];
}

void ExchangePage::showSource(int index) {
  shown_ = index;
  const QJsonObject source = sources_[static_cast<std::size_t>(index)].now;
  {
    const QSignalBlocker quiet(source_);
    source_->clear();
    for (const Source& each : sources_) {
      const QString id = each.now["id"].toString();
      source_->addItem(id.isEmpty() ? texts_("IDS_EXCHANGE_NEW") : id);
    }
    source_->setCurrentIndex(index);
  }
  remove_->setEnabled(sources_.size() > 1);
  id_->setText(source["id"].toString());
  const QString format = source["format"].toString();
  if (format_->findData(format) < 0) format_->addItem(format, format);
  format_->setCurrentIndex(format_->findData(format));
  for (std::size_t i = 0; i < parameters_.size(); ++i) {
    const QString key = exchangeTransports()[i].key;
    parameters_[i]->setValues(source[key].toObject());
    if (source.contains(key)) transport_->setCurrentIndex(static_cast<int>(i));
  }
  reading_->setValues(source);
  quiet_->setValues(source["quiet"].toObject());
  useFormat();
}

QJsonObject ExchangePage::sourceOnPage(QJsonObject over) const {
  const QString chosen = transport_->currentData().toString();
  const QJsonObject parametersBefore = over[chosen].toObject();
  for (const ExchangeTransport& transport : exchangeTransports()) over.remove(transport.key);
  over.insert(chosen, parameters()->values(parametersBefore));
  over.insert("id", id_->text().trimmed());
  over.insert("format", format_->currentData().toString());
  const QJsonObject alarm = quiet_->values(over["quiet"].toObject());
  over = reading_->values(over);
  if (alarm.contains("minutes")) {
    over.insert("quiet", alarm);
  } else {
    over.remove("quiet");
  }
  return over;
}

QJsonObject ExchangePage::currentSource() const {
  return sourceOnPage(sources_[static_cast<std::size_t>(shown_)].now);
}

void ExchangePage::keepShown() {
  if (shown_ >= 0) sources_[static_cast<std::size_t>(shown_)].now = currentSource();
}

void ExchangePage::addSource() {
  keepShown();
  QString id = "main";
  const auto isTaken = [&](const Source& source) { return source.now["id"].toString() == id; };
  for (int number = 2; std::any_of(sources_.begin(), sources_.end(), isTaken); ++number) {
    id = "exchange" + QString::number(number);
  }
  sources_.push_back({{}, QJsonObject{{"id", id}}});
  showSource(static_cast<int>(sources_.size()) - 1);
}

void ExchangePage::removeSource() {
  const Source& source = sources_[static_cast<std::size_t>(shown_)];
  if (!source.unchanged.isEmpty()) removed_.append(source.unchanged["id"]);
  sources_.erase(sources_.begin() + shown_);
  showSource(std::min(shown_, static_cast<int>(sources_.size()) - 1));
}

// Fields that the format does not ask for are of no use with it.
void ExchangePage::useFormat() {
  const QJsonObject format = format_->currentData(Qt::UserRole + 1).toJsonObject();
  const bool known = !format.isEmpty();
  reading_->setFieldVisible("trunks", !known || format["trunks"].toBool());
  reading_->setFieldVisible("extensions", !known || format["extensions"].toBool());
  reading_->setFieldVisible("date_order", !known || format["date_order"].toBool());
}

void ExchangePage::useTransport() {
  for (FieldForm* form : parameters_) form->setVisible(form == parameters());
}

QJsonArray ExchangePage::editedSources() const {
  QJsonArray edited;
  for (int i = 0; i < static_cast<int>(sources_.size()); ++i) {
    const Source& source = sources_[static_cast<std::size_t>(i)];
    const QJsonObject now = i == shown_ ? currentSource() : source.now;
    // A new one without a format is only the empty form.
    const bool empty = source.unchanged.isEmpty() && now["format"].toString().isEmpty();
    if (now != source.unchanged && !empty) edited.append(now);
  }
  return edited;
}

bool ExchangePage::changed() const {
  return loaded_ && (!editedSources().isEmpty() || !removed_.isEmpty());
}

QString ExchangePage::problem() const {
  if (!changed()) return {};
  for (const QJsonValue& source : editedSources()) {
    if (source["format"].toString().isEmpty()) return texts_("IDS_EXCHANGE_NO_FORMAT");
  }
  if (site_["deliver"].isUndefined() && place_.monitorFolder().isEmpty()) return texts_("IDS_EXCHANGE_NO_FOLDER");
  return {};
}

QJsonObject ExchangePage::siteWith(const QJsonArray& sources) const {
  QJsonObject deliver = site_["deliver"].toObject();
  if (!deliver.contains("folder")) {
    deliver.insert("folder", place_.monitorFolder());
    if (!place_.liveSocket.isEmpty()) deliver.insert("poke", place_.liveSocket);
  }
  QJsonObject data = site_["data"].toObject();
  // Not in a file that is there: the journal and what was handed over would be looked for in another place.
  if (site_.isEmpty() && !place_.isSystemFile()) {
    data.insert("folder", QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/tallymon");
  }
  QJsonObject site{{"deliver", deliver}, {"source", sources}};
  if (!data.isEmpty()) site.insert("data", data);
  return site;
}

void ExchangePage::save() {
  if (!changed()) return;
  const QJsonArray sources = editedSources();
  QJsonObject site = siteWith(sources);
  // A source with another id is another one.
  QJsonArray gone = removed_;
  for (int i = 0; i < static_cast<int>(sources_.size()); ++i) {
    const Source& source = sources_[static_cast<std::size_t>(i)];
    const QJsonObject now = i == shown_ ? currentSource() : source.now;
    if (!source.unchanged.isEmpty() && source.unchanged["id"] != now["id"]) gone.append(source.unchanged["id"]);
  }
  if (!gone.isEmpty()) site.insert("remove", gone);
  const auto result = program_.run({"site", "set"}, QJsonDocument(site).toJson());
  if (!result.done) throw std::runtime_error(fromQt(exchangeFault(result.message, texts_)));
  const QJsonObject written = objectOf(program_.run({"site", "--json"}).output);
  const QString fault = written["running"].toInt() != 0 ? service_.reload() : QString();
  showSite(written);
  if (!fault.isEmpty()) say(fault);
}

void ExchangePage::toggleListening() {
  if (lines_->isListening()) return lines_->stop();
  say({});
  const QJsonObject source = currentSource();
  if (source["format"].toString().isEmpty()) return say(texts_("IDS_EXCHANGE_NO_FORMAT"));
  const QString fault = lines_->listen(siteWith({source}), source["id"].toString());
  if (!fault.isEmpty()) return say(exchangeFault(fault, texts_));
  listen_->setText(texts_("IDS_EXCHANGE_LISTEN_STOP"));
}

void ExchangePage::guessFormat() {
  const QByteArray lines = lines_->lines();
  if (lines.isEmpty()) return say(texts_("IDS_EXCHANGE_NO_LINES"));
  const auto result = program_.ask({"guess", "-", "--json"}, lines);
  const QJsonArray guesses = QJsonDocument::fromJson(result.output).array();
  if (guesses.isEmpty()) return say(result.message);
  const QJsonObject best = guesses.first().toObject();
  format_->setCurrentIndex(format_->findData(best["format"].toString()));
  QStringList text{texts_.format("IDS_EXCHANGE_GUESSED", fromQt(best["title"].toString()),
                                 static_cast<int>(best["share"].toDouble() * 100 + 0.5))};
  for (const QJsonValue& doubt : best["doubts"].toArray()) text << captureSaid(doubt.toString(), texts_);
  say(text.join('\n'));
}

// The service has one reader of the line; it starts with what is saved.
void ExchangePage::control(QString (CaptureService::*action)() const) {
  lines_->stopAndWait();
  say({});
  const bool saved = attempt(this, texts_, [this] {
    const QString open = problem();
    if (!open.isEmpty()) throw std::runtime_error(fromQt(open));
    save();
  });
  if (saved) say((service_.*action)());
  refreshService();
}

void ExchangePage::refreshService() {
  ++looks_;
  showService(objectOf(program_.run({"site", "--json"}).output));
}

// By the timer: no operator waits for the answer.
void ExchangePage::lookAtService() {
  if (program_.person().busy()) return;
  program_.query(program_.withSite({"site", "--json"}), this,
                 [this, look = ++looks_](const CaptureProgram::Result& result) {
                   if (look == looks_) showService(objectOf(result.output));
                 });
}

void ExchangePage::showService(const QJsonObject& found) {
  const bool running = found["running"].toInt() != 0;
  start_->setEnabled(!running);
  stop_->setEnabled(running);
  const QString folder = found["site"]["deliver"]["folder"].toString();
  const QString own = place_.monitorFolder();
  QString text = texts_(running ? "IDS_EXCHANGE_RUNS" : "IDS_EXCHANGE_STOPPED");
  const QString summary = toQt(server::readMonitorStatus(fromQt(folder), texts_.language()));
  if (running && !summary.isEmpty()) text += " " + texts_.format("IDS_MONITOR_STATUS", fromQt(summary));
  if (!folder.isEmpty() && !own.isEmpty() && QFileInfo(folder) != QFileInfo(own)) {
    text += " " + texts_.format("IDS_EXCHANGE_OTHER_FOLDER", fromQt(folder), fromQt(own));
  }
  state_->setText(text);
  state_->setToolTip(place_.siteFile);
}

void ExchangePage::say(const QString& text) {
  message_->setText(text);
  message_->setVisible(!text.isEmpty());
}

}  // namespace ui
