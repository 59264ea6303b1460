#include "ui/page_setup.h"

#include <QDialogButtonBox>
#include <QLayout>
#include <QPageLayout>
#include <QPageSetupDialog>
#include <QScrollArea>
#include <QStringList>

#include "ui/screen_fit.h"
#include "ui/texts.h"

namespace ui {

namespace {

// "A4;landscape;10;10;10;10": the size's key, then the margins left, top, right and bottom in millimetres.
constexpr const char* kLandscape = "landscape";
constexpr qreal kStandardMargin = 10;
constexpr qreal kWidestMargin = 80;
constexpr int kSetupParts = 6;

// Qt's own window is higher than a small screen; its buttons stay in sight.
void scrollParts(QDialog& dialog) {
  if (dialog.minimumSizeHint().height() <= availableSize(dialog).height()) return;
  for (QObject* child : QObjectList(dialog.children())) {
    auto* part = qobject_cast<QWidget*>(child);
    if (part == nullptr || qobject_cast<QDialogButtonBox*>(part) != nullptr || part->layout() == nullptr) continue;
    auto* page = new QScrollArea;
    delete dialog.layout()->replaceWidget(part, page);
    page->setWidget(part);
    page->setWidgetResizable(true);
    page->setFrameShape(QFrame::NoFrame);
  }
  dialog.layout()->setSizeConstraint(QLayout::SetDefaultConstraint);
  dialog.resize(dialog.sizeHint().boundedTo(availableSize(dialog)));
}

QPageSize sizeOfKey(const QString& key) {
  for (int id = 0; id <= QPageSize::LastPageSize; ++id) {
    const QPageSize size(static_cast<QPageSize::PageSizeId>(id));
    if (size.key() == key) return size;
  }
  return QPageSize(QPageSize::A4);
}

// Nothing when none was kept, or one that means no sheet.
std::optional<QPageLayout> keptLayout(foundation::ConfigManager& config) {
  const QStringList kept = toQt(config.ReadConfigString(foundation::keys::PageSetup)).split(';', Qt::KeepEmptyParts);
  if (kept.size() != kSetupParts) return std::nullopt;
  const auto margin = [&](int part) {
    bool number = false;
    const qreal millimetres = kept[part].toDouble(&number);
    return number && millimetres >= 0 && millimetres <= kWidestMargin ? millimetres : kStandardMargin;
  };
  return QPageLayout(sizeOfKey(kept.front()), kept[1] == kLandscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                     QMarginsF(margin(2), margin(3), margin(4), margin(5)), QPageLayout::Millimeter);
}

}  // namespace

void usePageSetup(QPrinter& printer, foundation::ConfigManager& config) {
  const QMarginsF margins(kStandardMargin, kStandardMargin, kStandardMargin, kStandardMargin);
  const QPageLayout standard(QPageSize(QPageSize::A4), QPageLayout::Landscape, margins, QPageLayout::Millimeter);
  const QPageLayout layout = keptLayout(config).value_or(standard);
  printer.setPageSize(layout.pageSize());
  printer.setPageOrientation(layout.orientation());
  printer.setPageMargins(layout.margins(), QPageLayout::Millimeter);
}

std::optional<print::Sheet> keptSheet(foundation::ConfigManager& config) {
  const auto layout = keptLayout(config);
  if (!layout) return std::nullopt;
  const QSizeF paper = layout->fullRect(QPageLayout::Point).size();
  const QMarginsF margins = layout->margins(QPageLayout::Point);
  return print::Sheet{paper.width(), paper.height(), margins.left(), margins.top(), margins.right(), margins.bottom()};
}

void keepPageSetup(const QPrinter& printer, foundation::ConfigManager& config) {
  const QPageLayout layout = printer.pageLayout();
  const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
  QStringList parts{layout.pageSize().key(), layout.orientation() == QPageLayout::Landscape ? kLandscape : "portrait"};
  for (const qreal side : {margins.left(), margins.top(), margins.right(), margins.bottom()}) {
    parts << QString::number(side, 'f', 1);
  }
  config.WriteConfigString(fromQt(parts.join(';')), foundation::keys::PageSetup);
}

void editPageSetup(QWidget* parent, foundation::ConfigManager& config) {
  QPrinter printer(QPrinter::HighResolution);
  usePageSetup(printer, config);
  QPageSetupDialog dialog(&printer, parent);
  dialog.setObjectName("pageSetup");
  scrollParts(dialog);
  if (dialog.exec() == QDialog::Accepted) keepPageSetup(printer, config);
}

}  // namespace ui
