#include "ui/settings/tariff_pages.h"

#include <QDate>
#include <QRegularExpression>
#include <QTime>
#include <QVBoxLayout>
#include <array>

#include "ui/record_table.h"

namespace ui {

namespace {

using Tariffs = std::shared_ptr<EditedTariffs>;

constexpr std::array<const char*, 7> kDayKeys = {"IDS_SUNDAY",   "IDS_MONDAY", "IDS_TUESDAY", "IDS_WEDNESDAY",
                                                 "IDS_THURSDAY", "IDS_FRIDAY", "IDS_SATURDAY"};
constexpr int kShortDay = 3;
constexpr const char* kDateFormat = "dd.MM.yyyy";
constexpr const char* kTimeFormat = "HH:mm";

// A column over one member of the records of one list: `show` and `take` turn the member into text and back.
template <typename Record, typename Member>
RecordColumn column(const QString& caption, const Tariffs& tariffs, std::vector<Record> tariff::TariffTables::*list,
                    Member Record::*member, std::function<QString(const Member&)> show,
                    std::function<bool(const QString&, Member&)> take) {
  RecordColumn made;
  made.caption = caption;
  made.read = [tariffs, list, member, show](int row) {
    return show((tariffs->tables.*list)[static_cast<std::size_t>(row)].*member);
  };
  made.write = [tariffs, list, member, take](int row, const QString& text) {
    if (!take(text.trimmed(), (tariffs->tables.*list)[static_cast<std::size_t>(row)].*member)) return false;
    tariffs->changed = true;
    return true;
  };
  return made;
}

template <typename Record>
RecordColumn textColumn(const QString& caption, const Tariffs& tariffs, std::vector<Record> tariff::TariffTables::*list,
                        std::string Record::*member) {
  return column<Record, std::string>(
      caption, tariffs, list, member, [](const std::string& value) { return toQt(value); },
      [](const QString& text, std::string& value) {
        value = fromQt(text);
        return true;
      });
}

template <typename Record>
RecordColumn numberColumn(const QString& caption, const Tariffs& tariffs,
                          std::vector<Record> tariff::TariffTables::*list, std::int32_t Record::*member) {
  return column<Record, std::int32_t>(
      caption, tariffs, list, member, [](const std::int32_t& value) { return QString::number(value); },
      [](const QString& text, std::int32_t& value) {
        bool valid = false;
        const int number = text.toInt(&valid);
        if (valid && number >= 0) value = number;
        return valid && number >= 0;
      });
}

RecordColumn amountColumn(const QString& caption, const Tariffs& tariffs, double tariff::ChargeRow::*member) {
  return column<tariff::ChargeRow, double>(
      caption, tariffs, &tariff::TariffTables::charges, member,
      [](const double& value) { return QString::number(value, 'g', 12); },
      [](QString text, double& value) {
        bool valid = false;
        // A decimal comma is what many keyboards give.
        const double number = text.replace(',', '.').toDouble(&valid);
        if (valid) value = number;
        return valid;
      });
}

RecordColumn minuteColumn(const QString& caption, const Tariffs& tariffs, int tariff::ChargeRow::*member) {
  return column<tariff::ChargeRow, int>(
      caption, tariffs, &tariff::TariffTables::charges, member,
      [](const int& minute) { return QTime(minute / 60, minute % 60).toString(kTimeFormat); },
      [](const QString& text, int& minute) {
        const QTime time = QTime::fromString(text, "H:mm");
        if (time.isValid()) minute = time.hour() * 60 + time.minute();
        return time.isValid();
      });
}

RecordColumn daysColumn(const QString& caption, const Tariffs& tariffs, const Texts& texts) {
  return column<tariff::ChargeRow, unsigned>(
      caption, tariffs, &tariff::TariffTables::charges, &tariff::ChargeRow::days,
      [&texts](const unsigned& days) { return daysText(days, texts); },
      [&texts](const QString& text, unsigned& days) {
        const auto given = daysFromText(text, texts);
        if (given) days = *given;
        return given.has_value();
      });
}

RecordColumn dateColumn(const QString& caption, const Tariffs& tariffs) {
  return column<tariff::ProfileRow, std::optional<base::DateTime>>(
      caption, tariffs, &tariff::TariffTables::profiles, &tariff::ProfileRow::startDate,
      [](const std::optional<base::DateTime>& date) { return date ? toQt(date->format("%d.%m.%Y")) : QString(); },
      [](const QString& text, std::optional<base::DateTime>& date) {
        const QDate given = QDate::fromString(text, kDateFormat);
        if (given.isValid()) date = base::DateTime::fromParts(given.year(), given.month(), given.day());
        return given.isValid();
      });
}

template <typename Record>
RecordTableModel::Rows editableRows(const Tariffs& tariffs, std::vector<Record> tariff::TariffTables::*list,
                                    std::function<Record()> fresh) {
  return {
      [tariffs, list] { return static_cast<int>((tariffs->tables.*list).size()); },
      [tariffs, list, fresh](int at) {
        auto& records = tariffs->tables.*list;
        records.insert(records.begin() + at, fresh());
        tariffs->changed = true;
      },
      [tariffs, list](int at) {
        auto& records = tariffs->tables.*list;
        records.erase(records.begin() + at);
        tariffs->changed = true;
      },
  };
}

// A number that no record of the list has yet.
template <typename Record>
std::int32_t nextNumber(const std::vector<Record>& records, std::int32_t Record::*member) {
  std::int32_t largest = 0;
  for (const Record& record : records) largest = std::max(largest, record.*member);
  return largest + 1;
}

// What the parties keep of a provider; a provider that is new gets its entry on first use.
exchange::ProviderDefinition& partyOf(EditedParties& parties, const tariff::ProviderRow& provider) {
  for (auto& known : parties.providers) {
    if (known.id == provider.providerId) return known;
  }
  parties.providers.push_back({});
  parties.providers.back().id = provider.providerId;
  parties.providers.back().name = provider.name;
  return parties.providers.back();
}

SettingsPage providersPage(const Tariffs& tariffs, const std::shared_ptr<EditedParties>& parties, const Texts& texts) {
  const auto providerAt = [tariffs](int row) -> tariff::ProviderRow& {
    return tariffs->tables.providers[static_cast<std::size_t>(row)];
  };
  RecordColumn local;
  local.caption = texts("IDS_LOCAL_PREFIXES");
  local.read = [=](int row) { return toQt(partyOf(*parties, providerAt(row)).localPrefixes); };
  local.write = [=](int row, const QString& text) {
    partyOf(*parties, providerAt(row)).localPrefixes = fromQt(text);
    parties->changed = true;
    return true;
  };
  RecordColumn free;
  free.caption = texts("IDS_FREE_SECONDS");
  free.read = [=](int row) { return QString::number(partyOf(*parties, providerAt(row)).freeSeconds); };
  free.write = [=](int row, const QString& text) {
    bool valid = false;
    const int seconds = text.toInt(&valid);
    if (!valid || seconds < 0) return false;
    partyOf(*parties, providerAt(row)).freeSeconds = seconds;
    parties->changed = true;
    return true;
  };
  using Tables = tariff::TariffTables;
  auto* model = new RecordTableModel(
      {numberColumn(texts("IDS_NUMBER_ID"), tariffs, &Tables::providers, &tariff::ProviderRow::providerId),
       textColumn(texts("IDS_PROVIDER"), tariffs, &Tables::providers, &tariff::ProviderRow::name), local, free},
      editableRows<tariff::ProviderRow>(tariffs, &Tables::providers, [tariffs] {
        return tariff::ProviderRow{nextNumber(tariffs->tables.providers, &tariff::ProviderRow::providerId), {}};
      }));
  return {texts("IDS_PAGE_PROVIDERS"), new RecordTable(model, "providersTable", texts), nullptr, nullptr};
}

SettingsPage profilesPage(const Tariffs& tariffs, const Texts& texts) {
  using Tables = tariff::TariffTables;
  using Profile = tariff::ProfileRow;
  auto* model =
      new RecordTableModel({numberColumn(texts("IDS_NUMBER_ID"), tariffs, &Tables::profiles, &Profile::profileId),
                            textColumn(texts("IDS_PROFILE"), tariffs, &Tables::profiles, &Profile::name),
                            dateColumn(texts("IDS_VALID_FROM"), tariffs),
                            numberColumn(texts("IDS_PROVIDER_ID"), tariffs, &Tables::profiles, &Profile::providerId),
                            numberColumn(texts("IDS_FREE_SECONDS"), tariffs, &Tables::profiles, &Profile::freeMinutes)},
                           editableRows<Profile>(tariffs, &Tables::profiles, [tariffs] {
                             Profile profile;
                             profile.profileId = nextNumber(tariffs->tables.profiles, &Profile::profileId);
                             profile.startDate = base::DateTime::fromParts(2000, 1, 1);
                             return profile;
                           }));
  return {texts("IDS_PAGE_PROFILES"), new RecordTable(model, "profilesTable", texts), nullptr, nullptr};
}

SettingsPage prefixesPage(const Tariffs& tariffs, const Texts& texts) {
  using Tables = tariff::TariffTables;
  using Prefix = tariff::PrefixRow;
  auto* model = new RecordTableModel(
      {textColumn(texts("IDS_PREFIX"), tariffs, &Tables::prefixes, &Prefix::prefix),
       numberColumn(texts("IDS_PROVIDER_ID"), tariffs, &Tables::prefixes, &Prefix::providerId),
       numberColumn(texts("IDS_DESTINATION_ID"), tariffs, &Tables::prefixes, &Prefix::destinationId)},
      editableRows<Prefix>(tariffs, &Tables::prefixes, [] { return Prefix(); }));
  return {texts("IDS_PAGE_DESTINATIONS"), new RecordTable(model, "prefixesTable", texts), nullptr, nullptr};
}

SettingsPage chargesPage(const Tariffs& tariffs, const Texts& texts) {
  using Tables = tariff::TariffTables;
  using Charge = tariff::ChargeRow;
  auto* model = new RecordTableModel(
      {numberColumn(texts("IDS_DESTINATION_ID"), tariffs, &Tables::charges, &Charge::destinationId),
       numberColumn(texts("IDS_PROFILE_ID"), tariffs, &Tables::charges, &Charge::profileId),
       daysColumn(texts("IDS_DAYS"), tariffs, texts), minuteColumn(texts("IDS_FROM"), tariffs, &Charge::startMinute),
       minuteColumn(texts("IDS_TO"), tariffs, &Charge::endMinute),
       amountColumn(texts("IDS_UNIT_PRICE"), tariffs, &Charge::value),
       numberColumn(texts("IDS_UNIT_HUNDREDTHS"), tariffs, &Tables::charges, &Charge::resolution),
       numberColumn(texts("IDS_MINIMUM_SECONDS"), tariffs, &Tables::charges, &Charge::minimumSeconds),
       amountColumn(texts("IDS_FIXED_AMOUNT"), tariffs, &Charge::fixedAmount),
       textColumn(texts("IDS_CURRENCY"), tariffs, &Tables::charges, &Charge::currency),
       numberColumn(texts("IDS_MINIMUM_DIGITS"), tariffs, &Tables::charges, &Charge::minimumDigits)},
      editableRows<Charge>(tariffs, &Tables::charges, [tariffs] {
        // The next band is mostly like the one before it.
        Charge charge = tariffs->tables.charges.empty() ? Charge() : tariffs->tables.charges.back();
        if (charge.days == 0) charge.days = 0x7F;
        return charge;
      }));
  const auto check = [tariffs, &texts]() -> QString {
    for (const Charge& charge : tariffs->tables.charges) {
      if (charge.days == 0 || charge.currency.empty() || charge.endMinute < charge.startMinute) {
        return texts.format("IDS_SETTINGS_BAD_BAND", charge.destinationId, charge.profileId);
      }
    }
    return {};
  };
  return {texts("IDS_PAGE_CHARGES"), new RecordTable(model, "chargesTable", texts), check, nullptr};
}

SettingsPage areasPage(const Tariffs& tariffs, const Texts& texts) {
  using Tables = tariff::TariffTables;
  using Area = tariff::AreaRow;
  auto* model = new RecordTableModel({textColumn(texts("IDS_PREFIX"), tariffs, &Tables::areas, &Area::prefix),
                                      textColumn(texts("IDS_AREA"), tariffs, &Tables::areas, &Area::name),
                                      textColumn(texts("IDS_COUNTRY"), tariffs, &Tables::areas, &Area::country)},
                                     editableRows<Area>(tariffs, &Tables::areas, [] { return Area(); }));
  return {texts("IDS_AREAS"), new RecordTable(model, "areasTable", texts), nullptr, nullptr};
}

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

std::vector<SettingsPage> tariffPages(std::shared_ptr<EditedTariffs> tariffs, std::shared_ptr<EditedParties> parties,
                                      const Texts& texts) {
  return {providersPage(tariffs, parties, texts), profilesPage(tariffs, texts), prefixesPage(tariffs, texts),
          chargesPage(tariffs, texts), areasPage(tariffs, texts)};
}

QString daysText(unsigned days, const Texts& texts) {
  QStringList names;
  // The week of those who set tariffs begins on Monday.
  for (const int day : {1, 2, 3, 4, 5, 6, 0}) {
    if ((days >> day & 1U) != 0) names << texts(kDayKeys[static_cast<std::size_t>(day)]).left(kShortDay);
  }
  return names.join(", ");
}

std::optional<unsigned> daysFromText(const QString& text, const Texts& texts) {
  unsigned days = 0;
  for (const QString& word : text.split(QRegularExpression("[,; ]+"), Qt::SkipEmptyParts)) {
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
