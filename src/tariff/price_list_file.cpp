#include "tariff/price_list_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "base/printf.h"
#include "base/text.h"

namespace tariff {

std::map<std::string, std::string> readColumnHeadings(std::string_view text) {
  std::map<std::string, std::string> columns;
  for (const std::string& part : base::split(text, ",")) {
    const std::size_t equals = part.find('=');
    const std::string field(base::trim(part.substr(0, equals)));
    constexpr std::string_view kFields[] = {"prefix", "name", "price", "connection", "increment", "currency"};
    if (equals == std::string::npos || std::ranges::find(kFields, field) == std::end(kFields)) {
      throw PriceListError(
          base::Refusal("IDS_PRICE_LIST_COLUMNS",
                        "Columns are named as prefix=HEADING, name=, price=, connection=, increment= and currency=, "
                        "not \"%s\".",
                        part));
    }
    columns[field] = base::trim(part.substr(equals + 1));
  }
  return columns;
}

PriceList readPriceListFile(const std::filesystem::path& file, const PriceListOptions& options,
                            const Currencies& currencies) {
  std::ifstream in(file, std::ios::binary);
  if (!in || in.peek() == std::ifstream::traits_type::eof()) {
    throw PriceListError(base::Refusal("IDS_PRICE_LIST_UNREADABLE", "%s cannot be read, or is empty.", file.string()));
  }
  PriceList list = readPriceList(in, options);
  for (const PriceListEntry& entry : list.entries) {
    if (currencies.findByName(entry.terms.currency) >= 0) continue;
    throw PriceListError(
        base::Refusal("IDS_PRICE_LIST_CURRENCY",
                      "Line %d is priced in \"%s\", which is no currency here. Add it first (Tools, Currencies, or "
                      "tallyctl currency set %s --rate RATE), or name the list's currency.",
                      entry.line, entry.terms.currency, entry.terms.currency));
  }
  return list;
}

}  // namespace tariff
