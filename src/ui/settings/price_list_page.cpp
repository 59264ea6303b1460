#include "ui/settings/price_list_page.h"

#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <algorithm>

#include "base/text.h"
#include "foundation/refusal_text.h"
#include "platform/progress.h"
#include "security/audit_log.h"
#include "security/restriction.h"
#include "tariff/price_list_file.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

using tariff::PriceChange;
using tariff::PriceChangeKind;

struct ChangeText {
  PriceChangeKind kind;
  const char* key;
};
// Those that are shown, in the order of the sentence about them.
constexpr ChangeText kChangeKinds[] = {{PriceChangeKind::Added, "IDS_PRICES_ADDED"},
                                       {PriceChangeKind::Dearer, "IDS_PRICES_DEARER"},
                                       {PriceChangeKind::Cheaper, "IDS_PRICES_CHEAPER"},
                                       {PriceChangeKind::Gone, "IDS_PRICES_GONE"}};
constexpr int kPriceDecimals = 4;
constexpr std::size_t kNotesShown = 5;

folders::PlainCell amountCell(const std::optional<double>& amount) {
  return amount ? folders::PlainCell(*amount) : folders::PlainCell();
}

}  // namespace

PriceListPage::PriceListPage(server::CServerDoc& document, std::shared_ptr<EditedTariffs> tariffs, const Texts& texts,
                             QWidget* parent)
    : QWidget(parent),
      document_(document),
      tariffs_(std::move(tariffs)),
      texts_(texts),
      file_(named(new QLineEdit, "priceFile")),
      provider_(named(new QComboBox, "priceProvider")),
      profile_(named(new QComboBox, "priceProfile")),
      from_(named(new QDateEdit, "priceFrom")),
      currency_(named(new QComboBox, "priceCurrency")),
      increment_(named(new QLineEdit, "priceIncrement")),
      headings_(named(new QLineEdit, "priceHeadings")),
      try_(named(new QPushButton(texts("IDS_PRICES_TRY")), "priceTry")),
      take_(named(new QPushButton(texts("IDS_PRICES_TAKE")), "priceTake")),
      summary_(named(new QLabel, "priceSummary")),
      changes_(new ResultTable(document, texts, "priceChanges")) {
  for (const exchange::ProviderDefinition& each : document.smdr().parties().providers) {
    provider_->addItem(toQt(each.name), each.id);
  }
  profile_->setEditable(true);
  // Price lists hold from the first of a month, mostly of the next.
  const QDate today = QDate::currentDate();
  from_->setDate(QDate(today.year(), today.month(), 1).addMonths(1));
  from_->setDisplayFormat("dd.MM.yyyy");
  from_->setCalendarPopup(true);
  const tariff::Currencies& currencies = document.currencies();
  for (const auto& currency : currencies.entries) currency_->addItem(toQt(currency.name));
  currency_->setCurrentText(toQt(currencies.Default().name));
  increment_->setPlaceholderText("1/1");
  headings_->setPlaceholderText("prefix=Code, price=Rate");
  summary_->setWordWrap(true);
  auto* fileLine = new QHBoxLayout;
  auto* browsing = named(new QPushButton(texts("IDS_BROWSE")), "priceBrowse");
  fileLine->addWidget(file_, 1);
  fileLine->addWidget(browsing);
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  auto* fileLabel = new QLabel(texts("IDS_PRICES_FILE"));
  fileLabel->setBuddy(file_);
  form->addRow(fileLabel, fileLine);
  form->addRow(texts("IDS_PROVIDER"), provider_);
  form->addRow(texts("IDS_PROFILE"), profile_);
  form->addRow(texts("IDS_VALID_FROM"), from_);
  form->addRow(texts("IDS_PRICES_CURRENCY"), currency_);
  form->addRow(texts("IDS_PRICES_INCREMENT"), increment_);
  form->addRow(texts("IDS_PRICES_HEADINGS"), headings_);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(try_);
  buttons->addWidget(take_);
  buttons->addStretch();
  auto* hint = new QLabel(texts("IDS_HINT_PRICES"));
  hint->setWordWrap(true);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(hint);
  layout->addLayout(form);
  layout->addLayout(buttons);
  layout->addWidget(summary_);
  layout->addWidget(changes_, 1);
  changes_->view()->setAccessibleName(texts("IDS_PRICES_CHANGE"));
  changes_->setMinimumHeight(fontMetrics().lineSpacing() * 12);
  for (const auto& [field, key] : {std::pair<QWidget*, const char*>(file_, "IDS_PRICES_FILE"),
                                   std::pair<QWidget*, const char*>(profile_, "IDS_PROFILE")}) {
    field->setAccessibleName(texts(key));
  }
  connect(browsing, &QPushButton::clicked, this, &PriceListPage::browse);
  connect(provider_, &QComboBox::currentIndexChanged, this, &PriceListPage::offerProfiles);
  connect(try_, &QPushButton::clicked, this, &PriceListPage::tryList);
  connect(take_, &QPushButton::clicked, this, &PriceListPage::takeList);
  for (QLineEdit* line : {file_, increment_, headings_}) {
    connect(line, &QLineEdit::textChanged, this, &PriceListPage::forgetTrial);
  }
  for (QComboBox* box : {provider_, profile_, currency_}) {
    connect(box, &QComboBox::currentTextChanged, this, &PriceListPage::forgetTrial);
  }
  connect(from_, &QDateEdit::dateChanged, this, &PriceListPage::forgetTrial);
  offerProfiles();
  forgetTrial();
}

void PriceListPage::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return QWidget::keyPressEvent(event);
  tryList();
}

void PriceListPage::browse() {
  const QString file =
      QFileDialog::getOpenFileName(this, texts_("IDS_PRICES_FILE"), file_->text(), texts_("IDS_PRICES_FILE_KINDS"));
  if (!file.isEmpty()) file_->setText(file);
}

void PriceListPage::offerProfiles() {
  const QString typed = profile_->currentText();
  profile_->clear();
  profile_->addItems(tariffs_->profileNames(provider_->currentData().toInt()));
  if (profile_->count() == 0) profile_->setEditText(typed);
}

// What was tried is not what the fields say any more.
void PriceListPage::forgetTrial() {
  take_->setEnabled(false);
}

const exchange::ProviderDefinition* PriceListPage::provider() const {
  const auto& providers = document_.smdr().parties().providers;
  const auto found = std::ranges::find(providers, provider_->currentData().toInt(), &exchange::ProviderDefinition::id);
  return found == providers.end() ? nullptr : &*found;
}

void PriceListPage::readList() {
  tariff::PriceListOptions options{.countryCode = document_.smdr().parties().countryCode,
                                   .columns = tariff::readColumnHeadings(fromQt(headings_->text())),
                                   .currency = fromQt(currency_->currentText()),
                                   .codepage = texts_.language().codepage()};
  if (const std::string increment = fromQt(increment_->text().trimmed()); !increment.empty()) {
    tariff::readIncrement(increment, options.firstSeconds, options.nextSeconds);
  }
  list_ = tariff::readPriceListFile(fromQt(file_->text().trimmed()), options, document_.currencies());
}

tariff::PriceListImport PriceListPage::plan() {
  const QDate day = from_->date();
  const exchange::ProviderDefinition& chosen = *provider();
  const exchange::PartyDefinitions& parties = document_.smdr().parties();
  return {*document_.smdr().tariffs(),
          {chosen.id, fromQt(profile_->currentText().trimmed()),
           *base::DateTime::fromParts(day.year(), day.month(), day.day()), parties.countryCode, parties.areaCode,
           chosen.localPrefixes},
          list_,
          [this](double value, std::string_view currency) { return document_.currencies().Convert(value, currency); }};
}

void PriceListPage::tryList() {
  if (tariffs_->changed()) return inform(this, texts_, texts_("IDS_APPLY_FIRST"));
  const QString profile = profile_->currentText().trimmed();
  if (file_->text().trimmed().isEmpty()) return inform(this, texts_, texts_("IDS_PRICES_NO_FILE"));
  if (provider() == nullptr || profile.isEmpty() || profile.contains('\'') || profile.contains('"')) {
    return inform(this, texts_, texts_("IDS_PRICES_NO_PROFILE"));
  }
  const bool tried = attempt(this, texts_, [&] {
    security::requireAllCalls(document_.user(), texts_.language());
    const platform::Progress progress(document_.app().surroundings().person, fromQt(texts_("IDS_PRICES_TRY")),
                                      fromQt(texts_("IDS_READING_CALLS")));
    readList();
    tariff::PriceListImport planned = plan();
    const server::TariffTrial trial = server::tryOnLastMonth(document_, planned, *provider(), fromQt(profile));
    showPlan(planned, trial);
  });
  take_->setEnabled(tried && mayChangeAdministration(document_));
}

void PriceListPage::showPlan(const tariff::PriceListImport& plan, const server::TariffTrial& trial) {
  const foundation::LanguageFile& language = texts_.language();
  const auto text = [&language](const char* key) { return language.Translate(key); };
  const std::string currency = document_.currencies().Default().name;
  folders::PlainTable table{
      .title = text("IDS_PAGE_PRICE_LIST") + ": " + provider()->name + ", " + fromQt(profile_->currentText()),
      .columns = {{text("IDS_PRICES_CHANGE")},
                  {text("IDS_PREFIX")},
                  {text("IDS_AREA")},
                  {text("IDS_PRICES_BEFORE"), folders::CellKind::Number, kPriceDecimals, " " + currency},
                  {text("IDS_PRICES_AFTER"), folders::CellKind::Number, kPriceDecimals, " " + currency},
                  {text("IDS_PRICES_PERCENT"), folders::CellKind::Number, 1, "%"}},
      .rows = {},
      .remarks = {},
      .overCalls = false};
  for (const ChangeText& kind : kChangeKinds) {
    for (const PriceChange& change : plan.changes()) {
      if (change.kind != kind.kind) continue;
      table.rows.push_back({{text(kind.key), change.prefix, change.name, amountCell(change.before),
                             amountCell(change.after), amountCell(change.percent())}});
    }
  }
  worth_ = static_cast<std::int64_t>(table.rows.size());
  QStringList lines{texts_.format("IDS_PRICES_SUMMARY", list_.rows, plan.count(PriceChangeKind::Added),
                                  plan.count(PriceChangeKind::Dearer), plan.count(PriceChangeKind::Cheaper),
                                  plan.count(PriceChangeKind::Gone),
                                  plan.count(PriceChangeKind::Same) + plan.count(PriceChangeKind::Kept))};
  constexpr double kOfHundred = 100;
  const double percent = trial.before == 0 ? 0 : (trial.after - trial.before) / trial.before * kOfHundred;
  const std::string change = (percent < 0 ? "" : "+") + folders::textOf({{}, folders::CellKind::Number, 1, "%"},
                                                                        percent, folders::separatorsOf(language));
  lines << texts_.format("IDS_PRICES_TRIAL", trial.calls, trial.from.format("%m.%Y"),
                         document_.valueFormatter().money(trial.before), currency,
                         document_.valueFormatter().money(trial.after), change);
  for (std::size_t i = 0; i < std::min(list_.notes.size(), kNotesShown); ++i) {
    const tariff::PriceListNote& note = list_.notes[i];
    lines << texts_.format(note.leftOut ? "IDS_PRICES_LEFT_OUT" : "IDS_PRICES_NOTE", note.line,
                           foundation::refusalText(note.what, language));
  }
  if (list_.notesInAll > static_cast<std::int64_t>(kNotesShown)) {
    lines << texts_.format("IDS_PRICES_NOTES", list_.notesInAll);
  }
  for (const QString& line : lines) table.remarks.push_back(fromQt(line));
  summary_->setText(lines.join('\n'));
  changes_->setTable(std::move(table));
}

void PriceListPage::takeList() {
  const std::string profile = fromQt(profile_->currentText().trimmed());
  const QString question = texts_.format("IDS_PRICES_CONFIRM", worth_, provider()->name, profile,
                                         fromQt(from_->date().toString("dd.MM.yyyy")));
  if (!confirmLoss(this, texts_, question)) return;
  const bool done = attempt(this, texts_, [&] {
    const platform::Progress progress(document_.app().surroundings().person, fromQt(texts_("IDS_PRICES_TAKE")),
                                      fromQt(texts_("IDS_UPDATING_DATABASE")));
    plan().apply();
    document_.log().WriteLog(security::LogEdit, texts_.language().Translate("IDS_LOG_PRICE_LIST"), provider()->name,
                             profile);
  });
  if (!done) return;
  const auto& trunks = document_.smdr().parties().trunks;
  const bool used = std::ranges::any_of(trunks, [&](const exchange::tagTRUNKINFO& trunk) {
    return trunk.providerId == provider()->id && base::equalFold(trunk.profile, profile);
  });
  emit taken();
  take_->setEnabled(false);
  inform(this, texts_,
         used ? texts_("IDS_PRICES_TAKEN") : texts_.format("IDS_PRICES_UNUSED", provider()->name, profile));
}

}  // namespace ui
