#include "ui/dialogs/folder_line.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QPushButton>

#include "jet/stored_database.h"

namespace ui {

QWidget* withBrowseButton(QLineEdit* line, const Texts& texts) {
  auto* both = new QWidget;
  both->setFocusProxy(line);
  auto* layout = new QHBoxLayout(both);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* browse = new QPushButton(texts("IDS_BROWSE"));
  browse->setObjectName(line->objectName() + "Browse");
  layout->addWidget(line, 1);
  layout->addWidget(browse);
  QObject::connect(browse, &QPushButton::clicked, line, [line] {
    const QString folder = QFileDialog::getExistingDirectory(line, {}, line->text());
    if (!folder.isEmpty()) line->setText(folder);
  });
  return both;
}

QString wholePath(QString path) {
  path = path.trimmed();
  if (jet::isServerAddress(fromQt(path))) return path;
  if (path == "~" || path.startsWith("~/")) path.replace(0, 1, QDir::homePath());
  return path.isEmpty() ? path : QDir::cleanPath(QDir(path).absolutePath());
}

}  // namespace ui
