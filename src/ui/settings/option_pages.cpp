#include "ui/settings/option_pages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace ui {

namespace {

constexpr foundation::Store M = foundation::StoreMachine;
constexpr foundation::Store D = foundation::StoreDatabase;

enum class OptionKind { Text, Number, Switch, Folder, DepartmentSource, Language };

struct Option {
  const char* captionKey;
  const char* section;
  const char* key;
  foundation::Store store;
  OptionKind kind;
  int fallback;  // of numbers and switches
  int least;     // of numbers
  int most;
};

constexpr Option kCallOptions[] = {
    {"IDS_OPT_KEEP_DAYS", "Calls", "Sterge", D, OptionKind::Number, -1, -1, 100000},
    {"IDS_OPT_DEPARTMENT_SOURCE", "Calls", "Sursa_departament", D, OptionKind::DepartmentSource, 0, 0, 1},
    {"IDS_OPT_IGNORE_SHORT", "Calls", "Ignore_short_calls", D, OptionKind::Number, -1, -1, 86400},
    {"IDS_OPT_SECONDS_NOT_CHARGED", "Calls", "Seconds_not_charged", D, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_EXTERNAL_PHONEBOOK", "Calls", "ExternalPhonebook", D, OptionKind::Switch, 1, 0, 1},
    {"IDS_OPT_NUMBER_FILTER", "Calls", "Number_Filter_Enabled", M, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_LOG_DELETE", "general", "Log_DeleteEnabled", D, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_LOG_DAYS", "general", "Log_DeleteAfter", D, OptionKind::Number, 0, 0, 100000},
};

constexpr Option kOrganization[] = {
    {"IDS_ADDRESS", "general", "OrganizationAddress", D, OptionKind::Text, 0, 0, 0},
    {"IDS_TOWN", "general", "OrganizationOras", D, OptionKind::Text, 0, 0, 0},
    {"IDS_PHONE_TEXT", "general", "OrganizationTel", D, OptionKind::Text, 0, 0, 0},
    {"IDS_FAX", "general", "OrganizationFax", D, OptionKind::Text, 0, 0, 0},
    {"IDS_EMAIL", "general", "OrganizationEmail", D, OptionKind::Text, 0, 0, 0},
    {"IDS_WEB", "general", "OrganizationWeb", D, OptionKind::Text, 0, 0, 0},
    {"IDS_FISCAL_CODE", "general", "OrganizationCF", D, OptionKind::Text, 0, 0, 0},
    {"IDS_BANK_ACCOUNT", "general", "OrganizationCont", D, OptionKind::Text, 0, 0, 0},
    {"IDS_BANK", "general", "OrganizationBanca", D, OptionKind::Text, 0, 0, 0},
    {"IDS_ORG_PREFIX", "general", "OrganizationPrefix", D, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_VAT", "general", "OrganizationTVA", D, OptionKind::Number, 0, 0, 100},
    {"IDS_OPT_SURCHARGE", "general", "OrganizationTAXE", D, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_DECIMALS", "general", "DisplayDecimals", D, OptionKind::Number, 2, 0, 8},
    {"IDS_OPT_DECIMALS_VALUE", "general", "DisplayDecimalsValue", D, OptionKind::Number, 100, 0, 1000000000},
    {"IDS_OPT_DECIMALS_DEFAULT", "general", "DisplayDecimalsDefault", D, OptionKind::Number, 0, 0, 8},
    {"IDS_OPT_BILL_TEMPLATE", "general", "TemplateHotel", D, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_RESELLER", "general", "ResellerName", D, OptionKind::Text, 0, 0, 0},
};

constexpr Option kPlace[] = {
    {"IDS_OPT_MONITOR_FOLDER", "general", "PathMonitor", M, OptionKind::Folder, 0, 0, 0},
    {"IDS_OPT_DATABASE_FOLDER", "general", "PathDatabase", M, OptionKind::Folder, 0, 0, 0},
    {"IDS_OPT_PROGRAM_FOLDER", "general", "Path", M, OptionKind::Folder, 0, 0, 0},
    {"IDS_OPT_COUNTRY_CODE", "general", "CountryCode", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_AREA_CODE", "general", "AreaCode", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_COM_OUT", "general", "COMOut", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_OUT_FILE", "general", "OutFile", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_LIVE_SOCKET", "general", "LiveSocket", M, OptionKind::Text, 0, 0, 0},
};

constexpr Option kInterface[] = {
    {"IDS_OPT_LANGUAGE", "general", "Lang", M, OptionKind::Language, 0, 0, 0},
    {"IDS_OPT_TOOLBAR", "general", "iface_Toolbar", M, OptionKind::Switch, 1, 0, 1},
    {"IDS_OPT_STATUSBAR", "general", "iface_Statusbar", M, OptionKind::Switch, 1, 0, 1},
    {"IDS_OPT_GRID", "general", "iface_Grid", M, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_HOVER", "general", "iface_Hover", M, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_AUTOSELECT", "general", "iface_Autoselect", M, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_SEARCH_RESULTS", "general", "iface_searchmaxresults", M, OptionKind::Number, 100, 1, 100000},
    {"IDS_OPT_SEARCH_PREFIX", "general", "PhonebookSearchMethod", M, OptionKind::Switch, 0, 0, 1},
    {"IDS_OPT_MANUAL", "general", "Manual", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_URL_SUPPORT", "general", "UrlSupport", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_URL_UPDATES", "general", "UrlCheckUpdates", M, OptionKind::Text, 0, 0, 0},
    {"IDS_OPT_URL_CURRENCY", "general", "UrlCurrency", M, OptionKind::Text, 0, 0, 0},
};

// An option's field: its editor and how its value is written when it was changed.
struct Field {
  QWidget* editor = nullptr;
  std::function<void()> write;
};

Field numberField(const Option& option, foundation::ConfigManager& config) {
  auto* box = new QSpinBox;
  box->setRange(option.least, option.most);
  const int before = config.ReadConfigInt(option.key, option.section, option.store, option.fallback);
  box->setValue(before);
  return {box, [box, before, option, &config] {
            if (box->value() != before) config.WriteConfigInt(box->value(), option.key, option.section, option.store);
          }};
}

Field switchField(const Option& option, foundation::ConfigManager& config) {
  auto* box = new QCheckBox;
  const bool before = config.ReadConfigInt(option.key, option.section, option.store, option.fallback) != 0;
  box->setChecked(before);
  return {box, [box, before, option, &config] {
            if (box->isChecked() == before) return;
            config.WriteConfigInt(box->isChecked() ? 1 : 0, option.key, option.section, option.store);
          }};
}

Field choiceField(const Option& option, foundation::ConfigManager& config, const Texts& texts) {
  auto* box = new QComboBox;
  box->addItems({texts("IDS_OPT_DEPARTMENT_EXTENSION"), texts("IDS_OPT_DEPARTMENT_ACCOUNT")});
  const int before = config.ReadConfigInt(option.key, option.section, option.store, option.fallback) != 0 ? 1 : 0;
  box->setCurrentIndex(before);
  return {box, [box, before, option, &config] {
            if (box->currentIndex() == before) return;
            config.WriteConfigInt(box->currentIndex(), option.key, option.section, option.store);
          }};
}

Field languageField(const Option& option, foundation::ConfigManager& config, const Texts& texts) {
  auto* box = new QComboBox;
  for (const auto& language : texts.language().Languages()) box->addItem(toQt(language.name), toQt(language.code));
  const QString before = toQt(texts.language().NativeLanguage());
  box->setCurrentIndex(box->findData(before));
  return {box, [box, before, option, &config] {
            const QString code = box->currentData().toString();
            if (code != before) config.WriteConfigString(fromQt(code), option.key, option.section, option.store);
          }};
}

Field textField(const Option& option, foundation::ConfigManager& config, const Texts& texts) {
  auto* edit = new QLineEdit;
  const QString before = toQt(config.ReadConfigString(option.key, option.section, option.store, ""));
  edit->setText(before);
  QWidget* editor = edit;
  if (option.kind == OptionKind::Folder) {
    editor = new QWidget;
    auto* layout = new QHBoxLayout(editor);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* browse = new QPushButton(texts("IDS_BROWSE"));
    layout->addWidget(edit);
    layout->addWidget(browse);
    QObject::connect(browse, &QPushButton::clicked, edit, [edit] {
      // File names are appended to the folder as it stands: it ends with its separator.
      const QString folder = QFileDialog::getExistingDirectory(edit, {}, edit->text());
      if (!folder.isEmpty()) edit->setText(folder.endsWith('/') ? folder : folder + '/');
    });
  }
  return {editor, [edit, before, option, &config] {
            if (edit->text() == before) return;
            config.WriteConfigString(fromQt(edit->text()), option.key, option.section, option.store);
          }};
}

Field makeField(const Option& option, foundation::ConfigManager& config, const Texts& texts) {
  switch (option.kind) {
    case OptionKind::Number:
      return numberField(option, config);
    case OptionKind::Switch:
      return switchField(option, config);
    case OptionKind::DepartmentSource:
      return choiceField(option, config, texts);
    case OptionKind::Language:
      return languageField(option, config, texts);
    default:
      return textField(option, config, texts);
  }
}

SettingsPage optionPage(const QString& caption, std::span<const Option> options, foundation::ConfigManager& config,
                        const Texts& texts) {
  auto* form = new QWidget;
  auto* layout = new QFormLayout(form);
  layout->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  auto writers = std::make_shared<std::vector<std::function<void()>>>();
  for (const Option& option : options) {
    const Field field = makeField(option, config, texts);
    field.editor->setObjectName(option.key);
    field.editor->setAccessibleName(texts(option.captionKey));
    // The store of a setting decides who shares it.
    if (config.DatabaseReadOnly() && option.store == D) field.editor->setEnabled(false);
    layout->addRow(texts(option.captionKey), field.editor);
    writers->push_back(field.write);
  }
  auto* scroll = new QScrollArea;
  scroll->setWidget(form);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  return {caption, scroll, nullptr, [writers] {
            for (const auto& write : *writers) write();
          }};
}

}  // namespace

SettingsPage callOptionsPage(foundation::ConfigManager& config, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_CALL_OPTIONS"), kCallOptions, config, texts);
}

SettingsPage organizationPage(foundation::ConfigManager& config, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_ORGANIZATION"), kOrganization, config, texts);
}

SettingsPage placePage(foundation::ConfigManager& config, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_PLACE"), kPlace, config, texts);
}

SettingsPage interfacePage(foundation::ConfigManager& config, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_INTERFACE"), kInterface, config, texts);
}

}  // namespace ui
