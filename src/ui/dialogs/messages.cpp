#include "ui/dialogs/messages.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/mnemonics.h"

namespace ui {

namespace {

void show(QMessageBox::Icon icon, QWidget* parent, const Texts& texts, const QString& text) {
  QMessageBox box(icon, QApplication::applicationDisplayName(), text, QMessageBox::Ok, parent);
  box.setObjectName("message");
  named(box.button(QMessageBox::Ok), "ok")->setText(texts("IDS_OK"));
  box.exec();
}

Answer question(QWidget* parent, const Texts& texts, const QString& text, Choices choices,
                QMessageBox::StandardButton onEnter) {
  const bool cancellable = choices == Choices::YesNoCancel;
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), text,
                  QMessageBox::Yes | QMessageBox::No, parent);
  box.setObjectName("question");
  named(box.button(QMessageBox::Yes), "yes")->setText(texts("IDS_YES"));
  named(box.button(QMessageBox::No), "no")->setText(texts("IDS_NO"));
  if (cancellable) named(box.addButton(QMessageBox::Cancel), "cancel")->setText(texts("IDS_CANCEL"));
  box.setDefaultButton(onEnter);
  box.setEscapeButton(cancellable ? QMessageBox::Cancel : QMessageBox::No);
  assignMnemonics(box);
  switch (box.exec()) {
    case QMessageBox::Yes:
      return Answer::Yes;
    case QMessageBox::No:
      return Answer::No;
    default:
      return Answer::Cancel;
  }
}

}  // namespace

void inform(QWidget* parent, const Texts& texts, const QString& text) {
  show(QMessageBox::Information, parent, texts, text);
}

void warn(QWidget* parent, const Texts& texts, const QString& text) {
  show(QMessageBox::Warning, parent, texts, text);
}

Answer ask(QWidget* parent, const Texts& texts, const QString& text, Choices choices) {
  return question(parent, texts, text, choices, QMessageBox::Yes);
}

bool confirmLoss(QWidget* parent, const Texts& texts, const QString& text) {
  return question(parent, texts, text, Choices::YesNo, QMessageBox::No) == Answer::Yes;
}

}  // namespace ui
