#include "ui/dialogs/period_edit.h"

#include <QGridLayout>
#include <QLabel>

namespace ui {

namespace {

QDate dateOf(base::DateTime moment) {
  const auto parts = moment.parts();
  return {parts.year, parts.month, parts.day};
}

base::DateTime momentOf(QDate date, QTime time) {
  return base::DateTime::fromParts(date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second())
      .value_or(base::DateTime());
}

}  // namespace

PeriodEdit::PeriodEdit(Times times, const Texts& texts, QWidget* parent) : QWidget(parent) {
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  start_ = addEnd(0, "IDS_FROM", "periodStart", texts);
  end_ = addEnd(1, "IDS_TO", "periodEnd", texts);
  layout->setColumnStretch(1, 1);
  if (times == Times::WholeDays) {
    delete start_.time;
    delete end_.time;
    start_.time = end_.time = nullptr;
  }
}

PeriodEdit::End PeriodEdit::addEnd(int row, const char* key, const char* name, const Texts& texts) {
  End end{new QDateEdit, new QTimeEdit};
  end.date->setObjectName(name);
  end.date->setLocale(QLocale(toQt(texts.language().NativeLanguage())));
  // The documented "dd/MMM/yyy" of a date picker, whose "yyy" is the whole year.
  end.date->setDisplayFormat("dd/MMM/yyyy");
  end.date->setMinimumDate({100, 1, 1});
  end.date->setCalendarPopup(true);
  end.time->setObjectName(QString(name) + "Time");
  end.time->setDisplayFormat("HH:mm");
  end.time->setAccessibleName(texts(key));
  auto* label = new QLabel(texts(key));
  label->setBuddy(end.date);
  auto* grid = qobject_cast<QGridLayout*>(layout());
  grid->addWidget(label, row, 0);
  grid->addWidget(end.date, row, 1);
  grid->addWidget(end.time, row, 2);
  connect(end.date, &QDateEdit::userDateChanged, this, &PeriodEdit::edited);
  connect(end.time, &QTimeEdit::userTimeChanged, this, &PeriodEdit::edited);
  return end;
}

void PeriodEdit::setPeriod(base::DateTime start, base::DateTime end) {
  const QSignalBlocker quiet(this);
  const auto show = [](const End& field, base::DateTime moment) {
    field.date->setDate(dateOf(moment));
    if (field.time != nullptr) field.time->setTime(QTime(0, 0).addSecs(moment.secondOfDay()));
  };
  show(start_, start);
  show(end_, end);
}

base::DateTime PeriodEdit::start() const {
  return momentOf(start_.date->date(), start_.time != nullptr ? start_.time->time() : QTime(0, 0));
}

base::DateTime PeriodEdit::end() const {
  return momentOf(end_.date->date(), end_.time != nullptr ? end_.time->time() : QTime(23, 59, 59));
}

}  // namespace ui
