#include "ui/qt_document_handler.h"

#include <QAbstractTextDocumentLayout>
#include <QDesktopServices>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QTextDocument>
#include <QTextOption>
#include <QTextTable>
#include <QThread>
#include <QUrl>
#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <memory>

#include "base/codepage.h"
#include "base/version.h"
#include "platform/progress.h"
#include "ui/page_setup.h"
#include "ui/texts.h"

namespace ui {

namespace {

// The reports give the left cell of their head the whole width and count on the right one to keep its own, which a text
// document does not do.
QString withRoomInHead(QString page) {
  return page.replace("<td align=left nowrap width=100%>", "<td align=left width=60%>");
}

// Every table begins with its headings; they are repeated on each sheet.
void repeatHeadings(const QTextDocument& document) {
  for (QTextFrame* frame : document.rootFrame()->childFrames()) {
    auto* table = qobject_cast<QTextTable*>(frame);
    if (table == nullptr || table->rows() < 2) continue;
    QTextTableFormat format = table->format();
    format.setHeaderRowCount(1);
    table->setFormat(format);
  }
}

// Lays the document out for sheets of this shape, wider than they are where a list of many columns needs it: lines
// break between words only.
struct Layout {
  QSizeF sheet;  // in the document's units
  qreal scale;   // of these units on the paper
};
Layout layOut(QTextDocument& document, const QSizeF& sheet) {
  QTextOption option = document.defaultTextOption();
  option.setWrapMode(QTextOption::WordWrap);
  document.setDefaultTextOption(option);
  document.setDocumentMargin(0);
  document.setTextWidth(sheet.width());
  const qreal width = std::max(document.size().width(), sheet.width());
  const QSizeF page = sheet * (width / sheet.width());
  document.setPageSize(page);
  return {page, sheet.width() / width};
}

}  // namespace

QString readPage(const std::filesystem::path& document) {
  std::ifstream in(document, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const bool utf8 = bytes.substr(0, 1024).find("windows-1252") == std::string::npos;
  return toQt(utf8 ? bytes : base::decode(bytes, 1252));
}

bool printPage(const QString& html, QPrinter& printer, const std::function<bool()>& goOn) {
  constexpr qreal kUnitsPerInch = 96;  // of the document, as on a screen
  constexpr qreal kFoot = 20;          // room for the number of the sheet
  QTextDocument document;
  document.setHtml(withRoomInHead(html));
  repeatHeadings(document);
  const QSizeF paper = printer.pageRect(QPrinter::Inch).size() * kUnitsPerInch;
  const Layout layout = layOut(document, {paper.width(), paper.height() - kFoot});

  QPainter painter;
  if (!painter.begin(&printer)) return false;
  QFont font = painter.font();
  font.setPixelSize(11);
  painter.setFont(font);
  painter.scale(printer.logicalDpiX() / kUnitsPerInch, printer.logicalDpiY() / kUnitsPerInch);
  const int sheets = document.pageCount();
  for (int sheet = 0; sheet < sheets; ++sheet) {
    if (!goOn()) {
      printer.abort();
      return true;
    }
    if (sheet > 0) printer.newPage();
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, Qt::black);  // paper is white, whatever the windows look like
    context.clip = QRectF({0, sheet * layout.sheet.height()}, layout.sheet);
    painter.save();
    painter.scale(layout.scale, layout.scale);
    painter.translate(0, -context.clip.top());
    painter.setClipRect(context.clip);
    document.documentLayout()->draw(&painter, context);
    painter.restore();
    painter.drawText(QRectF(0, paper.height() - kFoot, paper.width(), kFoot), Qt::AlignRight | Qt::AlignBottom,
                     QStringLiteral("%1 / %2").arg(sheet + 1).arg(sheets));
  }
  return painter.end();
}

namespace {

// Laying out a long list takes seconds in one piece, so it is done on a thread of its own.
platform::Printed printBesideTheWindow(const QString& html, QPrinter& printer, const std::string& name,
                                       platform::Operator& person) {
  const platform::Progress progress(person, base::kProgramName, name);
  std::atomic<bool> goOn = true;
  bool taken = false;
  const std::unique_ptr<QThread> work(
      QThread::create([&] { taken = printPage(html, printer, [&goOn] { return goOn.load(); }); }));
  work->start();
  constexpr unsigned long kLook = 20;  // milliseconds
  while (!work->wait(kLook)) {
    if (!person.progressPulse()) goOn = false;
  }
  if (!goOn) return platform::Printed::Canceled;
  return taken ? platform::Printed::Done : platform::Printed::Refused;
}

}  // namespace

bool QtDocumentHandler::open(const std::string& pathOrUrl) {
  const QString text = toQt(pathOrUrl);
  const bool address = text.startsWith("http://") || text.startsWith("https://") || text.startsWith("mailto:");
  return QDesktopServices::openUrl(address ? QUrl(text) : QUrl::fromLocalFile(text));
}

platform::Printed QtDocumentHandler::print(const std::filesystem::path& document) {
  QPrinter printer(QPrinter::HighResolution);
  usePageSetup(printer, config_);
  QPrintDialog dialog(&printer);
  if (dialog.exec() != QDialog::Accepted) return platform::Printed::Canceled;
  keepPageSetup(printer, config_);
  return printBesideTheWindow(readPage(document), printer, document.string(), person_);
}

}  // namespace ui
