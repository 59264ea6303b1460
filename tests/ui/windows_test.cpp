// What every window keeps to: the screen's size, the program's language.

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolTip>
#include <QTreeWidget>
#include <QWizard>

#include "ui/cut_texts.h"
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

// Captions and hints that have less room than they need, and buttons with a picture only that do not say what they do.
std::set<std::string> unclearIn(QWidget& window) {
  std::set<std::string> unclear;
  for (const auto* widget : window.findChildren<QWidget*>()) {
    if (!widget->isVisible() || !widget->toolTip().isEmpty() || widget->objectName().startsWith("qt_")) continue;
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    const bool picture = button != nullptr && button->text().isEmpty() && !button->icon().isNull();
    const bool inner = widget->parent() != nullptr && widget->parent()->inherits("QLineEdit");
    if (picture && !inner) unclear.insert(widget->objectName().toStdString() + ": no tip");
    if (qobject_cast<const QLabel*>(widget) == nullptr && button == nullptr &&
        qobject_cast<const QLineEdit*>(widget) == nullptr) {
      continue;
    }
    const QString cut = ui::cutTextAt(*widget, {});
    if (!cut.isEmpty()) unclear.insert(widget->objectName().toStdString() + ": " + cut.toStdString());
  }
  return unclear;
}

// Pages that must be scrolled sideways to be read. Lists and tables may have more columns than there is room for.
std::set<std::string> sidewaysIn(QWidget& window) {
  std::set<std::string> sideways;
  for (const auto* area : window.findChildren<QScrollArea*>()) {
    if (!area->isVisible() || !area->horizontalScrollBar()->isVisible()) continue;
    sideways.insert(area->objectName().toStdString() + ": " + std::to_string(area->viewport()->width()) + " of " +
                    std::to_string(area->widget()->width()) + " pixels");
  }
  return sideways;
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
    EXPECT_EQ(sidewaysIn(window), std::set<std::string>()) << window.objectName().toStdString();
    // On a very small screen a caption may be cut: it is told where the pointer rests.
    if (screen.width() >= kUsualWidth) {
      EXPECT_EQ(unclearIn(window), std::set<std::string>()) << window.objectName().toStdString();
    }
  }
  static constexpr int kUsualWidth = 800;  // pixels
  Desktop desktop{GetParam()};
};

TEST(CutTexts, AreToldWholeWhereThePointerRests) {
  constexpr QPoint kPlace(30, 5);
  const auto told = [&](QWidget& widget) {
    QHelpEvent rest(QEvent::ToolTip, kPlace, widget.mapToGlobal(kPlace));
    QApplication::sendEvent(&widget, &rest);
    return QToolTip::text().toStdString();
  };
  constexpr const char* kLong = "a caption that has no room here";
  QLabel label(kLong);
  QPushButton button(kLong);
  QComboBox box;
  box.addItem(kLong);
  QLineEdit line;
  line.setPlaceholderText(kLong);
  QTreeWidget list;
  list.setHeaderLabels({kLong, "b"});
  list.setColumnWidth(0, 40);
  list.addTopLevelItem(new QTreeWidgetItem({QString(kLong), "b"}));
  const std::pair<QWidget*, QWidget*> widgets[] = {
      {&label, &label}, {&button, &button},       {&box, &box},
      {&line, &line},   {&list, list.viewport()}, {&list, list.header()->viewport()}};
  for (const auto& [widget, asked] : widgets) {
    widget->resize(60, 60);
    widget->show();
    QApplication::processEvents();
    EXPECT_EQ(told(*asked), kLong) << asked->metaObject()->className();
    widget->resize(900, 60);
    list.setColumnWidth(0, 800);
    QApplication::processEvents();
    EXPECT_EQ(ui::cutTextAt(*asked, kPlace).toStdString(), "") << asked->metaObject()->className();
    list.setColumnWidth(0, 40);
  }
  button.resize(60, 60);
  button.setToolTip("its own");
  EXPECT_EQ(told(button), "its own");
}

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
    SCOPED_TRACE(page.caption.toStdString());
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
