#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "folders/services.h"
#include "folders/value_formatter.h"

namespace folders {

// The bill of one extension over a period, both ends included.
struct BillRequest {
  std::string extension;
  base::DateTime from;
  base::DateTime to;
};

// The extension and period that the call filter holds.
[[nodiscard]] BillRequest billFromFilter(foundation::ConfigManager& config);

// Rounded as they are printed, so that they add up on paper: VAT and total are computed from the rounded net amount.
struct BillTotals {
  double net = 0;  // default currency, surcharge included, VAT not
  double vat = 0;
  double total = 0;
  std::int64_t duration = 0;  // seconds
  std::int64_t calls = 0;
  std::int32_t vatPercent = 0;
};

struct BillHeading {
  std::string text;
  Alignment alignment;
};
[[nodiscard]] std::vector<BillHeading> billHeadings(const FolderServices& services);
// Hands out the texts of each call, one a heading, oldest first. Throws jet::Error.
BillTotals readBill(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
                    const std::function<void(std::vector<std::string>)>& call);
// What is below the calls, in its order.
struct BillSum {
  std::string label;
  std::string value;
  std::string remark;  // the rate of the VAT
};
[[nodiscard]] std::vector<BillSum> billSums(const BillTotals& totals, const FolderServices& services,
                                            const ValueFormatter& formatter);

// Writes the bill as an HTML page: with setting "TemplateHotel", the page "template.html" of the database folder with
// its placeholders filled, %EXT%, %INTERVAL%, %REPORT%, %RESELLER% and the settings %Organization...% by their keys;
// else the tables alone, as a page of their own. False after a message ("Can't open") when the file or the template
// cannot be opened. Throws jet::Error, and std::system_error when the disk is full.
bool writeBill(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
               const std::filesystem::path& file, BillTotals* totals = nullptr);

// The tables alone, UTF-8.
[[nodiscard]] std::string billTables(const BillRequest& request, const FolderServices& services,
                                     const ValueFormatter& formatter, BillTotals& totals);

}  // namespace folders
