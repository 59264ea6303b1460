#include "ui/settings/option_pages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSpinBox>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

#include "analysis/working_hours.h"
#include "base/path.h"
#include "foundation/setting_keys.h"
#include "jet/stored_database.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/dialogs/folder_line.h"
#include "ui/dialogs/server_address.h"
#include "ui/sentence.h"

namespace ui {

namespace {

namespace keys = foundation::keys;

constexpr int kLongestCode = 8;    // of a country or area
constexpr int kHeadingSpace = 10;  // above it, in pixels
constexpr int kHintSpace = 2;      // below the field, in pixels

enum class OptionKind {
  Heading,
  Text,
  Digits,
  Percent,
  Number,
  Switch,
  Folder,
  DepartmentSource,
  Language,
  WorkingHours
};

// A setting as a field; where it is stored, its default and its range are those of the table of settings.
struct Option {
  const char* captionKey;
  const foundation::Setting* setting;  // null: a heading
  OptionKind kind;
  const char* unitKey = nullptr;    // after the number
  const char* lowestKey = nullptr;  // what the least number means
  const char* hintKey = nullptr;    // a sentence under the field
  std::optional<int> least = {};    // where the page offers less than the table
};

constexpr Option heading(const char* captionKey) {
  return {captionKey, nullptr, OptionKind::Heading};
}

constexpr Option kCallOptions[] = {
    {"IDS_OPT_KEEP_DAYS", &keys::calls::Sterge, OptionKind::Number, "IDS_DAYS_TEXT", "IDS_OPT_ALL_CALLS",
     "IDS_HINT_KEEP_DAYS", 0},
    {"IDS_OPT_DEPARTMENT_SOURCE", &keys::calls::Sursa_departament, OptionKind::DepartmentSource},
    {"IDS_OPT_IGNORE_SHORT", &keys::calls::Ignore_short_calls, OptionKind::Number, "IDS_SECONDS", "IDS_OPT_NO_CALL",
     "IDS_HINT_IGNORE_SHORT"},
    {"IDS_OPT_SECONDS_NOT_CHARGED", &keys::calls::Seconds_not_charged, OptionKind::Switch, nullptr, nullptr,
     "IDS_HINT_SECONDS_NOT_CHARGED"},
    {"IDS_OPT_EXTERNAL_PHONEBOOK", &keys::calls::ExternalPhonebook, OptionKind::Switch},
    {"IDS_OPT_NUMBER_FILTER", &keys::filter::Number_Filter_Enabled, OptionKind::Switch, nullptr, nullptr,
     "IDS_HINT_NUMBER_FILTER"},
    {"IDS_OPT_WORKING_HOURS", &keys::calls::WorkingHours, OptionKind::WorkingHours, nullptr, nullptr,
     "IDS_HINT_WORKING_HOURS"},
    heading("IDS_FOLDER_LOG"),
    {"IDS_OPT_LOG_DELETE", &keys::Log_DeleteEnabled, OptionKind::Switch},
    {"IDS_OPT_LOG_DAYS", &keys::Log_DeleteAfter, OptionKind::Number, "IDS_DAYS_TEXT", "IDS_OPT_ALL_CALLS"},
};

constexpr Option kOrganization[] = {
    {"IDS_ADDRESS", &keys::OrganizationAddress, OptionKind::Text},
    {"IDS_TOWN", &keys::OrganizationOras, OptionKind::Text},
    {"IDS_PHONE_TEXT", &keys::OrganizationTel, OptionKind::Text},
    {"IDS_FAX", &keys::OrganizationFax, OptionKind::Text},
    {"IDS_EMAIL", &keys::OrganizationEmail, OptionKind::Text},
    {"IDS_WEB", &keys::OrganizationWeb, OptionKind::Text},
    {"IDS_FISCAL_CODE", &keys::OrganizationCF, OptionKind::Text},
    {"IDS_BANK_ACCOUNT", &keys::OrganizationCont, OptionKind::Text},
    {"IDS_BANK", &keys::OrganizationBanca, OptionKind::Text},
    {"IDS_ORG_PREFIX", &keys::OrganizationPrefix, OptionKind::Text},
    heading("IDS_OPT_BILLS"),
    {"IDS_OPT_VAT", &keys::OrganizationTVA, OptionKind::Number, "IDS_PERCENT"},
    {"IDS_OPT_SURCHARGE", &keys::OrganizationTAXE, OptionKind::Percent, "IDS_PERCENT", nullptr, "IDS_HINT_SURCHARGE"},
    {"IDS_OPT_DECIMALS", &keys::DisplayDecimals, OptionKind::Number},
    {"IDS_OPT_DECIMALS_VALUE", &keys::DisplayDecimalsValue, OptionKind::Number},
    {"IDS_OPT_DECIMALS_DEFAULT", &keys::DisplayDecimalsDefault, OptionKind::Number},
    {"IDS_OPT_BILL_TEMPLATE", &keys::TemplateHotel, OptionKind::Switch},
    {"IDS_OPT_RESELLER", &keys::ResellerName, OptionKind::Text},
};

constexpr const char* kDatabaseFolderKey = "IDS_OPT_DATABASE_FOLDER";

constexpr Option kPlace[] = {
    {"IDS_OPT_MONITOR_FOLDER", &keys::PathMonitor, OptionKind::Folder, nullptr, nullptr, "IDS_HINT_MONITOR_FOLDER"},
    {kDatabaseFolderKey, &keys::PathDatabase, OptionKind::Folder, nullptr, nullptr, "IDS_HINT_DATABASE_FOLDER"},
    {"IDS_OPT_PROGRAM_FOLDER", &keys::Path, OptionKind::Folder},
    {"IDS_OPT_COUNTRY_CODE", &keys::CountryCode, OptionKind::Digits, nullptr, nullptr, "IDS_HINT_COUNTRY_CODE"},
    {"IDS_OPT_AREA_CODE", &keys::AreaCode, OptionKind::Digits, nullptr, nullptr, "IDS_HINT_AREA_CODE"},
    heading("IDS_OPT_OUTPUT"),
    {"IDS_OPT_COM_OUT", &keys::COMOut, OptionKind::Text, nullptr, nullptr, "IDS_HINT_COM_OUT"},
    {"IDS_OPT_OUT_FILE", &keys::OutFile, OptionKind::Text},
    {"IDS_OPT_LIVE_SOCKET", &keys::LiveSocket, OptionKind::Text, nullptr, nullptr, "IDS_HINT_LIVE_SOCKET"},
};

constexpr Option kInterface[] = {
    {"IDS_OPT_LANGUAGE", &keys::Lang, OptionKind::Language},
    {"IDS_OPT_TOOLBAR", &keys::iface_Toolbar, OptionKind::Switch},
    {"IDS_OPT_STATUSBAR", &keys::iface_Statusbar, OptionKind::Switch},
    {"IDS_OPT_GRID", &keys::iface_Grid, OptionKind::Switch},
    {"IDS_OPT_HOVER", &keys::iface_Hover, OptionKind::Switch},
    {"IDS_OPT_AUTOSELECT", &keys::iface_Autoselect, OptionKind::Switch},
    heading("IDS_CONTACTS"),
    {"IDS_OPT_SEARCH_RESULTS", &keys::iface_searchmaxresults, OptionKind::Number},
    {"IDS_OPT_SEARCH_PREFIX", &keys::PhonebookSearchMethod, OptionKind::Switch},
    heading("IDS_OPT_ADDRESSES"),
    {"IDS_OPT_MANUAL", &keys::Manual, OptionKind::Text},
    {"IDS_OPT_URL_SUPPORT", &keys::UrlSupport, OptionKind::Text},
    {"IDS_OPT_URL_UPDATES", &keys::UrlCheckUpdates, OptionKind::Text},
    {"IDS_OPT_URL_CURRENCY", &keys::UrlCurrency, OptionKind::Text},
};

// A field is named after its setting.
QString nameOf(const Option& option) {
  return toQt(option.setting->key);
}

// An option's field: its editor, and how its value is written when it was changed.
struct Field {
  QWidget* editor = nullptr;
  std::function<bool()> changed;
  std::function<void()> write;
  // A sentence about a value that cannot be used; empty function: every value can.
  std::function<QString()> check;
};

// A field whose value `read` gives; what it gave at first, or when it was last written, counts as unchanged.
template <typename Value, typename Write>
Field fieldOf(QWidget* editor, std::function<Value()> read, Write write) {
  auto stored = std::make_shared<Value>(read());
  Field field;
  field.editor = editor;
  field.changed = [read, stored] { return read() != *stored; };
  field.write = [read, stored, write] {
    const Value value = read();
    if (value == *stored) return;
    write(value);
    *stored = value;
  };
  return field;
}

// The settings and words that fields are made from.
struct Source {
  server::CServerApp& app;
  const Texts& texts;

  [[nodiscard]] foundation::ConfigManager& config() const { return app.config(); }
  [[nodiscard]] QString text(const char* key) const { return key != nullptr ? texts(key) : QString(); }
  [[nodiscard]] std::int32_t number(const Option& option) const {
    return config().ReadConfigInt(foundation::NumberKey(*option.setting));
  }
  // A text that was never set is an empty field, whatever its reader takes instead.
  [[nodiscard]] std::string string(const Option& option) const {
    return config().ReadConfigString(foundation::TextKey(*option.setting), "");
  }
  [[nodiscard]] auto numberWriter(const Option& option) const {
    return [&config = config(), key = foundation::NumberKey(*option.setting)](int value) {
      config.WriteConfigInt(value, key);
    };
  }
  [[nodiscard]] auto stringWriter(const Option& option) const {
    return [&config = config(), key = foundation::TextKey(*option.setting)](const QString& value) {
      config.WriteConfigString(fromQt(value), key);
    };
  }
};

QString unitOf(const Option& option, const Source& source) {
  return option.unitKey != nullptr ? ' ' + source.text(option.unitKey) : QString();
}

Field numberField(const Option& option, const Source& source) {
  auto* box = new QSpinBox;
  box->setRange(option.least.value_or(option.setting->least), option.setting->most);
  box->setSuffix(unitOf(option, source));
  if (option.lowestKey != nullptr) box->setSpecialValueText(source.text(option.lowestKey));
  box->setValue(source.number(option));
  return fieldOf<int>(
      box, [box] { return box->value(); }, source.numberWriter(option));
}

// Kept as decimal text, since it goes into conditions as it is.
Field percentField(const Option& option, const Source& source) {
  auto* box = new QDoubleSpinBox;
  box->setDecimals(2);
  constexpr double kMost = 1000;
  box->setRange(0, kMost);
  box->setSuffix(unitOf(option, source));
  box->setValue(toQt(source.string(option)).replace(',', '.').toDouble());
  return fieldOf<double>(
      box, [box] { return box->value(); },
      [write = source.stringWriter(option)](double value) { write(QString::number(value)); });
}

Field switchField(const Option& option, const Source& source) {
  auto* box = new QCheckBox(source.text(option.captionKey));
  box->setChecked(source.number(option) != 0);
  return fieldOf<int>(
      box, [box] { return box->isChecked() ? 1 : 0; }, source.numberWriter(option));
}

Field choiceField(const Option& option, const Source& source) {
  auto* box = new QComboBox;
  box->addItems({source.text("IDS_OPT_DEPARTMENT_EXTENSION"), source.text("IDS_OPT_DEPARTMENT_ACCOUNT")});
  box->setCurrentIndex(source.number(option) != 0 ? 1 : 0);
  return fieldOf<int>(
      box, [box] { return box->currentIndex(); }, source.numberWriter(option));
}

Field languageField(const Source& source) {
  auto* box = new QComboBox;
  const auto& language = source.texts.language();
  for (const auto& each : language.Languages()) box->addItem(toQt(each.name), toQt(each.code));
  box->setCurrentIndex(box->findData(toQt(language.NativeLanguage())));
  return fieldOf<QString>(
      box, [box] { return box->currentData().toString(); },
      [&app = source.app](const QString& code) { app.changeLanguage(fromQt(code)); });
}

Field textField(const Option& option, const Source& source) {
  auto* edit = new QLineEdit(toQt(source.string(option)));
  edit->setCursorPosition(0);
  if (option.kind == OptionKind::Digits) {
    edit->setMaxLength(kLongestCode);
    edit->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), edit));
    edit->setMaximumWidth(edit->fontMetrics().averageCharWidth() * 20);
  }
  return fieldOf<QString>(
      edit, [edit] { return edit->text().trimmed(); }, source.stringWriter(option));
}

Field folderField(const Option& option, const Source& source) {
  auto* edit = new QLineEdit(toQt(source.string(option)));
  edit->setCursorPosition(0);
  edit->setObjectName(nameOf(option));
  // File names are appended to the folder as it is: it ends with its separator.
  Field field = fieldOf<QString>(
      withBrowseButton(edit, source.texts),
      [edit] {
        const QString folder = edit->text().trimmed();
        return toQt(server::folderSetting(fromQt(folder)));
      },
      source.stringWriter(option));
  const bool ofDatabase = option.captionKey == kDatabaseFolderKey;
  field.check = [edit, ofDatabase, changed = field.changed, &texts = source.texts]() -> QString {
    const QString folder = edit->text().trimmed();
    if (!changed() || (folder.isEmpty() && !ofDatabase)) return {};
    if (ofDatabase && jet::isServerAddress(fromQt(folder))) return faultOfAddress(fromQt(folder), texts);
    const auto place = base::systemPath(fromQt(folder));
    std::error_code fault;
    if (!std::filesystem::is_directory(place, fault)) return texts.format("IDS_SETTINGS_NO_FOLDER", fromQt(folder));
    if (ofDatabase && !schema::DatabasePlace::ofFolder(place).exists(schema::Which::Main)) {
      return texts.format("IDS_FIRST_NO_DATABASE", fromQt(folder));
    }
    return {};
  };
  return field;
}

Field workingHoursField(const Source& source) {
  auto* edit = new QLineEdit(toQt(analysis::workingHours(source.config()).text()));
  edit->setCursorPosition(0);
  Field field = fieldOf<QString>(
      edit, [edit] { return edit->text().trimmed(); },
      [&config = source.config()](const QString& text) { analysis::storeWorkingHours(config, fromQt(text)); });
  field.check = [edit, &texts = source.texts]() -> QString {
    try {
      const analysis::WorkingHours hours(fromQt(edit->text()));
      return {};
    } catch (const std::invalid_argument&) {
      return texts.format("IDS_WRONG_WORKING_HOURS", fromQt(edit->text()));
    }
  };
  return field;
}

Field makeField(const Option& option, const Source& source) {
  switch (option.kind) {
    case OptionKind::Number:
      return numberField(option, source);
    case OptionKind::Percent:
      return percentField(option, source);
    case OptionKind::Switch:
      return switchField(option, source);
    case OptionKind::DepartmentSource:
      return choiceField(option, source);
    case OptionKind::Language:
      return languageField(source);
    case OptionKind::Folder:
      return folderField(option, source);
    case OptionKind::WorkingHours:
      return workingHoursField(source);
    default:
      return textField(option, source);
  }
}

void addHeading(QFormLayout& form, const QString& text) {
  auto* label = new QLabel(text);
  QFont bold = label->font();
  bold.setBold(true);
  label->setFont(bold);
  label->setContentsMargins(0, kHeadingSpace, 0, 0);
  form.addRow(label);
}

// The field and, close below it, what is to be known of it.
QLayout* withHint(QWidget* editor, const QString& text) {
  auto* layout = new QVBoxLayout;
  layout->setSpacing(kHintSpace);
  // A field without a parent yet counts as a window to its layout item: its policy is asked instead.
  const bool expands = (editor->sizePolicy().expandingDirections() & Qt::Horizontal) != 0;
  const bool grows = editor->layout() != nullptr || (expands && editor->maximumWidth() == QWIDGETSIZE_MAX);
  layout->addWidget(editor, 0, grows ? Qt::Alignment() : Qt::AlignLeft);
  layout->addWidget(makeSentence(text));
  return layout;
}

void addField(QFormLayout& form, const Option& option, const Source& source, const Field& field) {
  // The line of a folder has its button beside it.
  QWidget* focused = field.editor->focusProxy() != nullptr ? field.editor->focusProxy() : field.editor;
  focused->setObjectName(nameOf(option));
  focused->setAccessibleName(source.text(option.captionKey));
  auto* label = option.kind == OptionKind::Switch ? nullptr : new QLabel(source.text(option.captionKey));
  if (label != nullptr) label->setBuddy(focused);
  if (option.hintKey == nullptr) return form.addRow(label, field.editor);
  const QString hint = source.text(option.hintKey);
  focused->setAccessibleDescription(hint);
  form.addRow(label, withHint(field.editor, hint));
}

SettingsPage optionPage(const QString& caption, std::span<const Option> options, const Source& source) {
  auto* form = new QWidget;
  auto* whole = new QVBoxLayout(form);
  auto* layout = new QFormLayout;
  whole->addLayout(layout);
  whole->addStretch();
  layout->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  auto fields = std::make_shared<std::vector<Field>>();
  for (const Option& option : options) {
    if (option.kind == OptionKind::Heading) {
      addHeading(*layout, source.text(option.captionKey));
      continue;
    }
    fields->push_back(makeField(option, source));
    addField(*layout, option, source, fields->back());
  }
  SettingsPage page;
  page.caption = caption;
  page.widget = form;
  page.save = [fields] {
    for (const Field& field : *fields) field.write();
  };
  page.changed = [fields] {
    return std::any_of(fields->begin(), fields->end(), [](const Field& field) { return field.changed(); });
  };
  page.check = [fields] {
    QString problem;
    for (const Field& field : *fields) {
      if (problem.isEmpty() && field.check) problem = field.check();
    }
    return problem;
  };
  return page;
}

}  // namespace

SettingsPage callOptionsPage(server::CServerApp& app, const Texts& texts) {
  SettingsPage page = optionPage(texts("IDS_PAGE_CALL_OPTIONS"), kCallOptions, {app, texts});
  auto* deletes = page.widget->findChild<QCheckBox*>(toQt(keys::Log_DeleteEnabled.key));
  auto* days = page.widget->findChild<QSpinBox*>(toQt(keys::Log_DeleteAfter.key));
  days->setEnabled(deletes->isChecked());
  QObject::connect(deletes, &QCheckBox::toggled, days, &QWidget::setEnabled);
  return page;
}

SettingsPage organizationPage(server::CServerApp& app, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_ORGANIZATION"), kOrganization, {app, texts});
}

SettingsPage placePage(server::CServerApp& app, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_PLACE"), kPlace, {app, texts});
}

SettingsPage interfacePage(server::CServerApp& app, const Texts& texts) {
  return optionPage(texts("IDS_PAGE_INTERFACE"), kInterface, {app, texts});
}

}  // namespace ui
