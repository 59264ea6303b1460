#pragma once

#include <QWidget>
#include <exception>

#include "jet/error.h"
#include "ui/texts.h"

namespace ui {

// Message boxes in the program's language.
void inform(QWidget* parent, const Texts& texts, const QString& text);
void warn(QWidget* parent, const Texts& texts, const QString& text);

enum class Answer { Yes, No, Cancel };
enum class Choices { YesNo, YesNoCancel };
// Enter answers Yes. Escape and closing the box answer No, or Cancel where there is one.
Answer ask(QWidget* parent, const Texts& texts, const QString& text, Choices choices = Choices::YesNo);
// Before something goes for good: Enter answers No. True for Yes.
bool confirmLoss(QWidget* parent, const Texts& texts, const QString& text);

// Runs the work; a fault is shown and gives false. So does a stop by the operator, who needs no word about it.
template <typename Work>
bool attempt(QWidget* parent, const Texts& texts, Work&& work) {
  try {
    work();
    return true;
  } catch (const jet::Error& error) {
    if (!error.canceled()) warn(parent, texts, toQt(error.description()));
    return false;
  } catch (const std::exception& error) {
    warn(parent, texts, toQt(error.what()));
    return false;
  }
}

}  // namespace ui
