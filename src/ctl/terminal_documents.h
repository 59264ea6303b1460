#pragma once

#include "platform/document_handler.h"

namespace ctl {

// Opens with xdg-open, prints with lp.
class TerminalDocuments : public platform::DocumentHandler {
 public:
  bool open(const std::string& pathOrUrl) override;
  bool print(const std::filesystem::path& document) override;
};

}  // namespace ctl
