#include "filter/description.h"

#include <array>

#include "base/printf.h"
#include "base/text.h"

namespace filter {

namespace {

constexpr std::string_view kShownPeriod = "%d.%m.%Y %H:%M";

std::string shownArea(const FilterSettings& settings) {
  return settings.area.empty() ? std::string(kLocalArea) : settings.area;
}

std::string shownPeriod(std::string_view stored, std::string_view fallback) {
  return parsePeriod(stored, fallback).format(kShownPeriod);
}

// Builds the plain description a line at a time.
class Lines {
 public:
  explicit Lines(const foundation::LanguageFile& texts) : texts_(texts) {}

  void label(std::string_view key) { pieces_.push_back({texts_.Translate(key) + "\n", false}); }
  void line(std::string_view key, std::string value, std::string_view unitKey = {}) {
    pieces_.push_back({texts_.Translate(key) + ": ", false});
    if (!unitKey.empty()) value += " " + texts_.Translate(unitKey);
    pieces_.push_back({std::move(value) + "\n", true});
  }
  std::vector<DescriptionPiece> take() { return std::move(pieces_); }

 private:
  const foundation::LanguageFile& texts_;
  std::vector<DescriptionPiece> pieces_;
};

}  // namespace

std::string FilterDescription::label(std::string_view key) const {
  return base::escapeHtml(texts_.Translate(key));
}

std::string FilterDescription::html(jet::Database& main) {
  const FilterSettings settings = filter_.settings();
  filter_.keepNumberFilter(settings);
  std::string page;
  if (settings.onFilter == 1) {
    page += "<font size=\"-1\"><b>" + label("IDS_FILTER_FIELDS") + "</b><ul>";
    appendItems(page, settings);
  }
  appendRates(page, main);
  return page + "</ul></font><hr>";
}

// Client, folder, department and name show only for a switch of 1, although the condition takes any non-zero value of
// the first two.
void FilterDescription::appendItems(std::string& page, const FilterSettings& settings) {
  const DisplayNames names = readDisplayNames(filter_.config(), settings);
  const auto item = [&](std::string_view format, std::string_view key, std::string_view value) {
    page += base::format(format, label(key), base::escapeHtml(value));
  };
  constexpr std::string_view kColon = "<li>%s: <b>%s</b></li>";
  constexpr std::string_view kBlank = "<li>%s <b>%s</b></li>";

  if (settings.hidden != 0) page += "<li>" + label("IDS_FILTER_EXCLUDE_HIDDEN") + "</li>";
  if (settings.onIncoming != 0) page += "<li>" + label("IDS_FILTER_EXCLUDE_INCOMING") + "</li>";
  if (settings.onOutgoing != 0) page += "<li>" + label("IDS_FILTER_EXCLUDE_OUTGOING") + "</li>";
  if (settings.onExtension == 1) item(kColon, "IDS_EXTENSION", names.extension);
  if (settings.onTrunk == 1) page += base::format("<li>%s <b>%d</b></li>", label("IDS_TRUNK"), settings.trunk);
  if (settings.onArea != 0) item(kBlank, "IDS_FILTER_AREA", shownArea(settings));
  if (settings.onAccount == 1) item(kBlank, "IDS_FILTER_ACCOUNT", settings.accountName);
  if (settings.onClient == 1) item(kColon, "IDS_CLIENT", names.client);
  if (settings.onFolder == 1) item(kColon, "IDS_FOLDER", names.folder);
  if (settings.onDepartment == 1) item(kColon, "IDS_DEPARTMENT", names.department);
  if (settings.onName == 1) item(kBlank, "IDS_FILTER_NAME", settings.name);
  if (settings.onPeriod != 0) {
    page += base::format("<li>%s <b>%s</b> %s <b>%s</b></li>", label("IDS_FILTER_BETWEEN"),
                         shownPeriod(settings.intervalStart, foundation::kDefaultPeriodStart), label("IDS_AND"),
                         shownPeriod(settings.intervalEnd, foundation::kDefaultPeriodEnd));
  }
  if (!settings.numberPrefix.empty()) item(kBlank, "IDS_FILTER_NUMBER", settings.numberPrefix);
  if (!settings.number.empty()) item(kBlank, "IDS_FILTER_NUMBER_EXACT", settings.number);
  if (!settings.country.empty()) item(kBlank, "IDS_COUNTRY", settings.country);
  if (!settings.provider.empty()) item(kBlank, "IDS_PROVIDER", settings.provider);
  if (settings.onMinDuration != 0) {
    page += base::format("<li>%s <b>%d</b> %s</li>", label("IDS_FILTER_DURATION"), settings.minDuration,
                         label("IDS_SECONDS"));
  }
}

void FilterDescription::appendRates(std::string& page, jet::Database& main) {
  page += "<font size=\"-1\"><b></b><ul>";
  const std::string& reference = currencies_.Default().name;
  const std::string sql = base::format("select distinct(valuta) from Calls where %s", filter_.runnableCondition());
  main.forEachRow(sql, [&](const std::vector<jet::Value>& row) {
    const std::string currency = row.front().toText();
    if (currency.empty() || base::equalFoldAscii(currency, reference)) return true;
    page += base::format("<li>%s: <b>%s %s/%s</b></li>", label("IDS_EXCHANGE_RATE"),
                         base::format("%f", currencies_.rate(currency)), base::escapeHtml(reference),
                         base::escapeHtml(currency));
    return true;
  });
}

std::vector<DescriptionPiece> FilterDescription::pieces() {
  const FilterSettings settings = filter_.settings();
  const DisplayNames names = readDisplayNames(filter_.config(), settings);
  Lines lines(texts_);
  if (settings.onFilter != 1) {
    lines.label("IDS_FILTER_OFF");
    return lines.take();
  }
  lines.label("IDS_FILTER_ON");
  if (settings.hidden != 0) lines.label("IDS_FILTER_HIDDEN");
  if (settings.onIncoming != 0) lines.label("IDS_FILTER_EXCLUDE_INCOMING");
  if (settings.onOutgoing != 0) lines.label("IDS_FILTER_EXCLUDE_OUTGOING");
  if (settings.onExtension == 1) lines.line("IDS_FILTER_EXTENSION", names.extension);
  if (settings.onTrunk == 1) lines.line("IDS_TRUNK", std::to_string(settings.trunk));
  if (settings.onArea != 0) lines.line("IDS_FILTER_AREA", shownArea(settings));
  if (settings.onAccount == 1) lines.line("IDS_FILTER_ACCOUNT", settings.accountName);
  if (settings.onClient == 1) lines.line("IDS_FILTER_CLIENT", names.client);
  if (settings.onFolder == 1) lines.line("IDS_FILTER_FILE", names.folder);
  if (settings.onDepartment == 1) lines.line("IDS_FILTER_DEPARTMENT", names.department);
  if (settings.onName == 1) lines.line("IDS_FILTER_NAME", settings.name);
  if (settings.onPeriod != 0) {
    // The end's default is this description's own, so the stored text is read again.
    const std::string end =
        filter_.config().ReadConfigString(foundation::keys::filter::IntervalEnd, foundation::kDescribedPeriodEnd);
    lines.line("IDS_FILTER_PERIOD", shownPeriod(settings.intervalStart, foundation::kDefaultPeriodStart) + " si\n" +
                                        shownPeriod(end, foundation::kDescribedPeriodEnd));
  }
  if (!settings.numberPrefix.empty()) lines.line("IDS_FILTER_PHONE", settings.numberPrefix);
  if (!settings.number.empty()) lines.line("IDS_FILTER_PHONE", settings.number);
  if (!settings.country.empty()) lines.line("IDS_COUNTRY", settings.country);
  if (!settings.provider.empty()) lines.line("IDS_PROVIDER", settings.provider);
  if (settings.onMinDuration != 0) {
    lines.line("IDS_FILTER_DURATION", std::to_string(settings.minDuration), "IDS_FILTER_SECONDS");
  }
  return lines.take();
}

std::string FilterDescription::plainText() {
  std::string text;
  for (const DescriptionPiece& piece : pieces()) text += piece.text;
  return text;
}

void FilterDescription::writeTo(CRTFBuilder& builder) {
  constexpr int kBlue = 3;
  for (const DescriptionPiece& piece : pieces()) {
    builder << bold(piece.isValue) << color(piece.isValue ? kBlue : 0) << piece.text;
  }
}

std::string FilterDescription::rtf() {
  CRTFBuilder builder;
  writeTo(builder);
  return builder.text();
}

}  // namespace filter
