#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/version.h"
#include "ui/dialogs.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/icons.h"

namespace ui {

void showAbout(const Texts& texts, QWidget* parent) {
  constexpr int kIconSize = 64;
  QDialog dialog(parent);
  dialog.setObjectName("about");
  dialog.setWindowTitle(texts("IDS_ACTION_ABOUT"));
  auto* picture = new QLabel;
  picture->setPixmap(icon(Icon::Program).pixmap(kIconSize));
  auto* name = new QLabel(base::kProgramName);
  QFont large = name->font();
  large.setPointSizeF(large.pointSizeF() * 1.6);
  large.setBold(true);
  name->setFont(large);
  auto* address = new QLabel(QString("<a href=\"%1\">%1</a>").arg(base::kProgramUrl));
  address->setOpenExternalLinks(true);
  address->setTextInteractionFlags(Qt::TextBrowserInteraction);

  auto* words = new QVBoxLayout;
  words->addWidget(name);
  words->addWidget(new QLabel(texts("IDS_ABOUT_PURPOSE")));
  words->addWidget(named(new QLabel(texts("IDS_VERSION") + " " + base::kProgramVersion), "version"));
  words->addWidget(address);
  auto* top = new QHBoxLayout;
  top->setSpacing(16);
  top->addWidget(picture, 0, Qt::AlignTop);
  top->addLayout(words, 1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  named(buttons->button(QDialogButtonBox::Ok), "ok")->setText(texts("IDS_OK"));
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  auto* layout = new QVBoxLayout(&dialog);
  layout->setSpacing(12);
  layout->addLayout(top);
  layout->addWidget(buttons);
  dialog.exec();
}

}  // namespace ui
