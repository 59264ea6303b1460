#include "ui/dialogs/currencies_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <algorithm>
#include <array>

#include "base/printf.h"
#include "base/text.h"
#include "foundation/definition_change.h"
#include "ui/dialogs.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/record_list.h"

namespace ui {

namespace {

using tariff::CURRENCYDESC;

constexpr std::array<const char*, 4> kColumns = {"IDS_CURRENCY", "IDS_RATIO", "IDS_DATE_MODIFY", "IDS_DEFAULT"};
constexpr int kMostNameLetters = 7;
constexpr int kRateDecimals = 6;
constexpr double kLargestRate = 1e9;

}  // namespace

CurrenciesDialog::CurrenciesDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : FormDialog(texts, "IDS_ACTION_CURRENCIES", "currencies", parent),
      document_(document),
      entries_(document.currencies().entries),
      stored_(entries_),
      allowed_(mayChangeAdministration(document)) {
  QStringList captions;
  for (const char* key : kColumns) captions << texts(key);
  list_ = makeRecordList(captions, texts("IDS_ACTION_CURRENCIES").remove("..."), "list");
  list_->horizontalHeaderItem(1)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);  // as its numbers
  body()->addWidget(list_);
  buildFields();
  const std::string address = document.app().config().ReadConfigString(foundation::keys::UrlCurrency);
  if (!address.empty()) {
    connect(addButton("IDS_CURRENCY_RATES", "rates"), &QPushButton::clicked, this, [this] { openRates(); });
  }
  connect(list_, &QTableWidget::currentCellChanged, this, [this] { showSelected(); });
  fillList();
  list_->setCurrentCell(entries_.empty() ? -1 : 0, 0);
  showSelected();
  if (!allowed_) allowOnlyLooking();
  resize(sizeHint().expandedTo({fontMetrics().averageCharWidth() * 75, fontMetrics().lineSpacing() * 24}));
}

void CurrenciesDialog::buildFields() {
  auto* buttons = new QHBoxLayout;
  auto* addNew = named(new QPushButton(texts()("IDS_ADD")), "add");
  remove_ = named(new QPushButton(texts()("IDS_DELETE")), "delete");
  makeDefault_ = named(new QPushButton(texts()("IDS_CURRENCY_MAKE_DEFAULT")), "makeDefault");
  addNew->setEnabled(allowed_);
  for (QPushButton* button : {addNew, remove_, makeDefault_}) buttons->addWidget(button);
  buttons->addStretch();
  body()->addLayout(buttons);
  connect(addNew, &QPushButton::clicked, this, [this] { add(); });
  connect(remove_, &QPushButton::clicked, this, [this] { removeSelected(); });
  connect(makeDefault_, &QPushButton::clicked, this, [this] { makeDefault(); });

  fields_ = new QWidget;
  auto* form = new QFormLayout(fields_);
  form->setContentsMargins(0, 0, 0, 0);
  name_ = named(new QLineEdit, "name");
  name_->setMaxLength(kMostNameLetters);
  rateLabel_ = named(new QLabel, "rateLabel");
  rate_ = named(new QDoubleSpinBox, "rate");
  rate_->setDecimals(kRateDecimals);
  rate_->setRange(0, kLargestRate);
  rate_->setAccessibleName(texts()("IDS_RATIO"));
  rateUnit_ = new QLabel;
  auto* rateLine = new QHBoxLayout;
  rateLine->addWidget(rateLabel_);
  rateLine->addWidget(rate_);
  rateLine->addWidget(rateUnit_);
  rateLine->addStretch();
  reverse_ = makeCheckBox("IDS_CURRENCY_REVERSE", "reverse");
  form->addRow(texts()("IDS_CURRENCY"), name_);
  auto* ratioLabel = new QLabel(texts()("IDS_RATIO"));
  ratioLabel->setBuddy(rate_);
  form->addRow(ratioLabel, rateLine);
  form->addRow(QString(), reverse_);
  body()->addWidget(fields_);
  hint_ = named(new QLabel, "hint");
  hint_->setWordWrap(true);
  hint_->hide();
  body()->addWidget(hint_);

  connect(name_, &QLineEdit::textEdited, this, [this] {
    if (CURRENCYDESC* entry = selected()) entry->name = fromQt(name_->text().trimmed());
    edited_ = true;
    fillRow(list_->currentRow());
    updateRateLabels();
  });
  connect(rate_, &QDoubleSpinBox::valueChanged, this, [this] {
    CURRENCYDESC* entry = selected();
    if (showing_ || entry == nullptr) return;
    entry->ratio = rate_->value();
    edited_ = true;
    entry->dateModify = document_.app().surroundings().clock.now();
    fillRow(list_->currentRow());
  });
  connect(reverse_, &QCheckBox::toggled, this, [this](bool reverse) {
    CURRENCYDESC* entry = selected();
    if (showing_ || entry == nullptr) return;
    entry->reverse = reverse;
    edited_ = true;
    entry->dateModify = document_.app().surroundings().clock.now();
    fillRow(list_->currentRow());
    updateRateLabels();
  });
}

void CurrenciesDialog::fillRow(int row) {
  if (row < 0) return;
  const CURRENCYDESC& entry = entries_[static_cast<std::size_t>(row)];
  const QString cells[] = {toQt(entry.name), toQt(base::format("%.4f", entry.ratio)),
                           entry.dateModify ? toQt(entry.dateModify->format("%d/%m/%Y")) : QString(),
                           entry.isDefault ? texts()("IDS_YES") : QString()};
  for (int column = 0; column < list_->columnCount(); ++column) {
    auto* item = new QTableWidgetItem(cells[column]);
    if (column == 1) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    list_->setItem(row, column, item);
  }
}

void CurrenciesDialog::fillList() {
  list_->setRowCount(static_cast<int>(entries_.size()));
  for (int row = 0; row < list_->rowCount(); ++row) fillRow(row);
}

CURRENCYDESC* CurrenciesDialog::selected() {
  const int row = list_->currentRow();
  return row < 0 || row >= static_cast<int>(entries_.size()) ? nullptr : &entries_[static_cast<std::size_t>(row)];
}

const CURRENCYDESC* CurrenciesDialog::defaultEntry() const {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [](const auto& entry) { return entry.isDefault; });
  return found == entries_.end() ? nullptr : &*found;
}

void CurrenciesDialog::showSelected() {
  const CURRENCYDESC* entry = selected();
  showing_ = true;
  fields_->setEnabled(entry != nullptr && allowed_);
  name_->setText(entry != nullptr ? toQt(entry->name) : QString());
  rate_->setValue(entry != nullptr ? entry->ratio : 0);
  reverse_->setChecked(entry != nullptr && entry->reverse);
  showing_ = false;
  const bool isDefault = entry != nullptr && entry->isDefault;
  // The default currency is worth itself, and amounts are kept in it.
  rate_->setEnabled(!isDefault);
  reverse_->setEnabled(!isDefault);
  remove_->setEnabled(allowed_ && entry != nullptr && !isDefault);
  remove_->setToolTip(isDefault ? texts()("IDS_CURRENCY_KEEP_DEFAULT") : QString());
  makeDefault_->setEnabled(allowed_ && entry != nullptr && !isDefault);
  updateRateLabels();
}

void CurrenciesDialog::updateRateLabels() {
  const CURRENCYDESC* entry = selected();
  const CURRENCYDESC* main = defaultEntry();
  std::string left = entry != nullptr ? entry->name : std::string();
  std::string right = main != nullptr ? main->name : std::string();
  if (entry != nullptr && entry->reverse) std::swap(left, right);
  rateLabel_->setText(toQt(base::format("1 %s =", left)));
  rateUnit_->setText(toQt(right));
}

void CurrenciesDialog::add() {
  entries_.push_back({.name = {}, .dateModify = {}});
  edited_ = true;
  fillList();
  list_->setCurrentCell(list_->rowCount() - 1, 0);
  name_->setFocus();
}

void CurrenciesDialog::removeSelected() {
  const int row = list_->currentRow();
  if (selected() == nullptr) return;
  entries_.erase(entries_.begin() + row);
  edited_ = true;
  fillList();
  showSelected();
}

void CurrenciesDialog::makeDefault() {
  CURRENCYDESC* chosen = selected();
  if (chosen == nullptr) return;
  for (CURRENCYDESC& entry : entries_) entry.isDefault = &entry == chosen;
  edited_ = true;
  chosen->ratio = 1;
  chosen->reverse = false;
  chosen->dateModify = document_.app().surroundings().clock.now();
  fillList();
  showSelected();
  // Rates stay as numbers, but against another currency now.
  hint_->setText(texts().format("IDS_CURRENCY_NEW_DEFAULT", chosen->name));
  hint_->setVisible(entries_.size() > 1);
}

QString CurrenciesDialog::problem() const {
  for (const CURRENCYDESC& entry : entries_) {
    if (entry.name.empty()) return texts()("IDS_CURRENCY_NAMELESS");
    const auto same = std::count_if(entries_.begin(), entries_.end(),
                                    [&](const auto& e) { return base::equalFoldAscii(e.name, entry.name); });
    if (same > 1) return texts().format("IDS_CURRENCY_TWICE", entry.name);
  }
  return {};
}

void CurrenciesDialog::accept() {
  if (const QString text = problem(); !text.isEmpty()) return warn(this, texts(), text);
  const auto rateless =
      std::find_if(entries_.begin(), entries_.end(), [](const auto& entry) { return entry.ratio == 0; });
  if (rateless != entries_.end() &&
      !confirmLoss(this, texts(), texts().format("IDS_CURRENCY_NO_RATE", rateless->name))) {
    return;
  }
  Saving saving = save();
  while (saving == Saving::ChangedByOther) {
    // Asked between two changes: no one waits for the answer.
    if (!confirmLoss(this, texts(), texts()("IDS_CURRENCY_CHANGED"))) return;
    stored_ = document_.currencies().entries;
    saving = save();
  }
  if (saving == Saving::Done) QDialog::accept();
}

CurrenciesDialog::Saving CurrenciesDialog::save() {
  tariff::Currencies& currencies = document_.currencies();
  std::vector<CURRENCYDESC> before = currencies.entries;
  bool changedByOther = false;
  const bool saved = attempt(this, texts(), [&] {
    foundation::DefinitionChange change(currencies, document_.database());
    before = currencies.entries;
    changedByOther = before != stored_;
    if (changedByOther) return;
    currencies.entries = entries_;
    for (CURRENCYDESC& entry : currencies.entries) {
      if (entry.id == 0) entry.id = currencies.NextId();
    }
    change.save();
  });
  if (saved && !changedByOther) return Saving::Done;
  currencies.entries = before;
  return saved ? Saving::ChangedByOther : Saving::Failed;
}

void CurrenciesDialog::reject() {
  if (edited_ && !confirmLoss(this, texts(), texts()("IDS_CONFIRM_LOSE_CHANGES"))) return;
  QDialog::reject();
}

void CurrenciesDialog::openRates() {
  const std::string address = document_.app().config().ReadConfigString(foundation::keys::UrlCurrency);
  if (!document_.app().surroundings().documents.open(address)) {
    warn(this, texts(), texts().format("IDS_CANTOPENPAGE", address));
  }
}

bool editCurrencies(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  return CurrenciesDialog(document, texts, parent).exec() == QDialog::Accepted;
}

}  // namespace ui
