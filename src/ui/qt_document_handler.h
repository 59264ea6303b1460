#pragma once

#include "platform/document_handler.h"

namespace ui {

// Opens documents and addresses with the desktop's programs; prints pages through the window system's print dialog.
class QtDocumentHandler : public platform::DocumentHandler {
 public:
  bool open(const std::string& pathOrUrl) override;
  bool print(const std::filesystem::path& document) override;
};

}  // namespace ui
