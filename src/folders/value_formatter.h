#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "exchange/party_definitions.h"
#include "folders/money_format.h"
#include "folders/numbers.h"
#include "foundation/language_file.h"
#include "foundation/retold_text.h"
#include "jet/value.h"

namespace folders {

enum class Alignment { Left, Right, Center };

// How values of a column kind are shown.
enum class Format {
  Text,
  Nothing,  // never shown
  ContactType,
  DateTime,
  Date,
  Extension,
  Digits,
  Duration,  // hh:mm:ss
  Minutes,   // mm:ss, whole hours dropped
  Money,
  MoneyCurrency,  // two values: amount and currency
  Flag,
  Direction,
  Weekday,
  Hour,
  Month,
  LogText,  // in the language in use, whichever it was written in
};

struct KindFormat {
  int kind = 0;
  Format format = Format::Text;
  Alignment alignment = Alignment::Left;
  bool summed = false;  // has a total
};

// Kinds that are not listed show their text.
[[nodiscard]] const KindFormat& formatOfKind(int kind);

// Turns the values of folders, contacts and reports into texts.
class ValueFormatter {
 public:
  ValueFormatter(foundation::ConfigManager& config, const foundation::LanguageFile& texts,
                 const exchange::PartyDefinitions& definitions)
      : texts_(texts),
        definitions_(definitions),
        money_(config),
        separators_(separatorsOf(texts)),
        log_("IDS_LOG_", texts) {}

  // `second` is the currency of a KindCost. Null gives an empty text.
  [[nodiscard]] std::string formatCell(int kind, const jet::Value& value, const jet::Value& second = {}) const;
  // The sum of a column whose kind is `summed`; durations of all kinds as hh:mm:ss.
  [[nodiscard]] std::string formatTotal(int kind, double sum) const;
  [[nodiscard]] std::string money(double amount) const {
    return money_.format(amount, separators_.thousands, separators_.decimal);
  }
  // With the same number of decimals whatever the size, and what it is rounded to.
  [[nodiscard]] std::string exactMoney(double amount) const {
    return money_.formatExact(amount, separators_.thousands, separators_.decimal);
  }
  [[nodiscard]] double rounded(double amount) const { return money_.rounded(amount); }

  [[nodiscard]] std::string weekdayName(std::int64_t number) const;      // 1 Sunday .. 7; "???" for others
  [[nodiscard]] std::string monthName(std::int64_t number) const;        // 1 .. 12; "???" for others
  [[nodiscard]] std::string contactTypeName(std::int64_t number) const;  // 0 .. 5; IDS_INVALID for others

  [[nodiscard]] const foundation::LanguageFile& texts() const { return texts_; }
  // How entries of the log are said in the language in use.
  [[nodiscard]] const foundation::Retelling& log() const { return log_; }

 private:
  [[nodiscard]] std::string extension(const jet::Value& value) const;

  const foundation::LanguageFile& texts_;
  const exchange::PartyDefinitions& definitions_;
  MoneyFormat money_;
  Separators separators_;
  foundation::Retelling log_;
};

// "%.2d:%.2d:%.2d"; hours are not wrapped at 24.
[[nodiscard]] std::string durationText(std::int64_t seconds);

// A date in the format, the text of what is no date.
[[nodiscard]] std::string dateText(const jet::Value& value, std::string_view format);

inline constexpr std::string_view kDateFormat = "%d.%m.%Y";
inline constexpr std::string_view kDateTimeFormat = "%d.%m.%Y %H:%M:%S";

}  // namespace folders
