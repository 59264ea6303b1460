#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>

#include "security/restriction.h"
#include "server/data_folder.h"
#include "ui/dialogs.h"
#include "ui/dialogs/conversion.h"
#include "ui/dialogs/folder_line.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

// Code pages that old databases were written in; 0 is the one that each file names.
constexpr int kCodepages[] = {1250, 1252, 1251, 1253, 1254};

// An old database carried over into a new folder while this one stays open.
class ConvertDialog : public FormDialog {
 public:
  ConvertDialog(server::CServerApp& app, const Texts& texts, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_CONVERT", "convertDialog", parent), app_(app) {
    body()->addWidget(makeHint(texts("IDS_FIRST_CONVERT_TEXT")));
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    oldFolder_ = addFolder(*form, "IDS_FIRST_OLD_FOLDER", "oldFolder");
    newFolder_ = addFolder(*form, "IDS_FIRST_NEW_FOLDER", "newFolder");
    codepage_ = named(new QComboBox, "codepage");
    codepage_->addItem(texts("IDS_CONVERT_OWN_CODEPAGE"), 0);
    for (const int page : kCodepages) codepage_->addItem(QString::number(page), page);
    form->addRow(texts("IDS_CONVERT_CODEPAGE"), codepage_);
    body()->addLayout(form);
    salvage_ = makeCheckBox("IDS_CONVERT_SALVAGE", "salvage");
    use_ = makeCheckBox("IDS_CONVERT_USE", "use");
    body()->addWidget(salvage_);
    body()->addWidget(use_);
    body()->addWidget(makeHint(texts("IDS_HINT_CONVERT_USE")));
    okButton()->setText(texts("IDS_CONVERT"));
    setMinimumWidth(fontMetrics().averageCharWidth() * 90);
  }

  void accept() override {
    oldFolder_->setText(wholePath(oldFolder_->text()));
    newFolder_->setText(wholePath(newFolder_->text()));
    if (oldFolder_->text().isEmpty() || newFolder_->text().isEmpty()) {
      (oldFolder_->text().isEmpty() ? oldFolder_ : newFolder_)->setFocus();
      return warn(this, texts(), texts()("IDS_FIRST_NO_FOLDER"));
    }
    const bool converted = tryConversion(this, texts(), salvage_->isChecked(), [this](bool salvage) {
      return convertFolder({.oldFolder = fromQt(oldFolder_->text()),
                            .newFolder = fromQt(newFolder_->text()),
                            .codepage = codepage_->currentData().toInt(),
                            .salvage = salvage,
                            .password = {}},
                           app_);
    });
    if (!converted) return;
    if (use_->isChecked()) useFromNextStart();
    QDialog::accept();
  }

 private:
  QLineEdit* addFolder(QFormLayout& form, const char* key, const char* name) {
    auto* line = named(new QLineEdit, name);
    auto* label = new QLabel(texts()(key));
    label->setBuddy(line);
    line->setAccessibleName(label->text());
    form.addRow(label, withBrowseButton(line, texts()));
    return line;
  }

  // The monitor's folder and the other places of this workstation stay.
  void useFromNextStart() {
    const std::string folder = server::folderSetting(fromQt(newFolder_->text()));
    foundation::ConfigManager& config = app_.config();
    if (config.WriteConfigString(folder, foundation::keys::PathDatabase)) {
      inform(this, texts(), texts().format("IDS_CONVERT_USED", folder));
    } else {
      warn(this, texts(), texts().format("IDS_CANTWRITEFILE", config.machineStore().file().string()));
    }
  }

  server::CServerApp& app_;
  QLineEdit* oldFolder_;
  QLineEdit* newFolder_;
  QComboBox* codepage_;
  QCheckBox* salvage_;
  QCheckBox* use_;
};

}  // namespace

bool convertOldDatabase(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  security::requireAllCalls(document.user(), document.app().language());
  return ConvertDialog(document.app(), texts, parent).exec() == QDialog::Accepted;
}

}  // namespace ui
