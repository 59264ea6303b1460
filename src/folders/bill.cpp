#include "folders/bill.h"

#include <array>
#include <optional>

#include "base/codepage.h"
#include "base/printf.h"
#include "base/text.h"
#include "folders/db_folder.h"
#include "folders/numbers.h"
#include "folders/report_file.h"
#include "folders/report_page.h"
#include "folders/view_log.h"
#include "platform/regular_file.h"
#include "schema/database_place.h"

namespace folders {

namespace {

using jet::Value;

// The columns of a bill, in the order of the query.
struct BillColumn {
  int kind;
  const char* caption;
  const char* select;
};
constexpr std::array kColumns = {
    BillColumn{KindTime, "IDS_DATE_HOUR", "DateTime"},
    BillColumn{KindNumber, "IDS_NUMBER", "DialNumber"},
    BillColumn{KindArea, "IDS_AREA", "Area"},
    BillColumn{KindDuration, "IDS_DURATION", "TotalTime"},
    BillColumn{KindPrice, "IDS_PRICE", "Price_Ref * %ADD% as padaos"},
};
constexpr std::size_t kDuration = 3;
constexpr std::size_t kPrice = 4;

std::string billQuery(const BillRequest& request, const FolderServices& services) {
  filter::FilterSettings settings;
  settings.onFilter = 1;
  settings.onExtension = 1;
  settings.extension = request.extension;
  settings.onPeriod = 1;
  settings.intervalStart = request.from.format(filter::kPeriodFormat);
  settings.intervalEnd = request.to.format(filter::kPeriodFormat);
  // Typed for this bill alone: nothing else than an extension is meant by it.
  filter::requireOnlyValues(settings, services.definitions.extensionIsText, services.texts);
  std::string list;
  for (const BillColumn& column : kColumns) list.append(list.empty() ? "" : ", ").append(column.select);
  return applySurcharge(base::format("SELECT %s FROM [Calls] as toptab WHERE %s ORDER BY DateTime ASC", list,
                                     services.filter.conditionOf(settings)),
                        services.config, services.texts);
}

std::string billCell(int kind, std::string_view text) {
  const bool right = formatOfKind(kind).alignment == Alignment::Right;
  return base::format(right ? "<TD align=right nowrap>%s&nbsp;</TD>" : "<TD align=left nowrap>%s&nbsp;</TD>",
                      base::escapeHtml(text));
}

std::string headingRow(const FolderServices& services) {
  std::string row;
  for (const BillHeading& heading : billHeadings(services)) {
    row += base::format("<TH align=%s nowrap>%s&nbsp;</TH>", alignmentName(heading.alignment),
                        base::escapeHtml(heading.text));
  }
  return row + "</TR>\n";
}

std::string summary(const BillTotals& totals, const FolderServices& services, const ValueFormatter& formatter) {
  std::string table = tableOpening(services.config) + "</TR>\n";
  for (const BillSum& sum : billSums(totals, services, formatter)) {
    table += base::format("<TR><TD><b>%s</b></TD>", base::escapeHtml(sum.label)) + "<TD align=right>" +
             base::escapeHtml(sum.value) + "</TD>";
    if (!sum.remark.empty()) table += base::format("<TD>&nbsp;%s</TD>", sum.remark);
    table += "</TR>\n";
  }
  return table + "</TABLE>\n";
}

// Nothing when there is no template that can be read.
std::optional<std::string> readTemplate(const FolderServices& services) {
  return platform::readRegularFile(
      schema::DatabasePlace::of(services.main).billPage(services.config.machineStore().file()));
}

// What a placeholder stands for; nothing for other words between percent signs. The template's own bytes stay as they
// are; what is put in is written for the page that it declares, windows-1252.
std::optional<std::string> filling(std::string_view placeholder, const BillRequest& request,
                                   const FolderServices& services, const std::string& tables) {
  const auto page = [](std::string_view text) { return base::encodeHtml(text, 1252); };
  // The template names the key itself.
  const auto setting = [&](std::string_view key) {
    return page(
        base::escapeHtml(services.config.ReadConfigString(key, foundation::kGeneral, foundation::StoreDatabase, "")));
  };
  constexpr std::string_view kShown = "%d.%m.%Y %H:%M";
  if (placeholder == "%EXT%") return page(base::escapeHtml(request.extension));
  if (placeholder == "%INTERVAL%") {
    return base::format("<b>%s</b> - <b>%s</b>", request.from.format(kShown), request.to.format(kShown));
  }
  if (placeholder == "%REPORT%") return page(tables);
  if (placeholder == "%RESELLER%") return setting(foundation::keys::ResellerName.key);
  if (placeholder.starts_with("%Organization")) return setting(placeholder.substr(1, placeholder.size() - 2));
  return std::nullopt;
}

// A template that repeats the calls again and again makes a page that nothing can show.
constexpr std::size_t kLargestPage = std::size_t{64} << 20U;  // bytes

// One pass, so that a placeholder's letters in the data stay data. Nothing when the page grows beyond kLargestPage.
std::optional<std::string> fillTemplate(std::string_view text, const BillRequest& request,
                                        const FolderServices& services, const std::string& tables) {
  std::string out;
  for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%')) {
    out += text.substr(0, at);
    text.remove_prefix(at);
    const std::string_view placeholder = text.substr(0, text.find('%', 1) + 1);
    const auto value = filling(placeholder, request, services, tables);
    out += value.value_or("%");
    if (out.size() > kLargestPage) return std::nullopt;
    text.remove_prefix(value ? placeholder.size() : 1);
  }
  out.append(text);
  return out;
}

}  // namespace

BillRequest billFromFilter(foundation::ConfigManager& config) {
  const filter::FilterSettings settings = filter::readSettings(config);
  return {settings.extension, filter::parsePeriod(settings.intervalStart, foundation::kDefaultPeriodStart),
          filter::parsePeriod(settings.intervalEnd, foundation::kDefaultPeriodEnd)};
}

std::vector<BillHeading> billHeadings(const FolderServices& services) {
  std::vector<BillHeading> headings;
  for (const BillColumn& column : kColumns) {
    headings.push_back({services.texts.Translate(column.caption), formatOfKind(column.kind).alignment});
  }
  return headings;
}

BillTotals readBill(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
                    const std::function<void(std::vector<std::string>)>& call) {
  BillTotals totals;
  services.main.forEachRow(billQuery(request, services), [&](const std::vector<Value>& row) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kColumns.size(); ++i) {
      texts.push_back(formatter.formatCell(kColumns[i].kind, row[i]));
    }
    call(std::move(texts));
    totals.net += row[kPrice].toDouble();
    totals.duration += row[kDuration].toLong();
    ++totals.calls;
    return true;
  });
  totals.vatPercent = services.config.ReadConfigInt(foundation::keys::OrganizationTVA);
  totals.net = formatter.rounded(totals.net);
  totals.vat = formatter.rounded(totals.net * totals.vatPercent / 100);
  totals.total = totals.net + totals.vat;
  return totals;
}

std::vector<BillSum> billSums(const BillTotals& totals, const FolderServices& services,
                              const ValueFormatter& formatter) {
  const std::string currency = " " + services.currencies.Default().name;
  const auto label = [&](std::string_view key) { return services.texts.Translate(key); };
  return {{label("IDS_TOTAL_WITHOUT_VAT"), formatter.exactMoney(totals.net) + currency, {}},
          {label("IDS_VAT"), formatter.exactMoney(totals.vat) + currency, base::format("%d%%", totals.vatPercent)},
          {label("IDS_TOTAL"), formatter.exactMoney(totals.total) + currency, {}},
          {label("IDS_DURATION"), durationText(totals.duration), {}}};
}

std::string billTables(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
                       BillTotals& totals) {
  std::string tables = tableOpening(services.config) + headingRow(services);
  totals = readBill(request, services, formatter, [&](const std::vector<std::string>& texts) {
    tables += "<TR>";
    for (std::size_t i = 0; i < kColumns.size(); ++i) tables += billCell(kColumns[i].kind, texts[i]);
    tables += "</TR>\n";
  });
  return tables + "</TABLE>\n" + summary(totals, services, formatter);
}

bool writeBill(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
               const std::filesystem::path& file, BillTotals* totals) {
  BillTotals sums;
  const std::string tables = billTables(request, services, formatter, sums);
  if (totals != nullptr) *totals = sums;
  const bool usesTemplate = services.config.ReadConfigInt(foundation::keys::TemplateHotel) != 0;
  const std::optional<std::string> pattern = usesTemplate ? readTemplate(services) : std::nullopt;
  if (usesTemplate && !pattern) {
    services.person.messageBox("Can't open");
    return false;
  }
  const std::optional<std::string> filled = pattern ? fillTemplate(*pattern, request, services, tables) : std::nullopt;
  if (pattern && !filled) {
    services.person.messageBox(services.texts.TranslateFormat("IDS_TEMPLATE_TOO_LARGE", kLargestPage >> 20U));
    return false;
  }
  const auto page = openReport(file, services.person);
  if (!page) return false;
  if (filled) {
    page->write(*filled);
  } else {
    page->writePage(std::string(kPageHead) + tables + "</BODY></HTML>");
  }
  page->commit();
  logWritten(services, services.texts.Translate("IDS_EXTENSION") + " " + request.extension, file);
  return true;
}

}  // namespace folders
