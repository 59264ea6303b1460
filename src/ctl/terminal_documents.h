#pragma once

#include "platform/document_handler.h"

namespace ctl {

// Opens with xdg-open, prints with lp: a page as the sheets that a browser (chromium, google-chrome) makes of it, or as
// it is when there is none.
class TerminalDocuments : public platform::DocumentHandler {
 public:
  bool open(const std::string& pathOrUrl) override;
  platform::Printed print(const std::filesystem::path& document) override;
};

}  // namespace ctl
