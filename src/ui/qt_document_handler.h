#pragma once

#include <QString>

#include "platform/document_handler.h"

class QPrinter;

namespace ui {

// Prints a page of the reports on numbered sheets, every column of its lists on them, headings repeated.
void printPage(const QString& html, QPrinter& printer);

// Opens documents and addresses with the desktop's programs; prints pages through the window system's print dialog.
class QtDocumentHandler : public platform::DocumentHandler {
 public:
  bool open(const std::string& pathOrUrl) override;
  bool print(const std::filesystem::path& document) override;
};

}  // namespace ui
