#pragma once

#include <QString>
#include <filesystem>
#include <functional>

#include "foundation/config_manager.h"
#include "platform/document_handler.h"
#include "platform/operator.h"

class QPrinter;

namespace ui {

// Prints a page of the reports on numbered sheets, every column of its lists on them, headings repeated. `goOn` is
// asked before each sheet; its no ends the work there. False when the printer takes nothing. May run on any thread.
bool printPage(const QString& html, QPrinter& printer, const std::function<bool()>& goOn);

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
