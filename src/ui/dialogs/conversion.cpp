#include "ui/dialogs/conversion.h"
#include "ui/screen_fit.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "convert/converter.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

void showReport(QWidget* parent, const Texts& texts, const convert::ConversionReport& report) {
  QDialog dialog(parent);
  dialog.setObjectName("conversionReport");
  dialog.setWindowTitle(texts("IDS_FIRST_REPORT"));
  auto* page = named(new QPlainTextEdit(toQt(report.text())), "report");
  page->setAccessibleName(dialog.windowTitle());
  page->setReadOnly(true);
  page->setLineWrapMode(QPlainTextEdit::NoWrap);
  page->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  named(buttons->button(QDialogButtonBox::Ok), "ok")->setText(texts("IDS_OK"));
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(page);
  layout->addWidget(buttons);
  dialog.resize(dialog.fontMetrics().averageCharWidth() * 100, dialog.fontMetrics().lineSpacing() * 28);
  fitToScreen(dialog);
  dialog.exec();
}

}  // namespace

convert::ConversionReport convertFolder(const ConversionTask& task, server::CServerApp& app) {
  convert::ConversionOptions options;
  options.salvage = task.salvage;
  options.codepage = task.codepage;
  options.beside = std::filesystem::absolute(app.config().machineStore().file()).parent_path();
  auto report = convert::convertFolder(task.oldFolder, task.newFolder, options, app.surroundings().person);
  const auto main = schema::DatabasePlace::ofTyped(task.newFolder).open(schema::Which::Main, jet::OpenMode::ReadWrite);
  if (main->openRecordset("SELECT * FROM Users")->eof()) {
    server::addFirstUsers(*main, app.surroundings().clock, task.password, true, &app.language());
  }
  return report;
}

bool tryConversion(QWidget* parent, const Texts& texts, bool salvage, const ConversionWork& work) {
  try {
    const auto report = work(salvage);
    if (report) showReport(parent, texts, *report);
    return true;
  } catch (const convert::ConversionStopped&) {
    inform(parent, texts, texts("IDS_CONVERT_STOPPED"));
    return false;
  } catch (const convert::ConversionError& error) {
    if (salvage) {
      warn(parent, texts, toQt(error.what()));
      return false;
    }
    if (ask(parent, texts, toQt(error.what()) + "\n\n" + texts("IDS_FIRST_SALVAGE")) != Answer::Yes) return false;
  } catch (const std::exception& error) {
    warn(parent, texts, toQt(error.what()));
    return false;
  }
  return tryConversion(parent, texts, true, work);
}

}  // namespace ui
