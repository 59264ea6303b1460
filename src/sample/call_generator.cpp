#include "sample/call_generator.h"

#include <algorithm>
#include <array>

#include "base/printf.h"
#include "sample/company.h"
#include "sample/directory.h"
#include "sample/romania.h"
#include "sample/world.h"

namespace sample {

namespace {

// Calls of a week-day by hour; a Saturday has a sixth of them, a Sunday a twelfth.
constexpr std::array kHourWeights = {1,  1,  1,   1,   1,  2,  6,  25, 80, 110, 115, 100,
                                     70, 85, 105, 100, 80, 45, 20, 10, 6,  4,   2,   1};
constexpr int dayWeight(int weekday) {
  return weekday == 0 ? 1 : weekday == 6 ? 2 : 12;
}

// Departments that talk to the outside all day.
int busyness(std::string_view department) {
  if (department == "Suport clienți" || department == "Recepție") return 4;
  if (department == "Vânzări") return 3;
  return 1;
}

// Seconds that one pulse buys; 0 for numbers that cost nothing.
int secondsPerPulse(std::string_view number) {
  if (number.starts_with("00")) return 4;
  if (number.starts_with("080") || number.size() < 6) return 0;
  if (number.starts_with("07")) return 10;
  return number.starts_with("0") ? 20 : 60;
}

void setStart(exchange::CallRecord& record, base::DateTime start, bool twelveHourClock) {
  record.setStart(start);
  if (twelveHourClock) {
    record.clockMarker = static_cast<unsigned char>(record.hour < 12 ? 'A' : 'P');
    record.hour = record.hour % 12 == 0 ? 12 : record.hour % 12;
  }
}

}  // namespace

CallGenerator::CallGenerator(const CallPlan& plan) : plan_(plan), random_(plan.seed) {
  for (const Department& department : departments()) {
    for (int i = 0; i < static_cast<int>(department.people.size()); ++i) {
      extensions_.insert(extensions_.end(), static_cast<std::size_t>(busyness(department.name)),
                         department.firstExtension + i);
    }
  }
  for (int day = plan_.days - 1; day >= 0; --day) {
    const int weight = dayWeight(plan_.lastDay.plusDays(-day).weekday());
    for (const int hourWeight : kHourWeights) {
      hourWeights_.push_back(hourWeight * weight);
      totalWeight_ += hourWeights_.back() * std::int64_t{3600};
    }
  }
}

// Call i of n falls into the i-th of n equal parts of the whole weight: sorted by time without sorting.
base::DateTime CallGenerator::nextStart() {
  const std::int64_t part = totalWeight_ / plan_.count;
  const std::int64_t position = made_ * part + made_ * (totalWeight_ % plan_.count) / plan_.count +
                                random_.below64(std::max<std::int64_t>(part, 1));
  while (hour_ + 1 < hourWeights_.size() && weightBefore_ + hourWeights_[hour_] * std::int64_t{3600} <= position) {
    weightBefore_ += hourWeights_[hour_++] * std::int64_t{3600};
  }
  const std::int64_t second = std::min<std::int64_t>((position - weightBefore_) / hourWeights_[hour_], 3599);
  const base::DateTime firstHour = plan_.lastDay.midnight().plusDays(1 - plan_.days);
  return firstHour.plusSeconds(static_cast<std::int64_t>(hour_) * 3600 + second);
}

std::string CallGenerator::next() {
  exchange::CallRecord record;
  setStart(record, nextStart(), random_.chance(3));
  ++made_;
  record.extension = random_.pick(std::span<const int>(extensions_));
  if (random_.chance(30)) {
    fillIncoming(record);
  } else {
    fillOutgoing(record);
  }
  if (random_.chance(10)) record.cd = random_.chance(50) ? "T" : "C2";
  const bool extended = random_.chance(8);
  if (extended) {
    record.trunkText = std::to_string(record.trunk);
    record.extensionText = std::to_string(record.extension);
  }
  constexpr int kAsciiOnly = 1252;  // nothing but digits and letters A-Z is written
  return exchange::encodeRecord(record, extended, kAsciiOnly);
}

void CallGenerator::fillIncoming(exchange::CallRecord& record) {
  record.incoming = 1;
  record.trunk = 1 + random_.below(6);
  record.ring = 2 + random_.below(24);
  record.redirected = random_.chance(8) ? 1 : 0;
  if (!random_.chance(6)) {  // the others hide their number
    record.dialledNumber = random_.chance(65) ? contactNumber(random_.skewedBelow(kContacts)) : strangersNumber();
  }
  if (!random_.chance(15)) record.setDuration(random_.talkSeconds());
}

void CallGenerator::fillOutgoing(exchange::CallRecord& record) {
  std::string& number = record.dialledNumber;
  const int kind = random_.below(1000);
  if (kind < 520) {
    number = contactNumber(random_.skewedBelow(kContacts));
  } else if (kind < 925) {
    number = strangersNumber();
  } else if (kind < 965) {
    number = numberAbroad();
  } else if (kind < 990) {
    const Area& area = random_.pick(shortNumbers());
    number = area.code;
    if (number == "9") number += digits(2);
  } else if (kind < 996) {
    number = random_.pick(hiddenNumbers());
  } else {
    number = homeNumber(random_.pick(kind < 998 ? freeNumbers() : premiumNumbers()));
  }
  record.trunk = trunkFor(number);
  if (!random_.chance(9)) record.setDuration(random_.talkSeconds());
  const int duration = record.durationInSeconds();
  const bool metered = sample::trunks()[static_cast<std::size_t>(record.trunk) - 1].pulses;
  const int perPulse = secondsPerPulse(number);
  if (metered && duration > 0 && perPulse > 0) record.pulses = 1 + duration / perPulse;
  if (random_.chance(25)) record.accountCode = accountCode();
  record.redirected = random_.chance(2) ? 1 : 0;
  // A code that hides the own number; the price looks at the number after it.
  if (random_.below(200) == 0) number.insert(0, "*31*");
}

// The parts of a number are drawn one statement after the other: the order of draws within an expression is open.
std::string CallGenerator::homeNumber(const Area& area) {
  std::string number = base::format("0%s", area.code);
  number += digits(static_cast<int>(10 - number.size()));
  return number;
}

// Somebody in Romania who is in the phonebook, or in no book at all.
std::string CallGenerator::strangersNumber() {
  const int kind = random_.below(10);
  if (kind < 3) {
    const PhonebookTable& table = random_.pick(std::span<const PhonebookTable>(phonebookTables()));
    const Subscriber person = subscriber(table, random_.below(kSubscribersPerTable));
    if (table.areaCode == kAreaCode && random_.chance(50)) return std::to_string(person.number);
    return base::format("0%s%d", table.areaCode, person.number);
  }
  if (kind < 7) return homeNumber(random_.pick(mobileNetworks().subspan(2, 5)));
  if (kind < 8) {
    std::string number = std::to_string(3 + random_.below(4));
    number += digits(6);
    return number;
  }
  return homeNumber(random_.pick(landlineAreas()));
}

std::string CallGenerator::numberAbroad() {
  std::string number = "00";
  if (random_.chance(75)) {
    number += cities()[static_cast<std::size_t>(random_.skewedBelow(static_cast<int>(cities().size())))].prefix;
  } else {
    number += random_.pick(countries()).code;
  }
  number += digits(7);
  return number;
}

std::string CallGenerator::digits(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += static_cast<char>('0' + random_.below(10));
  return text;
}

// Most calls to mobiles leave through the mobile gateway.
int CallGenerator::trunkFor(const std::string& number) {
  if (number.starts_with("07") && random_.chance(60)) return 5 + random_.below(2);
  int lot = random_.below(100);
  for (const Trunk& trunk : sample::trunks()) {
    if (lot < trunk.share) return trunk.number;
    lot -= trunk.share;
  }
  return 1;
}

std::string CallGenerator::accountCode() {
  std::string code(random_.pick(sample::clients()).account);
  for (char& c : code) {
    if (c == '?') c = static_cast<char>('0' + random_.below(10));
  }
  return code;
}

}  // namespace sample
