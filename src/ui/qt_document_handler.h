#pragma once

#include <QObject>
#include <QSizeF>
#include <QString>
#include <QThread>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "foundation/config_manager.h"
#include "platform/document_handler.h"
#include "platform/operator.h"

class QPainter;
class QPrinter;
class QTextDocument;

namespace ui {

// A page of the reports on numbered sheets, every column of its lists on them, headings repeated. May be made on any
// thread, on which it stays: the fonts of its text are that thread's.
class PrintedPage {
 public:
  // Laid out for the printer's sheets, which takes seconds for thousands of rows.
  PrintedPage(const QString& html, const QPrinter& printer);
  ~PrintedPage();
  // `goOn` is asked before each sheet; its no ends the work there. False when the printer takes nothing. Laid out again
  // when its sheets have become others.
  bool print(QPrinter& printer, const std::function<bool()>& goOn);

 private:
  void layOutFor(const QPrinter& printer);
  void draw(QPainter& painter, int sheet) const;

  std::unique_ptr<QTextDocument> document_;
  QSizeF paper_;  // in the document's units, of which an inch has 96
  QSizeF sheet_;  // as wide as the document needs it
  qreal scale_ = 1;
  int sheets_ = 0;
};

// A page for a preview, with a thread of its own.
class PreviewedPage {
 public:
  PreviewedPage();
  ~PreviewedPage();
  // While the person's progress window lives; false when it was stopped there.
  bool layOut(const QString& html, const QPrinter& printer, const std::string& name, platform::Operator& person);
  // Waits for the thread: what a preview shows must not change while it is drawn.
  bool print(QPrinter& printer);

 private:
  QThread thread_;
  QObject here_;  // for what is to be done there
  std::unique_ptr<PrintedPage> page_;
};

// A page of the reports, in the encoding that it declares.
[[nodiscard]] QString readPage(const std::filesystem::path& document);

// Opens documents and addresses with the desktop's programs; prints pages through the window system's print dialog.
class QtDocumentHandler : public platform::DocumentHandler {
 public:
  // Printing shows its progress by `person` and uses the kept page set-up; both must outlive the handler.
  QtDocumentHandler(platform::Operator& person, foundation::ConfigManager& config) : person_(person), config_(config) {}

  bool open(const std::string& pathOrUrl) override;
  platform::Printed print(const std::filesystem::path& document) override;

 private:
  platform::Operator& person_;
  foundation::ConfigManager& config_;
};

}  // namespace ui
