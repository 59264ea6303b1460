#include "tariff/currencies.h"

#include <algorithm>

#include "base/characters.h"
#include "base/printf.h"
#include "base/text.h"

namespace tariff {

namespace {

constexpr const char* kTable = "Currency";
constexpr std::size_t kNameLength = 7;  // characters

std::string tableQuery() {
  return base::format("SELECT * FROM [%s]", kTable);
}

CURRENCYDESC readRow(const jet::Snapshot& rows, std::size_t row) {
  CURRENCYDESC entry;
  entry.id = static_cast<std::int32_t>(rows.at(row, "CurrencyID").toLong());
  entry.name = base::firstCharacters(rows.at(row, "Name").toText(), kNameLength);
  entry.ratio = rows.at(row, "Ratio").toDouble();
  entry.dateModify = rows.at(row, "DateModify").toDateTime();
  entry.isDefault = rows.at(row, "Default").toLong() != 0;
  entry.reverse = rows.at(row, "Reverse").toLong() != 0;
  return entry;
}

void addRow(jet::Recordset& table, const CURRENCYDESC& entry) {
  table.addNew();
  table.set("Name", entry.name);
  table.set("CurrencyID", entry.id);
  table.set("Ratio", entry.ratio);
  table.set("Default", entry.isDefault ? 1 : 0);
  table.set("Reverse", entry.reverse ? 1 : 0);
  table.set("DateModify", entry.dateModify ? jet::Value(*entry.dateModify) : jet::Value());
  table.update();
}

}  // namespace

void Currencies::load(jet::Database& main) {
  loadedVersion_ = main.tableVersion(kTable);
  const jet::Snapshot rows = main.openSnapshot(tableQuery());
  entries.clear();
  for (std::size_t row = 0; row < rows.rowCount(); ++row) entries.push_back(readRow(rows, row));
}

void Currencies::save(jet::Database& main) {
  jet::Transaction transaction(main);
  {
    const auto table = main.openRecordset(tableQuery());
    for (; !table->eof(); table->moveNext()) table->remove();
    for (const CURRENCYDESC& entry : entries) addRow(*table, entry);
  }
  transaction.commit();
  loadedVersion_ = main.tableVersion(kTable);
}

bool Currencies::reloadIfChanged(jet::Database& main) {
  if (main.tableVersion(kTable) == loadedVersion_) return false;
  load(main);
  return true;
}

std::int32_t Currencies::NextId() {
  const auto taken = config_.takeNumber(foundation::keys::LastCurrencyID);
  if (!taken) person_.messageBox(language_.Translate("IDS_CANTGETNEXTRECID"));
  return taken.value_or(0);
}

const CURRENCYDESC& Currencies::Default() const {
  static const CURRENCYDESC kNone;
  const auto found = std::find_if(entries.begin(), entries.end(), [](const auto& entry) { return entry.isDefault; });
  return found == entries.end() ? kNone : *found;
}

int Currencies::findById(std::int32_t id) const {
  const auto found = std::find_if(entries.begin(), entries.end(), [id](const auto& entry) { return entry.id == id; });
  return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

int Currencies::findByName(std::string_view name) const {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [name](const auto& entry) { return base::equalFoldAscii(entry.name, name); });
  return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

double Currencies::Convert(double amount, std::string_view name) const {
  const auto found = std::find_if(entries.begin(), entries.end(), [name](const auto& entry) {
    return entry.ratio != 0 && base::equalFoldAscii(entry.name, name);
  });
  if (found == entries.end()) return 0;
  return found->reverse ? amount / found->ratio : amount * found->ratio;
}

}  // namespace tariff
