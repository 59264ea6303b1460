#pragma once

#include <QDateTimeEdit>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QWidget>

#include "server/server_doc.h"
#include "ui/dialogs/choice_box.h"
#include "ui/texts.h"

namespace ui {

// "What would this call cost?": the steps of one price, by the code that prices calls, over the stored tariffs.
class PriceTester : public QWidget {
  Q_OBJECT

 public:
  PriceTester(server::CServerDoc& document, const Texts& texts, QWidget* parent = nullptr);

 public slots:
  void calculate();

 protected:
  // Enter calculates; it is not the sheet's OK.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  [[nodiscard]] exchange::CallRecord call() const;

  server::CServerDoc& document_;
  const Texts& texts_;
  QLineEdit* number_;
  ChoiceBox* trunk_;
  QDateTimeEdit* start_;
  QSpinBox* duration_;  // seconds
  QSpinBox* pulses_;
  QPlainTextEdit* steps_;
};

}  // namespace ui
