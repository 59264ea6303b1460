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

constexpr qreal kUnitsPerInch = 96;  // of the document, as on a screen
constexpr qreal kFoot = 20;          // room for the number of the sheet

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

}  // namespace

QString readPage(const std::filesystem::path& document) {
  std::ifstream in(document, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const bool utf8 = bytes.substr(0, 1024).find("windows-1252") == std::string::npos;
  return toQt(utf8 ? bytes : base::decode(bytes, 1252));
}

PrintedPage::PrintedPage(const QString& html, const QPrinter& printer) : document_(std::make_unique<QTextDocument>()) {
  document_->setHtml(withRoomInHead(html));
  repeatHeadings(*document_);
  QTextOption option = document_->defaultTextOption();
  option.setWrapMode(QTextOption::WordWrap);
  document_->setDefaultTextOption(option);
  document_->setDocumentMargin(0);
  layOutFor(printer);
}

PrintedPage::~PrintedPage() = default;

// For sheets of that shape, wider than they are where a list of many columns needs it: lines break between words only.
void PrintedPage::layOutFor(const QPrinter& printer) {
  const QSizeF paper = printer.pageRect(QPrinter::Inch).size() * kUnitsPerInch;
  if (paper == paper_) return;
  paper_ = paper;
  const QSizeF sheet(paper.width(), paper.height() - kFoot);
  document_->setPageSize({});
  document_->setTextWidth(sheet.width());
  const qreal width = std::max(document_->size().width(), sheet.width());
  sheet_ = sheet * (width / sheet.width());
  scale_ = sheet.width() / width;
  document_->setPageSize(sheet_);
  sheets_ = document_->pageCount();
}

bool PrintedPage::print(QPrinter& printer, const std::function<bool()>& goOn) {
  layOutFor(printer);
  QPainter painter;
  if (!painter.begin(&printer)) return false;
  QFont font = painter.font();
  font.setPixelSize(11);
  painter.setFont(font);
  painter.scale(printer.logicalDpiX() / kUnitsPerInch, printer.logicalDpiY() / kUnitsPerInch);
  for (int sheet = 0; sheet < sheets_; ++sheet) {
    if (!goOn()) {
      printer.abort();
      return true;
    }
    if (sheet > 0) printer.newPage();
    draw(painter, sheet);
  }
  return painter.end();
}

void PrintedPage::draw(QPainter& painter, int sheet) const {
  QAbstractTextDocumentLayout::PaintContext context;
  context.palette.setColor(QPalette::Text, Qt::black);  // paper is white, whatever the windows look like
  context.clip = QRectF({0, sheet * sheet_.height()}, sheet_);
  painter.save();
  painter.scale(scale_, scale_);
  painter.translate(0, -context.clip.top());
  painter.setClipRect(context.clip);
  document_->documentLayout()->draw(&painter, context);
  painter.restore();
  painter.drawText(QRectF(0, paper_.height() - kFoot, paper_.width(), kFoot), Qt::AlignRight | Qt::AlignBottom,
                   QStringLiteral("%1 / %2").arg(sheet + 1).arg(sheets_));
}

namespace {

// Laying out a long list takes seconds in one piece, so it is done on a thread of its own. The work looks at what it is
// given between its steps; false when it was stopped.
bool besideTheWindow(platform::Operator& person, const std::string& name,
                     const std::function<void(const std::atomic<bool>& goOn)>& work) {
  const platform::Progress progress(person, base::kProgramName, name);
  std::atomic<bool> goOn = true;
  const std::unique_ptr<QThread> thread(QThread::create([&] { work(goOn); }));
  thread->start();
  constexpr unsigned long kLook = 20;  // milliseconds
  while (!thread->wait(kLook)) {
    if (!person.progressPulse()) goOn = false;
  }
  return goOn;
}

platform::Printed printBesideTheWindow(const QString& html, QPrinter& printer, const std::string& name,
                                       platform::Operator& person) {
  bool taken = false;
  const bool whole = besideTheWindow(person, name, [&](const std::atomic<bool>& goOn) {
    taken = PrintedPage(html, printer).print(printer, [&goOn] { return goOn.load(); });
  });
  if (!whole) return platform::Printed::Canceled;
  return taken ? platform::Printed::Done : platform::Printed::Refused;
}

}  // namespace

PreviewedPage::PreviewedPage() {
  here_.moveToThread(&thread_);
  thread_.start();
}

PreviewedPage::~PreviewedPage() {
  QMetaObject::invokeMethod(
      &here_, [this] { page_.reset(); }, Qt::BlockingQueuedConnection);
  thread_.quit();
  thread_.wait();
}

bool PreviewedPage::layOut(const QString& html, const QPrinter& printer, const std::string& name,
                           platform::Operator& person) {
  return besideTheWindow(person, name, [&](const std::atomic<bool>&) {
    QMetaObject::invokeMethod(
        &here_, [&] { page_ = std::make_unique<PrintedPage>(html, printer); }, Qt::BlockingQueuedConnection);
  });
}

bool PreviewedPage::print(QPrinter& printer) {
  bool taken = false;
  QMetaObject::invokeMethod(
      &here_, [&] { taken = page_ && page_->print(printer, [] { return true; }); }, Qt::BlockingQueuedConnection);
  return taken;
}

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
