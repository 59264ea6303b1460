#pragma once

#include <QDateEdit>
#include <QTimeEdit>
#include <QWidget>

#include "base/datetime.h"
#include "ui/texts.h"

namespace ui {

// The two ends of a period, with or without times of day. Seconds are kept although they are not shown.
class PeriodEdit : public QWidget {
  Q_OBJECT

 public:
  enum class Times { Shown, WholeDays };
  PeriodEdit(Times times, const Texts& texts, QWidget* parent = nullptr);

  void setPeriod(base::DateTime start, base::DateTime end);
  // Of whole days: the first second of the first, the last second of the last.
  [[nodiscard]] base::DateTime start() const;
  [[nodiscard]] base::DateTime end() const;
  [[nodiscard]] bool inOrder() const { return start() <= end(); }

 signals:
  // By the operator.
  void edited();

 private:
  struct End {
    QDateEdit* date = nullptr;
    QTimeEdit* time = nullptr;  // null without times
  };
  End addEnd(int row, const char* key, const char* name, const Texts& texts);

  End start_;
  End end_;
};

}  // namespace ui
