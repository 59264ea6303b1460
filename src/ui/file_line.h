#pragma once

#include <QLabel>
#include <filesystem>

#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// Where a file is that was written: its path and its folder as links.
[[nodiscard]] QString fileLinks(const std::filesystem::path& file, const Texts& texts);
[[nodiscard]] QString linkTo(const std::filesystem::path& target, const QString& text);

// That sentence in a window whose own work writes files; not there before one was written.
class FileLine : public QLabel {
 public:
  FileLine(server::CServerDoc& document, const Texts& texts);
  // Nothing for an empty path.
  void say(const std::filesystem::path& file);

 private:
  const Texts& texts_;
};

}  // namespace ui
