#pragma once

#include <QDateTimeEdit>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QWidget>

#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// "What would this call cost?": the steps of one price, by the code that prices calls, over the stored tariffs.
class PriceTester : public QWidget {
  Q_OBJECT

 public:
  PriceTester(server::CServerDoc& document, const Texts& texts, QWidget* parent = nullptr);

 public slots:
  void calculate();

 private:
  server::CServerDoc& document_;
  QLineEdit* number_;
  QSpinBox* trunk_;
  QDateTimeEdit* start_;
  QSpinBox* duration_;  // seconds
  QSpinBox* pulses_;
  QPlainTextEdit* steps_;
};

}  // namespace ui
