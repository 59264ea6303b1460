#include "ui/settings/days_text.h"

#include <QRegularExpression>
#include <QStringList>
#include <array>

namespace ui {

namespace {

constexpr std::array<const char*, 7> kDayKeys = {"IDS_SUNDAY",   "IDS_MONDAY", "IDS_TUESDAY", "IDS_WEDNESDAY",
                                                 "IDS_THURSDAY", "IDS_FRIDAY", "IDS_SATURDAY"};
constexpr int kShortDay = 3;

// The week of those who set tariffs begins on Monday.
constexpr std::array<int, 7> kWeek = {1, 2, 3, 4, 5, 6, 0};

std::optional<int> dayOf(const QString& word, const Texts& texts) {
  std::optional<int> found;
  for (int day = 0; day < 7; ++day) {
    if (word.isEmpty() || !texts(kDayKeys[static_cast<std::size_t>(day)]).startsWith(word, Qt::CaseInsensitive)) {
      continue;
    }
    if (found) return std::nullopt;
    found = day;
  }
  return found;
}

}  // namespace

QString daysText(unsigned days, const Texts& texts) {
  const auto has = [days](std::size_t place) { return place < kWeek.size() && (days >> kWeek[place] & 1U) != 0; };
  const auto name = [&texts](std::size_t place) {
    return texts(kDayKeys[static_cast<std::size_t>(kWeek[place])]).left(kShortDay);
  };
  QStringList names;
  for (std::size_t place = 0; place < kWeek.size(); ++place) {
    if (!has(place)) continue;
    std::size_t last = place;
    while (has(last + 1)) ++last;
    // Two days are shorter one by one.
    if (last > place + 1) {
      names << name(place) + '-' + name(last);
      place = last;
    } else {
      names << name(place);
    }
  }
  return names.join(", ");
}

std::optional<unsigned> daysFromText(const QString& text, const Texts& texts) {
  static const QRegularExpression separators("[,; ]+");
  unsigned days = 0;
  for (const QString& word : text.split(separators, Qt::SkipEmptyParts)) {
    const auto first = dayOf(word.section('-', 0, 0), texts);
    const auto last = word.contains('-') ? dayOf(word.section('-', 1, 1), texts) : first;
    if (!first || !last) return std::nullopt;
    for (int day = *first;; day = (day + 1) % 7) {
      days |= 1U << day;
      if (day == *last) break;
    }
  }
  return days;
}

}  // namespace ui
