#pragma once

#include <string>
#include <vector>

#include "filter/call_filter.h"
#include "filter/rtf_builder.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "tariff/currencies.h"

namespace filter {

// One label or value of the plain description, in order; concatenated they are the text.
struct DescriptionPiece {
  std::string text;
  bool isValue = false;
};

// The filter in the operator's words. Reads the settings afresh each time.
class FilterDescription {
 public:
  FilterDescription(CallFilter& filter, const foundation::LanguageFile& texts, const tariff::Currencies& currencies)
      : filter_(filter), texts_(texts), currencies_(currencies) {}

  // The fragment for the head of a page: the active settings, then the rates of the currencies that occur among the
  // filtered calls. UTF-8; values are escaped. Throws jet::Error.
  [[nodiscard]] std::string html(jet::Database& main);

  // The plain description: a line a setting. An unset period reads as the single day 31.12.1999 here.
  [[nodiscard]] std::vector<DescriptionPiece> pieces();
  [[nodiscard]] std::string plainText();
  // The same as Rich Text, one piece a label or value.
  void writeTo(CRTFBuilder& builder);
  [[nodiscard]] std::string rtf();

 private:
  void appendItems(std::string& page, const FilterSettings& settings);
  void appendRates(std::string& page, jet::Database& main);
  [[nodiscard]] std::string label(std::string_view key) const;  // translated and escaped

  CallFilter& filter_;
  const foundation::LanguageFile& texts_;
  const tariff::Currencies& currencies_;
};

}  // namespace filter
