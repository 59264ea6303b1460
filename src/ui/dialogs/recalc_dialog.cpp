#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>

#include "security/restriction.h"
#include "security/rights.h"
#include "ui/dialogs.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/period_edit.h"

namespace ui {

namespace {

constexpr int kMostSeconds = 86400;

// What is to be computed again, and for which calls.
class RecalcDialog : public FormDialog {
 public:
  RecalcDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_RECALC", "recalc", parent) {
    period_ = named(new PeriodEdit(PeriodEdit::Times::WholeDays, texts), "period");
    const auto filtered = filter::readDialogPeriod(document.app().config());
    filter::FilterSettings month;
    filter::setThisMonth(month, document.app().surroundings().clock.now());
    if (document.callFilter().settings().onPeriod != 0) {
      period_->setPeriod(filtered.start, filtered.end);
    } else {
      period_->setPeriod(filter::parsePeriod(month.intervalStart, ""), filter::parsePeriod(month.intervalEnd, ""));
    }
    provider_ = named(new QComboBox, "provider");
    provider_->addItem(texts("IDS_RECALC_ALL_PROVIDERS"), "");
    for (const auto& provider : document.smdr().parties().providers) {
      provider_->addItem(toQt(provider.name), toQt(provider.name));
    }
    auto* form = new QFormLayout;
    form->addRow(texts("IDS_FILTER_PERIOD"), period_);
    form->addRow(texts("IDS_PROVIDER"), provider_);
    body()->addLayout(form);
    body()->addWidget(buildSwitches());
    body()->addWidget(makeHint(texts("IDS_RECALC_HINT")));
    okButton()->setText(texts("IDS_UPDATE"));
    setMinimumWidth(fontMetrics().averageCharWidth() * 70);
    const bool allowed =
        !document.DatabaseReadOnly() && document.HasRight(security::ObjectCalls, security::RightChange);
    for (const QCheckBox* box : {reprice_, reconvert_, department_, owner_, names_}) {
      connect(box, &QCheckBox::toggled, this,
              [this, allowed] { okButton()->setEnabled(allowed && asksForSomething()); });
    }
    connect(addSeconds_, &QSpinBox::valueChanged, this,
            [this, allowed] { okButton()->setEnabled(allowed && asksForSomething()); });
    okButton()->setEnabled(false);
  }

  void accept() override {
    if (!period_->inOrder()) return warn(this, texts(), texts()("IDS_PERIOD_ORDER"));
    QDialog::accept();
  }

  [[nodiscard]] ingest::RecalcOptions options() const {
    return {.firstDay = period_->start(),
            .lastDay = period_->end(),
            .provider = fromQt(provider_->currentData().toString()),
            .reprice = reprice_->isChecked(),
            .reconvert = reconvert_->isChecked(),
            .department = department_->isChecked(),
            .owner = owner_->isChecked(),
            .names = names_->isChecked(),
            .addSeconds = addSeconds_->value()};
  }

 private:
  QWidget* buildSwitches() {
    auto* group = new QGroupBox(texts()("IDS_RECALC_WHAT"));
    auto* layout = new QVBoxLayout(group);
    reprice_ = makeCheckBox("IDS_RECALC_REPRICE", "reprice");
    reconvert_ = makeCheckBox("IDS_RECALC_RECONVERT", "reconvert");
    department_ = makeCheckBox("IDS_RECALC_DEPARTMENT", "department");
    owner_ = makeCheckBox("IDS_RECALC_OWNER", "owner");
    names_ = makeCheckBox("IDS_RECALC_NAMES", "names");
    for (QCheckBox* box : {reprice_, reconvert_, department_, owner_, names_}) layout->addWidget(box);
    addSeconds_ = named(new QSpinBox, "addSeconds");
    addSeconds_->setRange(-kMostSeconds, kMostSeconds);
    addSeconds_->setSuffix(" s");
    auto* form = new QFormLayout;
    form->addRow(texts()("IDS_RECALC_SECONDS"), addSeconds_);
    layout->addLayout(form);
    layout->addWidget(makeHint(texts()("IDS_RECALC_SECONDS_HINT")));
    return group;
  }

  [[nodiscard]] bool asksForSomething() const {
    return reprice_->isChecked() || reconvert_->isChecked() || department_->isChecked() || owner_->isChecked() ||
           names_->isChecked() || addSeconds_->value() != 0;
  }

  PeriodEdit* period_;
  QComboBox* provider_;
  QCheckBox* reprice_ = nullptr;
  QCheckBox* reconvert_ = nullptr;
  QCheckBox* department_ = nullptr;
  QCheckBox* owner_ = nullptr;
  QCheckBox* names_ = nullptr;
  QSpinBox* addSeconds_ = nullptr;
};

}  // namespace

bool updateStoredCalls(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  security::requireAllCalls(document.user(), document.app().language());
  RecalcDialog dialog(document, texts, parent);
  if (dialog.exec() != QDialog::Accepted) return false;
  const ingest::RecalcResult result = document.smdr().recalc(dialog.options());
  if (!result.error.empty()) {
    warn(parent, texts, texts.format("IDS_RECALC_FAILED", result.changed, result.error));
  } else {
    inform(parent, texts,
           texts.format(result.cancelled ? "IDS_RECALC_STOPPED" : "IDS_RECALC_DONE", result.rows, result.changed));
  }
  return result.changed > 0;
}

}  // namespace ui
