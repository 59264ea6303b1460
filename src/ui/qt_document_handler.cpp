#include "ui/qt_document_handler.h"

#include <QDesktopServices>
#include <QPrintDialog>
#include <QPrinter>
#include <QTextDocument>
#include <QUrl>
#include <fstream>
#include <iterator>

#include "base/codepage.h"
#include "ui/texts.h"

namespace ui {

namespace {

// Pages say which of two encodings they are in.
QString readPage(const std::filesystem::path& document) {
  std::ifstream in(document, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const bool utf8 = bytes.substr(0, 1024).find("windows-1252") == std::string::npos;
  return toQt(utf8 ? bytes : base::decode(bytes, 1252));
}

}  // namespace

bool QtDocumentHandler::open(const std::string& pathOrUrl) {
  const QString text = toQt(pathOrUrl);
  const bool address = text.startsWith("http://") || text.startsWith("https://") || text.startsWith("mailto:");
  return QDesktopServices::openUrl(address ? QUrl(text) : QUrl::fromLocalFile(text));
}

bool QtDocumentHandler::print(const std::filesystem::path& document) {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageOrientation(QPageLayout::Landscape);
  QPrintDialog dialog(&printer);
  if (dialog.exec() != QDialog::Accepted) return true;
  QTextDocument page;
  page.setHtml(readPage(document));
  page.print(&printer);
  return true;
}

}  // namespace ui
