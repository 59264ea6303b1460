#include "ui/page_setup.h"

#include <QPageSetupDialog>
#include <QStringList>

#include "ui/texts.h"

namespace ui {

namespace {

// "A4;landscape;10;10;10;10": the size's key, then the margins left, top, right and bottom in millimetres.
constexpr const char* kPageSetupKey = "PageSetup";
constexpr const char* kLandscape = "landscape";
constexpr qreal kStandardMargin = 10;
constexpr qreal kWidestMargin = 80;
constexpr int kSetupParts = 6;

QPageSize sizeOfKey(const QString& key) {
  for (int id = 0; id <= QPageSize::LastPageSize; ++id) {
    const QPageSize size(static_cast<QPageSize::PageSizeId>(id));
    if (size.key() == key) return size;
  }
  return QPageSize(QPageSize::A4);
}

}  // namespace

void usePageSetup(QPrinter& printer, foundation::ConfigManager& config) {
  const QStringList kept =
      toQt(config.ReadConfigString(kPageSetupKey, foundation::kGeneral, foundation::StoreMachine, ""))
          .split(';', Qt::KeepEmptyParts);
  const auto margin = [&](int part) {
    bool number = false;
    const qreal millimetres = kept.size() == kSetupParts ? kept[part].toDouble(&number) : 0;
    return number && millimetres >= 0 && millimetres <= kWidestMargin ? millimetres : kStandardMargin;
  };
  const bool portrait = kept.size() == kSetupParts && kept[1] != kLandscape;
  printer.setPageSize(sizeOfKey(kept.front()));
  printer.setPageOrientation(portrait ? QPageLayout::Portrait : QPageLayout::Landscape);
  printer.setPageMargins(QMarginsF(margin(2), margin(3), margin(4), margin(5)), QPageLayout::Millimeter);
}

void keepPageSetup(const QPrinter& printer, foundation::ConfigManager& config) {
  const QPageLayout layout = printer.pageLayout();
  const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
  QStringList parts{layout.pageSize().key(), layout.orientation() == QPageLayout::Landscape ? kLandscape : "portrait"};
  for (const qreal side : {margins.left(), margins.top(), margins.right(), margins.bottom()}) {
    parts << QString::number(side, 'f', 1);
  }
  config.WriteConfigString(fromQt(parts.join(';')), kPageSetupKey, foundation::kGeneral, foundation::StoreMachine);
}

void editPageSetup(QWidget* parent, foundation::ConfigManager& config) {
  QPrinter printer(QPrinter::HighResolution);
  usePageSetup(printer, config);
  QPageSetupDialog dialog(&printer, parent);
  dialog.setObjectName("pageSetup");
  if (dialog.exec() == QDialog::Accepted) keepPageSetup(printer, config);
}

}  // namespace ui
