#include "ui/dialogs/report_place.h"

#include <QDir>
#include <QStandardPaths>

#include "folders/report_page.h"
#include "ui/dialogs/messages.h"

namespace ui {

std::filesystem::path reportFile(server::CServerDoc& document, const char* name) {
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  auto file = folders::listReportFile(document.app().config(), fromQt(documents));
  // A new user may have no documents folder yet; what cannot be made is reported when the page is written.
  if (file.parent_path() == std::filesystem::path(fromQt(documents))) QDir().mkpath(documents);
  return file.replace_filename(name).lexically_normal();
}

bool handOver(server::CServerDoc& document, const Texts& texts, QWidget* parent, const std::filesystem::path& page,
              ReportUse use) {
  auto& desktop = document.app().surroundings().documents;
  if (use == ReportUse::Print) {
    const platform::Printed printed = desktop.print(page);
    if (printed == platform::Printed::Refused) warn(parent, texts, texts("IDS_PRINTER_REFUSES"));
    return printed != platform::Printed::Canceled;
  }
  if (!desktop.open(page.string())) warn(parent, texts, texts.format("IDS_CANTOPENPAGE", page.string()));
  return true;
}

}  // namespace ui
