#include "ui/file_line.h"

#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

QString linkTo(const std::filesystem::path& target, const QString& text) {
  return QString("<a href=\"%1\">%2</a>").arg(toQt(target.string()).toHtmlEscaped(), text.toHtmlEscaped());
}

QString fileLinks(const std::filesystem::path& file, const Texts& texts) {
  const QString where = linkTo(file, toQt(file.string()));
  return texts.format("IDS_FILE_WRITTEN", fromQt(where)) + "&nbsp;&nbsp;&nbsp;" +
         linkTo(file.parent_path(), texts("IDS_OPEN_FOLDER"));
}

FileLine::FileLine(server::CServerDoc& document, const Texts& texts) : texts_(texts) {
  setObjectName("fileLine");
  setWordWrap(true);
  setTextInteractionFlags(Qt::TextBrowserInteraction);
  hide();
  connect(this, &QLabel::linkActivated, this, [this, &document](const QString& path) {
    if (document.app().surroundings().documents.open(fromQt(path))) return;
    warn(window(), texts_, texts_.format("IDS_CANTOPENPAGE", fromQt(path)));
  });
}

void FileLine::say(const std::filesystem::path& file) {
  if (file.empty()) return;
  setText(fileLinks(file, texts_));
  show();
}

}  // namespace ui
