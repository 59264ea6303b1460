#include "ui/dialogs/server_address.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/version.h"
#include "jet/stored_database.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/dialogs/messages.h"

namespace ui {

QString faultOfAddress(const std::string& address, const Texts& texts) {
  try {
    const auto place = schema::DatabasePlace::ofTyped(address);
    place.askServer();
    return place.exists(schema::Which::Main) ? QString() : texts.format("IDS_SERVER_NO_DATABASE", place.describe());
  } catch (const jet::Error& error) {
    return toQt(error.description());
  }
}

std::optional<std::string> askServerAddress(std::string_view current, const Texts& texts) {
  QDialog dialog;
  dialog.setObjectName("serverAddress");
  dialog.setWindowTitle(base::kProgramName);
  auto* hint = new QLabel(texts("IDS_ADDRESS_HINT"));
  hint->setWordWrap(true);
  auto* line = new QLineEdit(jet::isServerAddress(current) ? toQt(current) : QString("postgresql://"));
  line->setObjectName("address");
  line->setMinimumWidth(line->fontMetrics().averageCharWidth() * 70);
  auto* label = new QLabel(texts("IDS_ADDRESS_OF_SERVER"));
  label->setBuddy(line);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName("ok");
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cancel");
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(hint);
  layout->addWidget(label);
  layout->addWidget(line);
  layout->addWidget(buttons);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
    const std::string typed = fromQt(line->text().trimmed());
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QString fault =
        jet::isServerAddress(typed) ? faultOfAddress(typed, texts) : texts.format("IDS_NO_SERVER_ADDRESS", typed);
    QApplication::restoreOverrideCursor();
    if (fault.isEmpty()) return dialog.accept();
    warn(&dialog, texts, fault);
    line->setFocus();
  });
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return server::folderSetting(fromQt(line->text().trimmed()));
}

}  // namespace ui
