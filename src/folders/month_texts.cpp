#include "folders/month_texts.h"

#include <cmath>

#include "base/printf.h"
#include "folders/month_page.h"

namespace folders {

std::string monthTitle(base::DateTime day, const ValueFormatter& formatter) {
  const base::DateTime::Parts parts = day.parts();
  return formatter.texts().TranslateFormat("IDS_MONTH_TITLE", formatter.monthName(parts.month), parts.year);
}

std::string MonthTexts::title() const {
  return monthTitle(figures_.first, formatter_);
}

std::string MonthTexts::measure() const {
  return figures_.month.price > 0 ? heading("IDS_PRICE") + ", " + services_.currencies.Default().name
                                  : heading("IDS_CALLS_COUNT");
}

std::string MonthTexts::money(double amount) const {
  return formatter_.money(amount) + " " + services_.currencies.Default().name;
}

std::string MonthTexts::change(double now, double then) const {
  if (then == 0) return "-";
  const auto percent = static_cast<std::int64_t>(std::llround((now - then) / std::abs(then) * 100));
  return base::format(percent > 0 ? "+%d%%" : "%d%%", percent);
}

std::vector<std::string> MonthTexts::comparisonHeadings() const {
  return {"",
          heading("IDS_MONTH_THIS"),
          heading("IDS_MONTH_BEFORE"),
          heading("IDS_MONTH_CHANGE"),
          heading("IDS_MONTH_LAST_YEAR"),
          heading("IDS_MONTH_CHANGE")};
}

std::vector<std::vector<std::string>> MonthTexts::comparison() const {
  const CallSums& now = figures_.month;
  const CallSums& before = figures_.before;
  const CallSums& year = figures_.lastYear;
  const auto row = [&](std::string_view label, double CallSums::*member, const auto& text) {
    return std::vector<std::string>{heading(label),       text(now.*member),
                                    text(before.*member), change(now.*member, before.*member),
                                    text(year.*member),   change(now.*member, year.*member)};
  };
  const auto counts = [&](std::string_view label, const auto& value, const auto& text) {
    return std::vector<std::string>{
        heading(label),      text(value(now)),
        text(value(before)), change(static_cast<double>(value(now)), static_cast<double>(value(before))),
        text(value(year)),   change(static_cast<double>(value(now)), static_cast<double>(value(year)))};
  };
  const auto number = [](std::int64_t value) { return std::to_string(value); };
  return {row("IDS_PRICE", &CallSums::price, [&](double amount) { return money(amount); }),
          counts(
              "IDS_CALLS_COUNT", [](const CallSums& sums) { return sums.calls; }, number),
          counts(
              "IDS_INCOMING", [](const CallSums& sums) { return sums.incoming; }, number),
          counts(
              "IDS_OUTGOING", [](const CallSums& sums) { return sums.calls - sums.incoming; }, number),
          counts(
              "IDS_DURATION", [](const CallSums& sums) { return sums.seconds; }, durationText)};
}

std::vector<Bar> MonthTexts::days() const {
  const bool priced = figures_.month.price > 0;
  std::vector<Bar> bars;
  for (const MonthGroup& day : figures_.days) {
    const auto calls = static_cast<double>(day.sums.calls);
    bars.push_back({day.label, priced ? day.sums.price : calls,
                    priced ? formatter_.money(day.sums.price) : std::to_string(day.sums.calls)});
  }
  return bars;
}

std::vector<MonthTexts::Dearest> MonthTexts::dearest() const {
  std::vector<Dearest> all;
  const auto add = [&](std::string_view what, const std::vector<MonthGroup>& groups) {
    if (groups.empty()) return;
    Dearest& dearest =
        all.emplace_back(Dearest{services_.texts.TranslateFormat("IDS_MONTH_DEAREST", heading(what)), {}});
    for (const MonthGroup& group : groups) {
      dearest.bars.push_back({group.label, group.sums.price, money(group.sums.price)});
    }
  };
  add("IDS_MONTH_EXTENSIONS", figures_.extensions);
  add("IDS_MONTH_DEPARTMENTS", figures_.departments);
  add("IDS_MONTH_DESTINATIONS", figures_.destinations);
  return all;
}

std::vector<MonthTexts::Sentence> MonthTexts::sentences() const {
  std::vector<Sentence> sentences;
  if (figures_.month.calls == 0) {
    sentences.push_back({{}, heading("IDS_MONTH_NO_CALLS")});
    addAlarms(sentences);
    return sentences;
  }
  if (const std::int64_t incoming = figures_.month.incoming; incoming > 0) {
    const std::int64_t answered = (incoming - figures_.missed) * 100 / incoming;
    sentences.push_back({heading("IDS_MONTH_MISSED"),
                         services_.texts.TranslateFormat("IDS_MONTH_MISSED_TEXT", figures_.missed, incoming, answered,
                                                         figures_.calledBack, figures_.answeredLater, figures_.open)});
  }
  sentences.push_back({heading("IDS_MONTH_LINES"), figures_.lines});
  addAlarms(sentences);
  return sentences;
}

void MonthTexts::addAlarms(std::vector<Sentence>& sentences) const {
  if (figures_.alarms.empty()) return;
  std::int64_t count = 0;
  std::string rules;
  for (const auto& [rule, alarms] : figures_.alarms) {
    count += alarms;
    rules += base::format("%s%s (%d)", rules.empty() ? "" : ", ", rule, alarms);
  }
  sentences.push_back({heading("IDS_MONTH_ALARMS"),
                       services_.texts.TranslateFormat("IDS_MONTH_ALARMS_TEXT", count, figures_.alarmsOpen, rules)});
}

}  // namespace folders
