#include "ui/dialogs/filter_dialog.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>
#include <limits>

#include "base/text.h"
#include "platform/progress.h"
#include "ui/dialogs.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/party_choices.h"
#include "ui/flow_layout.h"

namespace ui {

namespace {

using F = filter::FilterSettings;

bool acts(std::int32_t flag, bool exactlyOne) {
  return exactlyOne ? flag == 1 : flag != 0;
}

}  // namespace

CCallsFilterDlg::CCallsFilterDlg(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : FormDialog(texts, "IDS_CALLS_FILTER", "callsFilter", parent), document_(document) {
  onFilter_ = makeCheckBox("IDS_FILTER_ON", "onFilter");
  hidden_ = makeCheckBox("IDS_FILTER_EXCLUDE_HIDDEN", "hidden");
  onIncoming_ = makeCheckBox("IDS_FILTER_EXCLUDE_INCOMING", "onIncoming");
  onOutgoing_ = makeCheckBox("IDS_FILTER_EXCLUDE_OUTGOING", "onOutgoing");
  auto* exclusions = new FlowLayout;
  for (QCheckBox* box : {hidden_, onIncoming_, onOutgoing_}) exclusions->addWidget(box);

  auto* parties = new QGroupBox(texts("IDS_TREE_PARTIES"));
  buildParties(*new QGridLayout(parties));
  auto* destinations = new QGroupBox(texts("IDS_TREE_DESTINATIONS"));
  buildDestinations(*new QGridLayout(destinations));
  auto* columns = new QHBoxLayout;
  columns->addWidget(parties);
  columns->addWidget(destinations);

  body()->addWidget(onFilter_);
  body()->addLayout(exclusions);
  body()->addLayout(columns);
  body()->addWidget(buildTime());
  connect(addButton("IDS_ACTION_CLEAR_FILTER", "clear"), &QPushButton::clicked, this, [this] { clearFields(); });

  auto& config = document.app().config();
  const Settings stored = document.callFilter().settings();
  show(stored, filter::readDisplayNames(config, stored), filter::readDialogPeriod(config));
}

void CCallsFilterDlg::Row::show(const QString& value, const QString& shown) const {
  if (list != nullptr) {
    list->setValue(value, shown);
  } else {
    line->setText(value);
  }
}

CCallsFilterDlg::Row& CCallsFilterDlg::addRow(QGridLayout& grid, const char* key, const char* name, Row row,
                                              ChoiceBox::Source source) {
  const int at = grid.rowCount();
  if (source) {
    row.list = new ChoiceBox(std::move(source), texts());
  } else {
    row.line = new QLineEdit;
  }
  QWidget* value = row.list != nullptr ? static_cast<QWidget*>(row.list) : row.line;
  value->setObjectName(name);
  value->setAccessibleName(texts()(key));
  if (row.flag != nullptr) {
    row.on = makeCheckBox(key, (std::string("on_") + name).c_str());
    grid.addWidget(row.on, at, 0);
    const auto switchOn = [this, on = row.on] {
      on->setChecked(true);
      onFilter_->setChecked(true);
    };
    if (row.list != nullptr) connect(row.list, &ChoiceBox::edited, row.on, switchOn);
    if (row.line != nullptr) connect(row.line, &QLineEdit::textEdited, row.on, switchOn);
  } else {
    auto* label = new QLabel(texts()(key));
    label->setBuddy(value);
    grid.addWidget(label, at, 0);
    const auto switchOn = [this] { onFilter_->setChecked(true); };
    if (row.list != nullptr) connect(row.list, &ChoiceBox::edited, this, switchOn);
    if (row.line != nullptr) connect(row.line, &QLineEdit::textEdited, this, switchOn);
  }
  grid.addWidget(value, at, 1);
  grid.setColumnStretch(1, 1);
  return rows_.emplace_back(row);
}

// Values that a statement over all calls gives.
std::vector<ChoiceBox::Choice> CCallsFilterDlg::read(const std::function<std::vector<std::string>()>& values) {
  const platform::Progress progress(document_.app().surroundings().person, fromQt(texts()("IDS_CALLS_FILTER")),
                                    fromQt(texts()("IDS_READING_CALLS")));
  return plainChoices(values());
}

void CCallsFilterDlg::buildParties(QGridLayout& grid) {
  const exchange::PartyDefinitions& parties = document_.smdr().parties();
  addRow(grid, "IDS_EXTENSION", "extension", {.flag = &F::onExtension, .text = &F::extension, .exactlyOne = true},
         [&parties] { return extensionChoices(parties); })
      .list->loadList();
  addRow(grid, "IDS_ACCOUNT", "account", {.flag = &F::onAccount, .text = &F::account, .exactlyOne = true}, [&parties] {
    return accountChoices(parties);
  }).list->loadList();
  addRow(grid, "IDS_DEPARTMENT", "department", {.flag = &F::onDepartment, .text = &F::department, .exactlyOne = true},
         [&parties] { return departmentChoices(parties); })
      .list->loadList();
  addRow(grid, "IDS_CLIENT", "client", {.flag = &F::onClient, .text = &F::client},
         [this] { return read([this] { return document_.callFilter().offeredClients(document_.database()); }); });
  addRow(grid, "IDS_FOLDER", "folder", {.flag = &F::onFolder, .text = &F::folder}, [this] {
    const std::string client = fromQt(row(&F::client).value());
    return read([&] { return document_.callFilter().offeredFolders(document_.database(), client); });
  });
  // The folders offered are the chosen client's.
  connect(row(&F::client).list, &QComboBox::editTextChanged, this, [this] { row(&F::folder).list->forgetList(); });
  const Row& trunk = addRow(grid, "IDS_TRUNK", "trunk", {.flag = &F::onTrunk, .exactlyOne = true},
                            [&parties] { return trunkChoices(parties); });
  trunk_ = trunk.list;
  onTrunk_ = trunk.on;
  trunk_->loadList();
  rows_.pop_back();  // its value is a number
}

void CCallsFilterDlg::buildDestinations(QGridLayout& grid) {
  const exchange::PartyDefinitions& parties = document_.smdr().parties();
  const Row& name = addRow(grid, "IDS_FILTER_NAME", "name", {.flag = &F::onName, .text = &F::name, .exactlyOne = true});
  name.line->setPlaceholderText(texts()("IDS_FILTER_NAME_HINT"));
  name.line->setToolTip(texts()("IDS_FILTER_NAME_HINT"));
  addRow(grid, "IDS_FILTER_AREA", "area", {.flag = &F::onArea, .text = &F::area}, [this] {
    auto choices = read([this] { return document_.callFilter().offeredAreas(document_.database()); });
    choices.insert(choices.begin(), {toQt(filter::kLocalArea), ""});
    return choices;
  });
  addRow(grid, "IDS_FILTER_NUMBER", "numberPrefix", {.text = &F::numberPrefix});
  addRow(grid, "IDS_FILTER_NUMBER_EXACT", "number", {.text = &F::number});
  addRow(grid, "IDS_COUNTRY", "country", {.text = &F::country}, [&parties] {
    return countryChoices(parties);
  }).list->loadList();
  addRow(grid, "IDS_PROVIDER", "provider", {.text = &F::provider}, [&parties] {
    return providerChoices(parties);
  }).list->loadList();
}

QWidget* CCallsFilterDlg::buildTime() {
  auto* box = new QGroupBox(texts()("IDS_TREE_TIME"));
  auto* grid = new QGridLayout(box);
  onPeriod_ = makeCheckBox("IDS_FILTER_PERIOD", "onPeriod");
  period_ = named(new PeriodEdit(PeriodEdit::Times::Shown, texts()), "period");
  auto* thisMonth = named(new QPushButton(texts()("IDS_ACTION_THIS_MONTH")), "thisMonth");
  auto* previousMonth = named(new QPushButton(texts()("IDS_ACTION_PREVIOUS_MONTH")), "previousMonth");
  auto* months = new FlowLayout;
  months->addWidget(thisMonth);
  months->addWidget(previousMonth);
  onMinDuration_ = makeCheckBox("IDS_FILTER_DURATION", "onMinDuration");
  minDuration_ = named(new QSpinBox, "minDuration");
  minDuration_->setRange(0, std::numeric_limits<std::int32_t>::max());
  minDuration_->setSuffix(" " + texts()("IDS_FILTER_SECONDS"));
  minDuration_->setAccessibleName(texts()("IDS_FILTER_DURATION"));
  grid->addWidget(onPeriod_, 0, 0);
  grid->addWidget(period_, 0, 1);
  grid->addLayout(months, 1, 1);
  grid->addWidget(onMinDuration_, 2, 0);
  grid->addWidget(minDuration_, 2, 1, Qt::AlignLeft);
  grid->setColumnStretch(1, 1);
  connect(thisMonth, &QPushButton::clicked, this, [this] { setMonth(filter::setThisMonth); });
  connect(previousMonth, &QPushButton::clicked, this, [this] { setMonth(filter::setPreviousMonth); });
  const auto switchOn = [this](QCheckBox* box) {
    box->setChecked(true);
    onFilter_->setChecked(true);
  };
  connect(period_, &PeriodEdit::edited, this, [this, switchOn] { switchOn(onPeriod_); });
  connect(minDuration_, &QSpinBox::valueChanged, this, [this, switchOn] { switchOn(onMinDuration_); });
  return box;
}

CCallsFilterDlg::Row& CCallsFilterDlg::row(std::string Settings::*text) {
  return *std::find_if(rows_.begin(), rows_.end(), [text](const Row& row) { return row.text == text; });
}

void CCallsFilterDlg::show(const Settings& settings, const filter::DisplayNames& names,
                           const filter::DialogPeriod& period) {
  hidden_->setChecked(settings.hidden != 0);
  onIncoming_->setChecked(settings.onIncoming != 0);
  onOutgoing_->setChecked(settings.onOutgoing != 0);
  const auto shownOf = [&](const Row& row) {
    if (row.text == &F::extension) return names.extension;
    if (row.text == &F::account && !settings.accountName.empty()) return settings.accountName;
    if (row.text == &F::area && settings.area.empty() && settings.onArea != 0) return std::string(filter::kLocalArea);
    return settings.*row.text;
  };
  for (Row& row : rows_) {
    row.show(toQt(settings.*row.text), toQt(shownOf(row)));
    if (row.on != nullptr) row.on->setChecked(acts(settings.*row.flag, row.exactlyOne));
  }
  const QString trunk = settings.trunk != 0 || settings.onTrunk == 1 ? QString::number(settings.trunk) : QString();
  trunk_->setValue(trunk, trunk);
  trunk_->setValue(trunk, trunk_->shownValue());
  onTrunk_->setChecked(settings.onTrunk == 1);
  period_->setPeriod(period.start, period.end);
  onPeriod_->setChecked(settings.onPeriod != 0);
  minDuration_->setValue(settings.minDuration);
  onMinDuration_->setChecked(settings.onMinDuration != 0);
  onFilter_->setChecked(settings.onFilter == 1);  // last: the values above switch it on
}

filter::FilterSettings CCallsFilterDlg::gather() {
  Settings settings = document_.callFilter().settings();
  const auto flag = [](const QCheckBox* box) { return box->isChecked() ? 1 : 0; };
  settings.onFilter = flag(onFilter_);
  settings.hidden = flag(hidden_);
  settings.onIncoming = flag(onIncoming_);
  settings.onOutgoing = flag(onOutgoing_);
  for (const Row& row : rows_) {
    settings.*row.text = fromQt(row.value());
    if (row.on != nullptr) settings.*row.flag = flag(row.on);
  }
  settings.accountName = fromQt(row(&F::account).list->shownValue());
  // A typed word for the calls without an area.
  if (base::equalFoldAscii(settings.area, filter::kLocalArea)) settings.area.clear();
  settings.onTrunk = flag(onTrunk_);
  settings.trunk = base::leadingInteger(fromQt(trunk_->value()));
  settings.onPeriod = flag(onPeriod_);
  settings.intervalStart = period_->start().format(filter::kPeriodFormat);
  settings.intervalEnd = period_->end().format(filter::kPeriodFormat);
  settings.onMinDuration = flag(onMinDuration_);
  settings.minDuration = minDuration_->value();
  return settings;
}

void CCallsFilterDlg::clearFields() {
  for (Row& row : rows_) {
    if (row.on != nullptr) {
      row.on->setChecked(false);
    } else {
      row.show("", "");
    }
  }
  onTrunk_->setChecked(false);
  onPeriod_->setChecked(false);
}

void CCallsFilterDlg::setMonth(void (*setMonth)(Settings&, base::DateTime)) {
  Settings month;
  setMonth(month, document_.app().surroundings().clock.now());
  onFilter_->setChecked(true);
  onPeriod_->setChecked(true);
  period_->setPeriod(filter::parsePeriod(month.intervalStart, ""), filter::parsePeriod(month.intervalEnd, ""));
}

void CCallsFilterDlg::accept() {
  if (onPeriod_->isChecked() && !period_->inOrder()) return warn(this, texts(), texts()("IDS_PERIOD_ORDER"));
  const Settings settings = gather();
  // A value that would lift the user's restriction, or break the condition, is refused here and not by every list.
  if (!attempt(this, texts(), [&] { (void)document_.callFilter().conditionOf(settings); })) return;
  const bool written =
      document_.callFilter().write(settings) &&
      filter::writeDisplayNames(document_.app().config(), {fromQt(row(&F::extension).list->shownValue()),
                                                           settings.client, settings.folder, settings.department});
  if (!written) {
    return warn(this, texts(),
                texts().format("IDS_CANTWRITEFILE", document_.app().config().machineStore().file().string()));
  }
  QDialog::accept();
}

bool editCallFilter(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  return CCallsFilterDlg(document, texts, parent).exec() == QDialog::Accepted;
}

}  // namespace ui
