#include "ui/first_run/first_run_pages.h"

#include <QFile>
#include <QFormLayout>
#include <QRegularExpressionValidator>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <QWizard>

#include "jet/stored_database.h"
#include "sample/company.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/dialogs/folder_line.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/scroll_page.h"
#include "ui/sentence.h"

namespace ui {

FirstRunLanguagePage::FirstRunLanguagePage(const Texts& texts)
    : texts_(texts), languages_(named(new QComboBox, "language")), label_(new QLabel) {
  for (const auto& language : texts.language().Languages()) {
    languages_->addItem(toQt(language.name), toQt(language.code));
  }
  languages_->setCurrentIndex(languages_->findData(toQt(texts.language().NativeLanguage())));
  label_->setBuddy(languages_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label_);
  layout->addWidget(languages_);
  layout->addStretch();
  connect(languages_, &QComboBox::currentIndexChanged, this,
          [this] { emit languageChosen(languages_->currentData().toString()); });
  retranslate();
}

void FirstRunLanguagePage::retranslate() {
  setTitle(texts_("IDS_FIRST_WELCOME"));
  setSubTitle(texts_("IDS_FIRST_WELCOME_TEXT"));
  label_->setText(texts_("IDS_LANGUAGE"));
}

FirstRunTaskPage::FirstRunTaskPage(const Texts& texts, bool proposeConversion) {
  setTitle(texts("IDS_FIRST_TASK"));
  setSubTitle(texts("IDS_FIRST_TASK_TEXT"));
  auto* layout = new QVBoxLayout(this);
  const auto add = [&](const char* key, const char* explainedBy, const char* name, bool chosen) {
    auto* button = named(new QRadioButton(texts(key)), name);
    button->setChecked(chosen);
    layout->addWidget(button);
    QLabel* more = makeSentence(texts(explainedBy));
    more->setIndent(fontMetrics().height() + 6);
    layout->addWidget(more);
    layout->addSpacing(8);
    registerField(name, button);
  };
  add("IDS_FIRST_MAKE", "IDS_FIRST_MAKE_TEXT", "make", !proposeConversion);
  add("IDS_FIRST_OPEN", "IDS_FIRST_OPEN_TEXT", "open", false);
  add("IDS_FIRST_CONVERT", "IDS_FIRST_CONVERT_TEXT", "convert", proposeConversion);
  layout->addStretch();
}

FirstRunFolderPage::FirstRunFolderPage(const Texts& texts, QString oldFolder)
    : texts_(texts),
      proposedOld_(std::move(oldFolder)),
      oldLabel_(new QLabel(texts("IDS_FIRST_OLD_FOLDER"))),
      folderLabel_(new QLabel),
      sample_(named(new QCheckBox(texts("IDS_FIRST_SAMPLE")), "sample")) {
  setTitle(texts("IDS_FIRST_FOLDER"));
  auto* column = new QVBoxLayout(this);
  oldFolder_ = addFolder(*column, oldLabel_, "oldFolder");
  folder_ = addFolder(*column, folderLabel_, "folder");
  column->addWidget(makeSentence(texts("IDS_FIRST_FOLDER_HINT")));
  column->addWidget(sample_);
  column->addStretch();
  registerField("sample", sample_);
  registerField("folder", folder_);
  registerField("oldFolder", oldFolder_);
}

QLineEdit* FirstRunFolderPage::addFolder(QVBoxLayout& column, QLabel* label, const char* name) {
  auto* line = named(new QLineEdit, name);
  label->setBuddy(line);
  line->setAccessibleName(label->text());
  column.addWidget(label);
  column.addWidget(withBrowseButton(line, texts_));
  return line;
}

void FirstRunFolderPage::initializePage() {
  const bool converting = field("convert").toBool();
  const bool opening = field("open").toBool();
  oldLabel_->setVisible(converting);
  oldFolder_->parentWidget()->setVisible(converting);
  sample_->setVisible(!converting && !opening);
  setSubTitle(texts_(opening ? "IDS_FIRST_OPEN_TEXT" : "IDS_FIRST_FOLDER_TEXT"));
  folderLabel_->setText(texts_(opening ? "IDS_FIRST_EXISTING_FOLDER" : "IDS_FIRST_NEW_FOLDER"));
  if (converting && oldFolder_->text().isEmpty()) oldFolder_->setText(proposedOld_);
  if (!folder_->text().isEmpty() && folder_->text() != proposed_) return;
  proposed_ = proposal(opening, converting);
  folder_->setText(proposed_);
}

QString FirstRunFolderPage::proposal(bool opening, bool converting) const {
  if (opening) {
    const auto service = schema::DatabasePlace::ofTyped(server::kServiceDataFolder);
    return service.exists(schema::Which::Main) ? QString(server::kServiceDataFolder) : QString();
  }
  if (converting && !proposedOld_.isEmpty()) return proposedOld_ + "-new";
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

bool FirstRunFolderPage::validatePage() {
  folder_->setText(wholePath(folder_->text()));
  oldFolder_->setText(wholePath(oldFolder_->text()));
  const QString fault = faultOfFolders();
  if (!fault.isEmpty()) warn(this, texts_, fault);
  return fault.isEmpty();
}

// A server that was typed is tried.
QString FirstRunFolderPage::faultOfFolders() const {
  if (folder_->text().isEmpty() || (field("convert").toBool() && oldFolder_->text().isEmpty())) {
    return texts_("IDS_FIRST_NO_FOLDER");
  }
  const bool opening = field("open").toBool();
  try {
    const auto place = schema::DatabasePlace::ofTyped(fromQt(folder_->text()));
    if (place.onServer()) place.askServer();
    const bool has = place.exists(schema::Which::Main);
    if (opening && !has) {
      return texts_.format(place.onServer() ? "IDS_SERVER_NO_DATABASE" : "IDS_FIRST_NO_DATABASE", place.describe());
    }
    return opening || !has ? QString() : texts_.format("IDS_FIRST_HAS_DATABASE", fromQt(folder_->text()));
  } catch (const jet::Error& error) {
    return toQt(error.description());
  }
}

FirstRunPlacePage::FirstRunPlacePage(const Texts& texts)
    : country_(named(new QLineEdit, "country")),
      area_(named(new QLineEdit, "area")),
      monitor_(named(new QLineEdit, "monitor")) {
  setTitle(texts("IDS_FIRST_PLACE"));
  setSubTitle(texts("IDS_FIRST_PLACE_TEXT"));
  auto* form = new QFormLayout(this);
  form->addRow(texts("IDS_OPT_COUNTRY_CODE"), country_);
  form->addRow(QString(), makeSentence(texts("IDS_HINT_COUNTRY_CODE")));
  form->addRow(texts("IDS_OPT_AREA_CODE"), area_);
  form->addRow(QString(), makeSentence(texts("IDS_HINT_AREA_CODE")));
  auto* label = new QLabel(texts("IDS_OPT_MONITOR_FOLDER"));
  label->setBuddy(monitor_);
  monitor_->setAccessibleName(label->text());
  form->addRow(label, withBrowseButton(monitor_, texts));
  form->addRow(QString(), makeSentence(texts("IDS_HINT_MONITOR_FOLDER")));
  for (QLineEdit* code : {country_, area_}) {
    code->setMaxLength(8);
    code->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), code));
    code->setMaximumWidth(fontMetrics().averageCharWidth() * 20);
  }
  registerField("country", country_);
  registerField("area", area_);
  registerField("monitor", monitor_);
}

void FirstRunPlacePage::initializePage() {
  // The sample's numbers are those of its own town.
  if (country_->text().isEmpty()) country_->setText(toQt(sample::kCountryCode));
  if (area_->text().isEmpty() && field("sample").toBool()) area_->setText(toQt(sample::kAreaCode));
  // Of databases on a server it is beside the machine store, unless one is named.
  if (jet::isServerAddress(fromQt(field("folder").toString()))) return;
  const QString monitor = field("folder").toString() + "/monitor";
  // A folder that is opened may have its monitor elsewhere.
  if (!field("open").toBool() || QFile::exists(monitor)) monitor_->setText(monitor);
}

FirstRunExchangePage::FirstRunExchangePage(foundation::ConfigManager& config, platform::Operator& person,
                                           const Texts& texts)
    : texts_(texts) {
  setTitle(texts("IDS_EXCHANGE_FIRST"));
  setSubTitle(texts("IDS_EXCHANGE_FIRST_TEXT"));
  ExchangePlace place = exchangePlace(config);
  // The setting is not stored before the wizard is finished.
  place.monitorFolder = [this] { return wholePath(field("monitor").toString()); };
  page_ = new ExchangePage(std::move(place), person, texts);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(new ScrollPage(page_));
}

bool FirstRunExchangePage::validatePage() {
  const QString problem = page_->problem();
  if (!problem.isEmpty()) warn(this, texts_, problem);
  return problem.isEmpty();
}

void FirstRunExchangePage::save() {
  page_->save();
}

FirstRunPasswordPage::FirstRunPasswordPage(const Texts& texts)
    : texts_(texts), password_(named(new QLineEdit, "password")), repeated_(named(new QLineEdit, "repeated")) {
  setTitle(texts("IDS_FIRST_PASSWORD"));
  setSubTitle(texts("IDS_FIRST_PASSWORD_TEXT"));
  auto* form = new QFormLayout(this);
  form->addRow(texts("IDS_PASSWORD"), password_);
  form->addRow(texts("IDS_REPEAT_PASSWORD"), repeated_);
  for (QLineEdit* line : {password_, repeated_}) line->setEchoMode(QLineEdit::Password);
  finish_ = makeSentence({});
  form->addRow(QString(), finish_);
  registerField("password", password_);
}

void FirstRunPasswordPage::initializePage() {
  QString text = texts_("IDS_FIRST_FINISH_TEXT");
  if (field("sample").toBool()) text += ' ' + texts_("IDS_FIRST_FINISH_SAMPLE");
  finish_->setText(text);
}

bool FirstRunPasswordPage::validatePage() {
  if (password_->text() == repeated_->text()) return true;
  warn(this, texts_, texts_("IDS_NOREENTER"));
  return false;
}

}  // namespace ui
