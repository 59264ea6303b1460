#include <utf8proc.h>
#include <xlsxwriter.h>
#include <zlib.h>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/version.h"
#include "server/library_versions.h"
#include "ui/dialogs.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/icons.h"

namespace ui {

namespace {

std::vector<std::pair<QString, QString>> aboutFacts(server::CServerDoc& document, const Texts& texts) {
  QStringList libraries = {QString("Qt %1").arg(qVersion())};
  for (const std::string& library : server::libraryVersions()) libraries += toQt(library);
  libraries += {QString("libxlsxwriter %1").arg(lxw_version()), QString("utf8proc %1").arg(utf8proc_version()),
                QString("zlib %1").arg(zlibVersion())};
  return {{texts("IDS_ABOUT_DATA"), toQt(document.databases().describe())},
          {texts("IDS_ABOUT_LIBRARIES"), libraries.join(", ")},
          {QString(), texts("IDS_ABOUT_QT_LICENCE")}};
}

class AboutDialog : public FormDialog {
 public:
  AboutDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_ABOUT", "about", parent) {
    constexpr int kIconSize = 64;
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
    auto* facts = new QFormLayout;
    for (const auto& [caption, text] : aboutFacts(document, texts)) {
      auto* label = new QLabel(text);
      label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
      label->setWordWrap(true);
      facts->addRow(caption, label);
    }
    words->addLayout(facts);
    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    top->addWidget(picture, 0, Qt::AlignTop);
    top->addLayout(words, 1);
    body()->addLayout(top);
    cancelButton()->hide();
  }
};

}  // namespace

void showAbout(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  AboutDialog(document, texts, parent).exec();
}

}  // namespace ui
