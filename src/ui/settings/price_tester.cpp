#include "ui/settings/price_tester.h"

#include <QFontDatabase>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/text.h"
#include "tariff/price_report.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/party_choices.h"

namespace ui {

namespace {

constexpr int kLongestCall = 86400;
constexpr int kMostPulses = 100000;

QSpinBox* spinBox(const char* name, int value, int most) {
  auto* box = named(new QSpinBox, name);
  box->setRange(0, most);
  box->setValue(value);
  return box;
}

}  // namespace

PriceTester::PriceTester(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QWidget(parent),
      document_(document),
      texts_(texts),
      number_(named(new QLineEdit, "testerNumber")),
      trunk_(
          named(new ChoiceBox([&document] { return trunkChoices(document.smdr().parties()); }, texts), "testerTrunk")),
      start_(new QDateTimeEdit(QDateTime::currentDateTime())),
      duration_(spinBox("testerDuration", 60, kLongestCall)),
      pulses_(spinBox("testerPulses", 0, kMostPulses)),
      steps_(named(new QPlainTextEdit, "testerSteps")) {
  number_->setPlaceholderText(texts("IDS_TESTER_NUMBER"));
  trunk_->loadList();
  if (trunk_->count() > 0) trunk_->setCurrentIndex(0);
  start_->setDisplayFormat("dd.MM.yyyy HH:mm");
  start_->setCalendarPopup(true);
  duration_->setSuffix(' ' + texts("IDS_SECONDS"));
  steps_->setReadOnly(true);
  steps_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  steps_->setPlaceholderText(texts("IDS_TESTER_STEPS"));
  steps_->setAccessibleName(texts("IDS_TESTER_STEPS"));
  auto* hint = new QLabel(texts("IDS_HINT_TESTER"));
  hint->setWordWrap(true);
  auto* form = new QFormLayout;
  form->addRow(texts("IDS_NUMBER"), number_);
  form->addRow(texts("IDS_TRUNK"), trunk_);
  form->addRow(texts("IDS_DATE_HOUR"), start_);
  form->addRow(texts("IDS_DURATION"), duration_);
  form->addRow(texts("IDS_PULSES"), pulses_);
  auto* button = named(new QPushButton(texts("IDS_CALCULATE")), "testerCalculate");
  connect(button, &QPushButton::clicked, this, &PriceTester::calculate);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(hint);
  layout->addLayout(form);
  layout->addWidget(button, 0, Qt::AlignLeft);
  layout->addWidget(steps_);
}

exchange::CallRecord PriceTester::call() const {
  exchange::CallRecord record;
  record.dialledNumber = fromQt(number_->text().trimmed());
  record.trunk = base::leadingInteger(fromQt(trunk_->value()));
  const QDate date = start_->date();
  const QTime time = start_->time();
  if (const auto start = base::DateTime::fromParts(date.year(), date.month(), date.day(), time.hour(), time.minute())) {
    record.setStart(*start);
  }
  record.setDuration(duration_->value());
  record.pulses = pulses_->value();
  return record;
}

void PriceTester::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return QWidget::keyPressEvent(event);
  calculate();
}

void PriceTester::calculate() {
  exchange::CallRecord record = call();
  tariff::PricingContext output;
  tariff::PriceTrace trace;
  std::int32_t ignore = 0;
  try {
    const auto outcome = document_.smdr().prices().CalcPrice(record, output, ignore, &trace);
    QStringList lines;
    for (const std::string& line : tariff::priceReport(trace, record, output, outcome, texts_.language())) {
      lines << toQt(line);
    }
    steps_->setPlainText(lines.join('\n'));
  } catch (const jet::Error& error) {
    steps_->setPlainText(toQt(error.description()));
  }
}

}  // namespace ui
