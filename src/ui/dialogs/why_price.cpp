#include <QFontDatabase>
#include <QPlainTextEdit>

#include "base/printf.h"
#include "base/text.h"
#include "tariff/price_report.h"
#include "ui/dialogs.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

// Steps of a price as text.
class StepsDialog : public FormDialog {
 public:
  StepsDialog(const Texts& texts, const QString& steps, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_WHY_PRICE", "whyPrice", parent) {
    auto* text = named(new QPlainTextEdit(steps), "steps");
    text->setReadOnly(true);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setAccessibleName(windowTitle());
    body()->addWidget(text);
    cancelButton()->hide();
    resize(fontMetrics().averageCharWidth() * 110, fontMetrics().lineSpacing() * 28);
  }
};

// What the exchange reported, as far as the row tells it.
exchange::CallRecord recordOf(const jet::Snapshot& row) {
  exchange::CallRecord record;
  if (const auto start = row.at(0, "DateTime").toDateTime()) record.setStart(*start);
  record.extensionText = row.at(0, "Extension").toText();
  record.trunkText = row.at(0, "Trunk").toText();
  record.extension = base::leadingInteger(record.extensionText);
  record.trunk = base::leadingInteger(record.trunkText);
  record.incoming = row.at(0, "Incoming").toBool() ? 1 : 0;
  record.accountCode = row.at(0, "AccountCode").toText();
  record.dialledNumber = row.at(0, "DialNumber").toText();
  record.pulses = static_cast<std::int32_t>(row.at(0, "Pulses").toLong());
  record.setDuration(row.at(0, "TotalTime").toLong());
  return record;
}

}  // namespace

void explainPrice(server::CServerDoc& document, const Texts& texts, QWidget* parent, std::int64_t call) {
  QStringList lines;
  const bool read = attempt(parent, texts, [&] {
    const jet::Snapshot row = document.database().openSnapshot(base::format(
        "select [DateTime], Extension, Trunk, Incoming, AccountCode, DialNumber, Pulses, TotalTime, Price, "
        "Currency from Calls where RecordID = %d",
        call));
    if (row.empty()) return;
    exchange::CallRecord record = recordOf(row);
    lines << texts.format("IDS_WHY_STORED", document.valueFormatter().money(row.at(0, "Price").toDouble()),
                          row.at(0, "Currency").toText())
          << texts("IDS_WHY_NOW") << QString();
    tariff::PricingContext output;
    tariff::PriceTrace trace;
    std::int32_t ignore = 0;
    const auto outcome = document.smdr().prices().CalcPrice(record, output, ignore, &trace);
    for (const std::string& line : tariff::priceReport(trace, record, output, outcome, texts.language())) {
      lines << toQt(line);
    }
  });
  if (read && lines.isEmpty()) return inform(parent, texts, texts("IDS_LAN_RECORD_DELETED_NO"));
  if (read) StepsDialog(texts, lines.join('\n'), parent).exec();
}

}  // namespace ui
