#include "ui/dialogs/file_question.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace ui {

namespace {

// "xlsx" of "XLSX (*.xlsx)".
QString endingOf(const QString& kind) {
  return kind.section("*.", 1).section(')', 0, 0);
}

// What no file system here takes in a name, or another system would refuse.
QString fileName(QString title) {
  title.replace(": ", " - ");
  for (const QChar forbidden : QStringLiteral("/\\:*?\"<>|")) title.replace(forbidden, '-');
  return title.simplified();
}

}  // namespace

std::filesystem::path askFile(foundation::ConfigManager& config, const Texts& texts, QWidget* parent,
                              const FileQuestion& question) {
  const QString last = toQt(config.ReadConfigString(foundation::keys::LastExportFolder));
  QFileDialog dialog(
      parent, texts(question.captionKey).remove("...").remove('&'),
      QFileInfo(last).isDir() ? last : QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
  dialog.setObjectName(question.name);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters(question.kinds);
  const QString ending = endingOf(question.kinds.front());
  dialog.setDefaultSuffix(ending);
  dialog.selectFile(fileName(question.title) + '.' + ending);
  // The ending of the proposed name follows the kind that is chosen.
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& kind) {
    const QString before = dialog.defaultSuffix();
    dialog.setDefaultSuffix(endingOf(kind));
    const QStringList files = dialog.selectedFiles();
    if (files.isEmpty() || !files.front().endsWith('.' + before)) return;
    dialog.selectFile(QFileInfo(files.front().chopped(before.size()) + endingOf(kind)).fileName());
  });
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  const QString name = dialog.selectedFiles().constFirst();
  config.WriteConfigString(fromQt(QFileInfo(name).absolutePath()), foundation::keys::LastExportFolder);
  return std::filesystem::path(fromQt(name));
}

bool replaceFile(const QString& name, const QByteArray& content) {
  QSaveFile file(name);
  // The commit by itself does not notice that what was still held in memory found no room.
  return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush() && file.commit();
}

}  // namespace ui
