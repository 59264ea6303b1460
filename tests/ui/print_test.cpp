// What comes out of the printer, on sheets of a PDF file.

#include <gtest/gtest.h>

#include <QMarginsF>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <fstream>
#include <regex>

#include "platform/operator.h"
#include "support/temporary_folder.h"
#include "ui/page_setup.h"
#include "ui/qt_document_handler.h"

namespace {

using namespace support;

// A list of calls as the reports write it.
QString list(int columns, int rows) {
  const auto row = [columns](const QString& cell) { return "<TR>\n" + cell.repeated(columns) + "</TR>\n"; };
  return "<html><body><table width=100%><tr><td align=left nowrap width=100%>Name<br>Date</td><td align=right "
         "nowrap>Str. Morii nr. 12<br>RO 1</td></tr></table><table width=100%> " +
         row("<TH align=left nowrap>\nHeading&nbsp;</TH>\n") +
         row("<TD align=left nowrap>\n0037322844951&nbsp;</TD>\n").repeated(rows) + "</TABLE></body></html>";
}

int sheetsIn(const std::filesystem::path& file) {
  const std::string pdf = readFile(file);
  const std::regex sheet("/Type\\s*/Page\\b(?!s)");
  return static_cast<int>(std::distance(std::sregex_iterator(pdf.begin(), pdf.end(), sheet), std::sregex_iterator()));
}

int sheetsOf(
    const QString& page, const std::function<bool()>& goOn = [] { return true; }) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder / "sheets.pdf";
  {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(file.string()));
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
    ui::PrintedPage(page, printer).print(printer, goOn);
  }
  return sheetsIn(file);
}

TEST(PageSetup, ThePdfsTakeTheSheetThatWasChosen) {
  const TemporaryFolder folder;
  foundation::MachineStore store(folder / "machine.ini");
  foundation::ConfigManager config(store);
  EXPECT_FALSE(ui::keptSheet(config));  // each page has its own
  QPrinter printer;
  printer.setPageSize(QPageSize(QPageSize::A5));
  printer.setPageOrientation(QPageLayout::Portrait);
  printer.setPageMargins(QMarginsF(20, 15, 10, 25.4), QPageLayout::Millimeter);
  ui::keepPageSetup(printer, config);
  const auto sheet = ui::keptSheet(config);
  ASSERT_TRUE(sheet);
  EXPECT_NEAR(sheet->width, 420, 1);
  EXPECT_NEAR(sheet->height, 595, 1);
  EXPECT_NEAR(sheet->bottom, 72, 1);
  EXPECT_NEAR(sheet->right, 28.35, 1);
}

// Where numbers were broken at the margin of narrow columns, each call would take several lines.
TEST(PrintedPage, AListOfManyColumnsIsMadeSmallerAndNotBroken) {
  EXPECT_EQ(sheetsOf(list(5, 30)), 1);
  EXPECT_LE(sheetsOf(list(21, 100)), 3);
}

// A preview's page set-up: as if it had been laid out for that sheet.
TEST(PrintedPage, IsLaidOutAgainForAnotherSheet) {
  const TemporaryFolder folder;
  const auto print = [&](const char* name, QPageSize::PageSizeId first, QPageSize::PageSizeId then) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString((folder / name).string()));
    printer.setPageSize(QPageSize(first));
    ui::PrintedPage page(list(21, 100), printer);
    printer.setPageSize(QPageSize(then));
    EXPECT_TRUE(page.print(printer, [] { return true; }));
    return sheetsIn(folder / name);
  };
  const int large = print("large.pdf", QPageSize::A3, QPageSize::A3);
  const int small = print("small.pdf", QPageSize::A6, QPageSize::A6);
  EXPECT_EQ(print("a.pdf", QPageSize::A6, QPageSize::A3), large);
  EXPECT_EQ(print("b.pdf", QPageSize::A3, QPageSize::A6), small);
}

// Drawn by the window's thread over and over, from a text that another thread laid out.
TEST(PrintedPage, APreviewIsDrawnAgainAfterItsLayoutIsOver) {
  platform::NoOperator person;
  QPrinter printer(QPrinter::HighResolution);
  ui::PreviewedPage page;
  ASSERT_TRUE(page.layOut(list(5, 300), printer, "list", person));
  QPrintPreviewWidget preview(&printer);
  QObject::connect(&preview, &QPrintPreviewWidget::paintRequested, [&page](QPrinter* paper) { page.print(*paper); });
  preview.updatePreview();
  const int sheets = preview.pageCount();
  EXPECT_GT(sheets, 1);
  preview.setLandscapeOrientation();
  preview.updatePreview();
  EXPECT_GT(preview.pageCount(), sheets);
}

TEST(PrintedPage, AStopEndsThePrintingBeforeTheNextSheet) {
  int asked = 0;
  EXPECT_EQ(sheetsOf(list(5, 300), [&asked] { return ++asked < 3; }), 2);
  EXPECT_EQ(asked, 3);
}

}  // namespace
