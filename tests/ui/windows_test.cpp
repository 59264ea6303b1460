// What every window keeps to: the screen's size, the program's language.

#include <QAction>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QWizard>

#include "ui/main_frame.h"
#include "ui/qt_texts.h"
#include "windows.h"

namespace {

using namespace support;

// Passes every text on and keeps those that stay as they are in the source.
class Listening : public ui::QtTexts {
 public:
  using QtTexts::QtTexts;
  [[nodiscard]] QString translate(const char* context, const char* source, const char* disambiguation,
                                  int count) const override {
    QString text = QtTexts::translate(context, source, disambiguation, count);
    if (text.isEmpty() && !isName(context, source)) missing.insert(std::string(context) + ": " + source);
    return text;
  }
  mutable std::set<std::string> missing;

 private:
  // Names of paper sizes and keys, layouts such as "4 (2x2)", the designer's own captions.
  static bool isName(const std::string& context, const std::string& source) {
    return context == "QPageSize" || context == "QShortcut" || context == "QGuiApplication" || source == "Form" ||
           source.starts_with("Pica") || source.starts_with("Alt+") ||
           source.find_first_of("abcdefghijklmnopqrstuvwyz") == std::string::npos;
  }
};

TEST(Windows, QtsOwnDialogsAreInTheProgramsLanguage) {
  Desktop desktop("RO");
  ASSERT_TRUE(desktop.started);
  Listening texts(desktop.app->language());
  QApplication::installTranslator(&texts);
  const auto look = [](QWidget& window) {
    window.show();
    QApplication::processEvents();
  };
  for (const auto mode : {QFileDialog::AcceptOpen, QFileDialog::AcceptSave}) {
    QFileDialog files;
    files.setOption(QFileDialog::DontUseNativeDialog);
    files.setAcceptMode(mode);
    look(files);
    EXPECT_EQ(child<QAbstractButton>(files, "newFolderButton").toolTip(), "Dosar nou");
  }
  QPrinter printer;
  printer.setOutputFormat(QPrinter::PdfFormat);
  QPrintDialog print(&printer);
  look(print);
  QPageSetupDialog page(&printer);
  look(page);
  QPrintPreviewDialog preview(&printer);
  look(preview);
  QWizard wizard;
  wizard.addPage(new QWizardPage);
  look(wizard);
  QMessageBox message;
  message.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
  message.setDetailedText("x");
  look(message);
  QLineEdit line("text");
  const std::unique_ptr<QMenu> menu(line.createStandardContextMenu());
  EXPECT_TRUE(menu->actions().front()->text().startsWith("An&ulează")) << menu->actions().front()->text().toStdString();
  QApplication::removeTranslator(&texts);
  EXPECT_EQ(texts.missing, std::set<std::string>());
}

// Sentences that have fewer lines than they need.
std::set<std::string> cutTextsIn(QWidget& window) {
  std::set<std::string> cut;
  for (const auto* label : window.findChildren<QLabel*>()) {
    const bool sentence = label->isVisible() && label->wordWrap() && !label->text().isEmpty();
    if (sentence && label->height() < label->heightForWidth(label->width())) cut.insert(label->text().toStdString());
  }
  return cut;
}

class ScreenTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override { ASSERT_TRUE(desktop.started); }
  static void expectFits(QWidget& window) {
    QApplication::processEvents();
    const QSize screen = window.screen()->availableSize();
    EXPECT_LE(window.width(), screen.width()) << window.objectName().toStdString();
    EXPECT_LE(window.height(), screen.height()) << window.objectName().toStdString();
    EXPECT_EQ(cutTextsIn(window), std::set<std::string>()) << window.objectName().toStdString();
  }
  Desktop desktop{GetParam()};
};

// Also run on a screen of 640x400, which is what 1280x800 is at 200%.
TEST_P(ScreenTest, EveryWindowFitsAndItsSentencesAreWhole) {
  const ui::QtOperator person;
  ui::CMainFrame frame(*desktop.document, *desktop.texts, person);
  frame.start();
  frame.show();
  expectFits(frame);
  ui::SettingsSheet sheet(*desktop.document, *desktop.texts);
  sheet.show();
  expectFits(sheet);
  for (const ui::SettingsPage& page : sheet.pages()) {
    sheet.showPage(page.caption);
    expectFits(sheet);
    for (QWidget* area = page.widget; area != nullptr; area = area->parentWidget()) {
      const auto* scroll = qobject_cast<QScrollArea*>(area);
      EXPECT_EQ(scroll != nullptr ? scroll->verticalScrollBar()->value() : 0, 0) << page.caption.toStdString();
    }
  }
  sheet.close();
  desktop.files.writeMonitorFile(sampleRecords(1));
  desktop.document->smdr().importMonitorFile();
  forEachWindow(desktop, [](QDialog& dialog) { expectFits(dialog); });
  frame.close();
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenTest, testing::Values("EN", "RO"));

}  // namespace
