#include "tariff/price_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <istream>
#include <optional>
#include <unordered_map>

#include "base/codepage.h"
#include "base/csv.h"
#include "base/printf.h"
#include "base/text.h"
#include "tariff/price_list_prefix.h"

namespace tariff {

namespace {

constexpr std::size_t kLongestLine = 64 * 1024;

enum Field : std::size_t { Prefix, Name, Price, Connection, Increment, Currency, kFields };
constexpr std::array<std::string_view, kFields> kFieldNames = {"prefix",     "name",      "price",
                                                               "connection", "increment", "currency"};
// Beginnings of words that head such a column, folded; the first field that knows a heading takes it.
constexpr std::array<std::string_view, kFields> kHeadings = {
    "prefix,dial,code,cod,numbering",
    "destinat,name,denumire,nume,country,area,zona,description",
    "price,rate,pret,preț,tarif,cost,amount",
    "connect,setup,set-up,fixed,fee,conectare,apelare,initial",
    "increment,interval,billing,step,rounding,taxare,incrementare",
    "currency,valuta,valută,moneda,monedă,curr"};

char separatorOf(std::string_view line) {
  for (const char separator : {';', '\t'}) {
    if (line.find(separator) != std::string_view::npos) return separator;
  }
  return ',';
}

bool isBlank(const std::vector<std::string>& fields) {
  return std::ranges::all_of(fields, &std::string::empty);
}

// A number with a decimal point or comma, thousands separated by the other, or by blanks.
std::optional<double> amountOf(std::string_view text) {
  std::string digits;
  const std::size_t decimal = text.find_last_of(".,");
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '.' || text[i] == ',') {
      if (i == decimal) digits += '.';
    } else if (text[i] != ' ' && text[i] != '\'') {
      digits += text[i];
    }
  }
  double value = 0;
  const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (digits.empty() || fault != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value) ||
      value < 0) {
    return std::nullopt;
  }
  return value;
}

class Reader {
 public:
  Reader(std::istream& in, const PriceListOptions& options) : in_(in), options_(options) {}

  PriceList read() {
    std::vector<std::string> first;
    while (nextFields(first) && isBlank(first)) {
    }
    if (isBlank(first)) throw PriceListError(base::Refusal("IDS_PRICE_LIST_EMPTY", "The file holds no rows."));
    if (!takeHeadings(first)) takeRow(first);
    std::vector<std::string> fields;
    while (nextFields(fields)) {
      if (!isBlank(fields)) takeRow(fields);
    }
    if (list_.entries.empty()) throw PriceListError(nothingRead());
    std::ranges::sort(list_.entries, {}, &PriceListEntry::prefix);
    return std::move(list_);
  }

 private:
  [[nodiscard]] base::Refusal nothingRead() const {
    const std::string why = list_.notes.empty() ? std::string()
                                                : base::format(" Line %d: %s", list_.notes.front().line,
                                                               list_.notes.front().what.english());
    return {"IDS_PRICE_LIST_NO_PRICES",
            "No row of the file has a prefix and a price. Name its columns, as in --columns "
            "\"prefix=Code,price=Rate\".%s",
            why};
  }

  bool nextFields(std::vector<std::string>& fields) {
    std::string line;
    if (!std::getline(in_, line)) return false;
    ++line_;
    if (line_ == 1) checkKind(line);
    if (line.size() > kLongestLine)
      throw PriceListError(base::Refusal("IDS_PRICE_LIST_LINE", "Line %d is too long for a row of prices.", line_));
    if (line.ends_with('\r')) line.pop_back();
    constexpr char kLastAscii = 0x7F;
    if (std::ranges::any_of(line, [](char c) { return static_cast<unsigned char>(c) > kLastAscii; })) {
      line = decoded(line);
    }
    if (separator_ == 0 && !base::trim(line).empty()) separator_ = separatorOf(line);
    fields = base::csvFields(line, separator_);
    return true;
  }

  void checkKind(std::string& line) const {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (line.starts_with(kMark)) line.erase(0, kMark.size());
    if (line.starts_with("PK"))
      throw PriceListError(
          base::Refusal("IDS_PRICE_LIST_SPREADSHEET", "The file is a spreadsheet. Save it as CSV and import that."));
    if (line.find('\0') != std::string::npos) {
      throw PriceListError(base::Refusal(
          "IDS_PRICE_LIST_BINARY", "The file is no plain text, or UTF-16. Save it as CSV in UTF-8 and import that."));
    }
  }

  // Names of destinations in the code page of a provider's program.
  std::string decoded(const std::string& line) {
    constexpr int kUtf8 = 65001;
    std::string utf8 = base::decode(line, kUtf8);
    if (utf8 == line) return line;
    if (!toldCodepage_) note({"IDS_PRICE_LIST_CODEPAGE", "no UTF-8: read in code page %d", options_.codepage});
    toldCodepage_ = true;
    return base::decode(line, options_.codepage);
  }

  bool takeHeadings(const std::vector<std::string>& fields) {
    std::array<std::optional<std::size_t>, kFields> found;
    for (std::size_t field = 0; field < kFields; ++field) found[field] = columnOf(field, fields, found);
    const bool headed = (found[Prefix] && found[Price]) || !options_.columns.empty();
    if (!headed) return false;
    for (const Field needed : {Prefix, Price}) {
      if (!found[needed]) {
        throw PriceListError(base::Refusal("IDS_PRICE_LIST_COLUMN",
                                           "No column of the file is headed as the %s. Name it, as in --columns "
                                           "\"%s=HEADING\".",
                                           kFieldNames[needed], kFieldNames[needed]));
      }
    }
    places_ = found;
    return true;
  }

  std::optional<std::size_t> columnOf(std::size_t field, const std::vector<std::string>& fields,
                                      const std::array<std::optional<std::size_t>, kFields>& taken) const {
    const auto named = options_.columns.find(std::string(kFieldNames[field]));
    const auto isFree = [&](std::size_t place) {
      return std::ranges::none_of(taken, [place](const auto& other) { return other == place; });
    };
    if (named != options_.columns.end()) {
      for (std::size_t place = 0; place < fields.size(); ++place) {
        if (base::equalFold(fields[place], named->second)) return place;
      }
      throw PriceListError(
          base::Refusal("IDS_PRICE_LIST_HEADING", "No column of the file is headed \"%s\".", named->second));
    }
    for (const std::string& word : base::split(kHeadings[field], ",")) {
      for (std::size_t place = 0; place < fields.size(); ++place) {
        if (isFree(place) && base::fold(fields[place]).find(base::fold(word)) != std::string::npos) return place;
      }
    }
    return std::nullopt;
  }

  [[nodiscard]] std::string cell(Field field, const std::vector<std::string>& fields) const {
    const auto place = places_[field];
    return place && *place < fields.size() ? fields[*place] : std::string();
  }

  void takeRow(const std::vector<std::string>& fields) {
    if (++list_.rows > options_.mostRows) {
      throw PriceListError(
          base::Refusal("IDS_PRICE_LIST_ROWS", "The file has more than %d rows. Split it.", options_.mostRows));
    }
    const std::string prefix = cell(Prefix, fields);
    const auto price = amountOf(cell(Price, fields));
    if (!price) return leaveOut({"IDS_PRICE_LIST_NO_PRICE", "no price: \"%s\"", cell(Price, fields)});
    const auto terms = termsOf(fields, *price);
    if (!terms) return;
    try {
      for (std::string& one : internationalPrefixes(prefix, options_.countryCode)) {
        add({std::move(one), cell(Name, fields), *terms, line_});
      }
    } catch (const PriceListError& error) {
      leaveOut(error);
    }
  }

  std::optional<PriceTerms> termsOf(const std::vector<std::string>& fields, double price) {
    PriceTerms terms{.perMinute = price,
                     .firstSeconds = options_.firstSeconds,
                     .nextSeconds = options_.nextSeconds,
                     .currency = cell(Currency, fields).empty() ? options_.currency : cell(Currency, fields)};
    const std::string connection = cell(Connection, fields);
    const auto fee = connection.empty() ? std::optional(0.0) : amountOf(connection);
    if (!fee) {
      leaveOut({"IDS_PRICE_LIST_NO_AMOUNT", "no amount: \"%s\"", connection});
      return std::nullopt;
    }
    terms.connection = *fee;
    try {
      if (!cell(Increment, fields).empty())
        readIncrement(cell(Increment, fields), terms.firstSeconds, terms.nextSeconds);
    } catch (const PriceListError& error) {
      leaveOut(error);
      return std::nullopt;
    }
    return terms;
  }

  void add(PriceListEntry entry) {
    const auto [known, added] = known_.try_emplace(entry.prefix, list_.entries.size());
    if (added) {
      list_.entries.push_back(std::move(entry));
      return;
    }
    PriceListEntry& before = list_.entries[known->second];
    if (before.terms == entry.terms) {
      note({"IDS_PRICE_LIST_REPEATS", "repeats %s of line %d", entry.prefix, before.line});
    } else {
      note({"IDS_PRICE_LIST_ANOTHER", "another price for %s than line %d; this one holds", entry.prefix, before.line});
    }
    before = std::move(entry);
  }

  void note(const base::Refusal& what) { keepNote({line_, what, false}); }
  void leaveOut(const base::Refusal& why) { keepNote({line_, why, true}); }
  void keepNote(PriceListNote note) {
    ++list_.notesInAll;
    if (list_.notes.size() < PriceList::kMostNotes) list_.notes.push_back(std::move(note));
  }

  std::istream& in_;
  const PriceListOptions& options_;
  PriceList list_;
  std::int64_t line_ = 0;
  char separator_ = 0;
  bool toldCodepage_ = false;
  // Without headings: the documented order.
  std::array<std::optional<std::size_t>, kFields> places_ = {0, 1, 2, 3, 4, 5};
  std::unordered_map<std::string, std::size_t> known_;
};

base::Refusal noIncrement(std::string_view text) {
  return {"IDS_PRICE_LIST_INCREMENT", "no increment of seconds such as 60/1: \"%s\"", text};
}

int secondsOf(std::string_view text) {
  constexpr int kMostSeconds = 3600;
  int seconds = 0;
  text = base::trim(text);
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (text.empty() || fault != std::errc() || end != text.data() + text.size() || seconds < 1 ||
      seconds > kMostSeconds) {
    throw PriceListError(noIncrement(text));
  }
  return seconds;
}

}  // namespace

void readIncrement(std::string_view text, int& firstSeconds, int& nextSeconds) {
  const std::vector<std::string> parts = base::split(text, "/+");
  if (parts.empty() || parts.size() > 2) {
    throw PriceListError(noIncrement(text));
  }
  firstSeconds = secondsOf(parts.front());
  nextSeconds = secondsOf(parts.back());
}

PriceList readPriceList(std::istream& in, const PriceListOptions& options) {
  return Reader(in, options).read();
}

}  // namespace tariff
