#include "ui/settings/price_tester.h"

#include <QFontDatabase>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "tariff/price_report.h"

namespace ui {

namespace {

QSpinBox* spinBox(const char* name, int most) {
  auto* box = new QSpinBox;
  box->setObjectName(name);
  box->setRange(0, most);
  return box;
}

}  // namespace

PriceTester::PriceTester(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QWidget(parent),
      document_(document),
      number_(new QLineEdit),
      trunk_(spinBox("testerTrunk", 1000000)),
      start_(new QDateTimeEdit(QDateTime::currentDateTime())),
      duration_(spinBox("testerDuration", 86400)),
      pulses_(spinBox("testerPulses", 100000)),
      steps_(new QPlainTextEdit) {
  number_->setObjectName("testerNumber");
  steps_->setObjectName("testerSteps");
  steps_->setReadOnly(true);
  steps_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  start_->setDisplayFormat("dd.MM.yyyy HH:mm");
  start_->setCalendarPopup(true);
  trunk_->setValue(1);
  duration_->setValue(60);
  auto* form = new QFormLayout;
  form->addRow(texts("IDS_NUMBER"), number_);
  form->addRow(texts("IDS_TRUNK"), trunk_);
  form->addRow(texts("IDS_DATE_HOUR"), start_);
  form->addRow(texts("IDS_DURATION_SECONDS"), duration_);
  form->addRow(texts("IDS_PULSES"), pulses_);
  auto* button = new QPushButton(texts("IDS_CALCULATE"));
  button->setObjectName("testerCalculate");
  connect(button, &QPushButton::clicked, this, &PriceTester::calculate);
  connect(number_, &QLineEdit::returnPressed, this, &PriceTester::calculate);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(button, 0, Qt::AlignLeft);
  layout->addWidget(steps_);
}

void PriceTester::calculate() {
  exchange::CallRecord record;
  record.dialledNumber = fromQt(number_->text().trimmed());
  record.trunk = trunk_->value();
  const QDate date = start_->date();
  const QTime time = start_->time();
  if (const auto start = base::DateTime::fromParts(date.year(), date.month(), date.day(), time.hour(), time.minute())) {
    record.setStart(*start);
  }
  record.setDuration(duration_->value());
  record.pulses = pulses_->value();
  tariff::PricingContext output;
  tariff::PriceTrace trace;
  std::int32_t ignore = 0;
  try {
    const auto outcome = document_.prices().CalcPrice(record, output, ignore, &trace);
    QStringList lines;
    for (const std::string& line : tariff::priceReport(trace, record, output, outcome, document_.app().language()))
      lines << toQt(line);
    steps_->setPlainText(lines.join('\n'));
  } catch (const jet::Error& error) {
    steps_->setPlainText(toQt(error.description()));
  }
}

}  // namespace ui
