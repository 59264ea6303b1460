#include <QFormLayout>
#include <algorithm>

#include "folders/bill.h"
#include "platform/progress.h"
#include "ui/dialogs.h"
#include "ui/dialogs/choice_box.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/party_choices.h"
#include "ui/dialogs/period_edit.h"
#include "ui/dialogs/report_place.h"

namespace ui {

namespace {

// Why a bill would be empty.
QString nothingToBill(const exchange::PartyDefinitions& parties, const folders::BillRequest& request,
                      const Texts& texts) {
  const bool known = std::ranges::any_of(
      parties.extensions, [&](const auto& extension) { return extension.extension == request.extension; });
  if (!known) return texts.format("IDS_BILL_UNKNOWN_EXTENSION", request.extension);
  constexpr std::string_view kShown = "%d.%m.%Y %H:%M";
  return texts.format("IDS_BILL_NO_CALLS", request.extension, request.from.format(kShown), request.to.format(kShown));
}

// Whose bill, and for when. The filter's extension and period are proposed.
class BillDialog : public FormDialog {
 public:
  BillDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& extension)
      : FormDialog(texts, "IDS_ACTION_BILL", "bill", parent), document_(document) {
    const exchange::PartyDefinitions& parties = document.smdr().parties();
    extension_ = named(new ChoiceBox([&parties] { return extensionChoices(parties); }, texts), "extension");
    extension_->loadList();
    period_ = named(new PeriodEdit(PeriodEdit::Times::Shown, texts), "period");
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(texts("IDS_EXTENSION"), extension_);
    form->addRow(texts("IDS_FILTER_PERIOD"), period_);
    body()->addLayout(form);
    body()->addWidget(makeHint(texts("IDS_BILL_HINT")));
    setMinimumWidth(fontMetrics().averageCharWidth() * 65);

    const folders::BillRequest proposed = folders::billFromFilter(document.app().config());
    const QString number = extension.isEmpty() ? toQt(proposed.extension) : extension;
    extension_->setValue(number, number);
    extension_->setValue(number, extension_->shownValue());
    if (document.callFilter().settings().onPeriod != 0) {
      period_->setPeriod(proposed.from, proposed.to);
    } else {
      filter::FilterSettings month;
      filter::setThisMonth(month, document.app().surroundings().clock.now());
      period_->setPeriod(filter::parsePeriod(month.intervalStart, ""), filter::parsePeriod(month.intervalEnd, ""));
    }
  }

  void accept() override {
    if (extension_->value().isEmpty()) return warn(this, texts(), texts()("IDS_BILL_NO_EXTENSION"));
    if (!period_->inOrder()) return warn(this, texts(), texts()("IDS_PERIOD_ORDER"));
    const folders::BillRequest request{fromQt(extension_->value()), period_->start(), period_->end()};
    folders::BillTotals totals;
    if (!write(request, totals)) return;
    if (totals.calls == 0) return warn(this, texts(), nothingToBill(document_.smdr().parties(), request, texts()));
    QDialog::accept();
  }

  // What the accepted dialog wrote.
  [[nodiscard]] std::filesystem::path page() const { return reportFile(document_, "list.html"); }

 private:
  bool write(const folders::BillRequest& request, folders::BillTotals& totals) {
    bool written = false;
    attempt(this, texts(), [&] {
      const platform::Progress progress(document_.app().surroundings().person, fromQt(texts()("IDS_CALLS_REPORT")),
                                        texts().language().TranslateFormat("IDS_WRITING_FILE", page().string()));
      written = folders::writeBill(request, document_.folderServices(), document_.valueFormatter(), page(), &totals);
    });
    return written;
  }

  server::CServerDoc& document_;
  ChoiceBox* extension_;
  PeriodEdit* period_;
};

}  // namespace

std::filesystem::path makeBill(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                               const QString& extension) {
  BillDialog dialog(document, texts, parent, extension);
  if (dialog.exec() != QDialog::Accepted) return {};
  handOver(document, texts, parent, dialog.page(), ReportUse::Open);
  return dialog.page();
}

}  // namespace ui
