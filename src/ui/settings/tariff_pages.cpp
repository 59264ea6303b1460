#include "ui/settings/tariff_pages.h"

#include <QDate>
#include <QTime>

#include "ui/settings/days_text.h"
#include "ui/settings/table_columns.h"

namespace ui {

namespace {

using Tariffs = std::shared_ptr<EditedTariffs>;
using Tables = tariff::TariffTables;

constexpr const char* kDateFormat = "dd.MM.yyyy";
constexpr const char* kTimeFormat = "HH:mm";
constexpr double kHundredths = 100;
constexpr unsigned kWorkdays = 0x3E;
constexpr unsigned kWeekend = 0x41;
constexpr unsigned kAllDays = 0x7F;

template <typename Record>
EditedList<Record> listOf(const Tariffs& tariffs, std::vector<Record> Tables::*member) {
  return {[tariffs, member]() -> std::vector<Record>& { return tariffs->tables.*member; },
          [tariffs] { tariffs->touch(); }};
}

// A number that no record of the list has yet.
template <typename Record>
std::int32_t nextNumber(const std::vector<Record>& records, std::int32_t Record::*member) {
  std::int32_t largest = 0;
  for (const Record& record : records) largest = std::max(largest, record.*member);
  return largest + 1;
}

std::optional<double> decimal(QString text) {
  bool valid = false;
  // A decimal comma is what many keyboards give.
  const double number = text.replace(',', '.').toDouble(&valid);
  return valid && number >= 0 ? std::optional<double>(number) : std::nullopt;
}

RecordColumn amountColumn(const QString& caption, const EditedList<tariff::ChargeRow>& charges,
                          double tariff::ChargeRow::*member, const Texts& texts) {
  RecordColumn column = memberColumn<tariff::ChargeRow, double>(
      caption, charges, member, [](const double& value) { return QString::number(value, 'g', 12); },
      [](const QString& text, double& value) {
        const auto given = decimal(text);
        if (given) value = *given;
        return given.has_value();
      });
  column.rightAligned = true;
  column.hint = texts("IDS_HINT_AMOUNT");
  return column;
}

// Kept in hundredths of a second, shown in seconds.
RecordColumn unitColumn(const EditedList<tariff::ChargeRow>& charges, const Texts& texts) {
  RecordColumn column = memberColumn<tariff::ChargeRow, std::int32_t>(
      texts("IDS_UNIT_SECONDS"), charges, &tariff::ChargeRow::resolution,
      [](const std::int32_t& value) { return QString::number(value / kHundredths, 'g', 10); },
      [](const QString& text, std::int32_t& value) {
        const auto given = decimal(text);
        if (!given || *given > 1e6) return false;
        value = qRound(*given * kHundredths);
        return true;
      });
  column.rightAligned = true;
  column.hint = texts("IDS_HINT_UNIT");
  return column;
}

RecordColumn minuteColumn(const QString& caption, const EditedList<tariff::ChargeRow>& charges,
                          int tariff::ChargeRow::*member, const Texts& texts) {
  RecordColumn column = memberColumn<tariff::ChargeRow, int>(
      caption, charges, member, [](const int& minute) { return QTime(minute / 60, minute % 60).toString(kTimeFormat); },
      [](const QString& text, int& minute) {
        const QTime time = QTime::fromString(text, "H:mm");
        if (time.isValid()) minute = time.hour() * 60 + time.minute();
        return time.isValid();
      });
  column.hint = texts("IDS_HINT_MINUTE");
  return column;
}

RecordColumn daysColumn(const EditedList<tariff::ChargeRow>& charges, const Texts& texts) {
  RecordColumn column = memberColumn<tariff::ChargeRow, unsigned>(
      texts("IDS_DAYS"), charges, &tariff::ChargeRow::days,
      [&texts](const unsigned& days) { return daysText(days, texts); },
      [&texts](const QString& text, unsigned& days) {
        const auto given = daysFromText(text, texts);
        if (given) days = *given;
        return given && *given != 0;
      });
  column.choices = [&texts](int) {
    return QStringList{daysText(kWorkdays, texts), daysText(kWeekend, texts), daysText(kAllDays, texts)};
  };
  column.typeable = true;
  column.hint = texts.format("IDS_HINT_DAYS", fromQt(daysText(kWorkdays, texts)), fromQt(daysText(kWeekend, texts)));
  return column;
}

RecordColumn dateColumn(const EditedList<tariff::ProfileRow>& profiles, const Texts& texts) {
  RecordColumn column = memberColumn<tariff::ProfileRow, std::optional<base::DateTime>>(
      texts("IDS_VALID_FROM"), profiles, &tariff::ProfileRow::startDate,
      [](const std::optional<base::DateTime>& date) { return date ? toQt(date->format("%d.%m.%Y")) : QString(); },
      [](const QString& text, std::optional<base::DateTime>& date) {
        const QDate given = QDate::fromString(text, kDateFormat);
        if (given.isValid()) date = base::DateTime::fromParts(given.year(), given.month(), given.day());
        return given.isValid();
      });
  column.hint = texts("IDS_HINT_DATE");
  return column;
}

// A reference by number, shown and chosen by name.
template <typename Record>
RecordColumn referenceColumn(const QString& caption, const EditedList<Record>& records, std::int32_t Record::*member,
                             std::function<QString(std::int32_t)> name,
                             std::function<std::optional<std::int32_t>(const QString&)> find,
                             std::function<QStringList()> names, const QString& hint) {
  RecordColumn column = memberColumn<Record, std::int32_t>(
      caption, records, member, [name](const std::int32_t& id) { return name(id); },
      [find](const QString& text, std::int32_t& id) {
        const auto found = find(text);
        if (found) id = *found;
        return found.has_value();
      });
  column.choices = [names](int) { return names(); };
  column.hint = hint;
  return column;
}

template <typename Record>
RecordColumn providerColumn(const Tariffs& tariffs, const EditedList<Record>& records, std::int32_t Record::*member,
                            const Texts& texts) {
  return referenceColumn<Record>(
      texts("IDS_PROVIDER"), records, member, [tariffs](std::int32_t id) { return tariffs->providerName(id); },
      [tariffs](const QString& text) { return tariffs->providerOf(text); },
      [tariffs] { return tariffs->providerNames(); }, texts("IDS_HINT_PROVIDER"));
}

SettingsPage providersPage(const Tariffs& tariffs, const std::shared_ptr<EditedParties>& parties, const Texts& texts) {
  using Provider = tariff::ProviderRow;
  const auto providers = listOf(tariffs, &Tables::providers);
  const auto partyAt = [=](int row) -> exchange::ProviderDefinition& {
    return parties->ownProvider(providers.at(row).providerId);
  };
  RecordColumn local;
  local.caption = texts("IDS_LOCAL_PREFIXES");
  local.hint = texts("IDS_HINT_LOCAL_PREFIXES");
  local.read = [=](int row) { return toQt(parties->provider(providers.at(row).providerId).localPrefixes); };
  local.write = [=](int row, const QString& text) {
    partyAt(row).localPrefixes = fromQt(text.trimmed());
    return true;
  };
  RecordColumn free;
  free.caption = texts("IDS_FREE_SECONDS");
  free.hint = texts("IDS_HINT_FREE_SECONDS");
  free.rightAligned = true;
  free.read = [=](int row) { return QString::number(parties->provider(providers.at(row).providerId).freeSeconds); };
  free.write = [=](int row, const QString& text) {
    bool valid = false;
    const int seconds = text.toInt(&valid);
    if (valid && seconds >= 0) partyAt(row).freeSeconds = seconds;
    return valid && seconds >= 0;
  };
  RecordTableModel::Rows rows = editableRows<Provider>(providers, [providers] {
    return Provider{nextNumber(providers.list(), &Provider::providerId), {}};
  });
  // Two columns are kept with the parties.
  rows.keep = [parties, bringBackRows = rows.keep]() -> std::function<void()> {
    return [parties, rowsBefore = bringBackRows(), before = parties->lists.providers] {
      rowsBefore();
      parties->lists.providers = before;
    };
  };
  auto* model =
      new RecordTableModel({keyColumn(texts("IDS_NUMBER_ID"), providers, &Provider::providerId, texts("IDS_HINT_KEY")),
                            textColumn(texts("IDS_PROVIDER"), providers, &Provider::name), local, free},
                           std::move(rows));
  SettingsPage page =
      tablePage(texts("IDS_PAGE_PROVIDERS"), model, "providersTable", texts("IDS_HINT_PROVIDERS"), texts);
  page.reported = true;
  page.check = [providers, &texts]() -> QString {
    for (const Provider& provider : providers.list()) {
      if (provider.name.empty()) return texts.format("IDS_SETTINGS_NAMELESS_PROVIDER", provider.providerId);
    }
    return {};
  };
  return page;
}

SettingsPage profilesPage(const Tariffs& tariffs, const Texts& texts) {
  using Profile = tariff::ProfileRow;
  const auto profiles = listOf(tariffs, &Tables::profiles);
  auto* model =
      new RecordTableModel({keyColumn(texts("IDS_NUMBER_ID"), profiles, &Profile::profileId, texts("IDS_HINT_KEY")),
                            textColumn(texts("IDS_PROFILE"), profiles, &Profile::name),
                            providerColumn(tariffs, profiles, &Profile::providerId, texts), dateColumn(profiles, texts),
                            numberColumn(texts("IDS_FREE_SECONDS"), profiles, &Profile::freeMinutes,
                                         texts("IDS_HINT_PROFILE_FREE_SECONDS"))},
                           editableRows<Profile>(profiles, [tariffs] {
                             Profile profile;
                             profile.profileId = nextNumber(tariffs->tables.profiles, &Profile::profileId);
                             profile.startDate = base::DateTime::fromParts(2000, 1, 1);
                             if (!tariffs->tables.providers.empty())
                               profile.providerId = tariffs->tables.providers.back().providerId;
                             return profile;
                           }));
  SettingsPage page = tablePage(texts("IDS_PAGE_PROFILES"), model, "profilesTable", texts("IDS_HINT_PROFILES"), texts);
  page.reported = true;
  return page;
}

SettingsPage prefixesPage(const Tariffs& tariffs, const Texts& texts) {
  using Prefix = tariff::PrefixRow;
  const auto prefixes = listOf(tariffs, &Tables::prefixes);
  RecordColumn area;
  area.caption = texts("IDS_AREA");
  area.hint = texts("IDS_HINT_PREFIX_AREA");
  area.read = [=](int row) { return tariffs->areaOf(prefixes.at(row).prefix); };
  auto* model = new RecordTableModel(
      {textColumn(texts("IDS_PREFIX"), prefixes, &Prefix::prefix), area,
       providerColumn(tariffs, prefixes, &Prefix::providerId, texts),
       numberColumn(texts("IDS_DESTINATION_ID"), prefixes, &Prefix::destinationId, texts("IDS_HINT_DESTINATION"))},
      editableRows<Prefix>(prefixes, [tariffs] {
        Prefix prefix;
        // Mostly one more prefix of the provider that was entered last, to a destination of its own.
        if (!tariffs->tables.prefixes.empty()) prefix.providerId = tariffs->tables.prefixes.back().providerId;
        if (!tariffs->hasProvider(prefix.providerId) && !tariffs->tables.providers.empty()) {
          prefix.providerId = tariffs->tables.providers.back().providerId;
        }
        prefix.destinationId = nextNumber(tariffs->tables.prefixes, &Prefix::destinationId);
        return prefix;
      }));
  return tablePage(texts("IDS_PAGE_DESTINATIONS"), model, "prefixesTable", texts("IDS_HINT_DESTINATIONS"), texts);
}

RecordColumn destinationColumn(const Tariffs& tariffs, const EditedList<tariff::ChargeRow>& charges,
                               const Texts& texts) {
  RecordColumn column = referenceColumn<tariff::ChargeRow>(
      texts("IDS_DESTINATION_ID"), charges, &tariff::ChargeRow::destinationId,
      [tariffs](std::int32_t id) { return tariffs->destinationLabel(id); }, &EditedTariffs::destinationOf,
      [tariffs] { return tariffs->destinationLabels(); }, texts("IDS_HINT_DESTINATION"));
  column.typeable = true;
  return column;
}

RecordColumn currencyColumn(const EditedList<tariff::ChargeRow>& charges, const QStringList& currencies,
                            const Texts& texts) {
  RecordColumn column = memberColumn<tariff::ChargeRow, std::string>(
      texts("IDS_CURRENCY"), charges, &tariff::ChargeRow::currency, [](const std::string& code) { return toQt(code); },
      [currencies](const QString& text, std::string& code) {
        const auto found = std::find_if(currencies.begin(), currencies.end(), [&](const QString& known) {
          return known.compare(text, Qt::CaseInsensitive) == 0;
        });
        if (found != currencies.end()) code = fromQt(*found);
        return found != currencies.end();
      });
  column.choices = [currencies](int) { return currencies; };
  column.hint = texts.format("IDS_HINT_CHARGE_CURRENCY", fromQt(currencies.join(", ")));
  return column;
}

SettingsPage chargesPage(const Tariffs& tariffs, const QStringList& currencies, const Texts& texts) {
  using Charge = tariff::ChargeRow;
  const auto charges = listOf(tariffs, &Tables::charges);
  auto* model = new RecordTableModel(
      {destinationColumn(tariffs, charges, texts),
       referenceColumn<Charge>(
           texts("IDS_PROFILE"), charges, &Charge::profileId,
           [tariffs](std::int32_t id) { return tariffs->profileLabel(id); },
           [tariffs](const QString& text) { return tariffs->profileOf(text); },
           [tariffs] { return tariffs->profileLabels(); }, texts("IDS_HINT_CHARGE_PROFILE")),
       daysColumn(charges, texts), minuteColumn(texts("IDS_FROM"), charges, &Charge::startMinute, texts),
       minuteColumn(texts("IDS_TO"), charges, &Charge::endMinute, texts),
       amountColumn(texts("IDS_UNIT_PRICE"), charges, &Charge::value, texts),
       currencyColumn(charges, currencies, texts), unitColumn(charges, texts),
       numberColumn(texts("IDS_MINIMUM_SECONDS"), charges, &Charge::minimumSeconds, texts("IDS_HINT_MINIMUM")),
       amountColumn(texts("IDS_FIXED_AMOUNT"), charges, &Charge::fixedAmount, texts),
       numberColumn(texts("IDS_MINIMUM_DIGITS"), charges, &Charge::minimumDigits, texts("IDS_HINT_MINIMUM_DIGITS"))},
      editableRows<Charge>(charges, [tariffs, currencies] {
        // The next band is mostly like the one before it.
        Charge charge = tariffs->tables.charges.empty() ? Charge() : tariffs->tables.charges.back();
        if (charge.days == 0) charge.days = kAllDays;
        if (charge.currency.empty() && !currencies.isEmpty()) charge.currency = fromQt(currencies.front());
        if (charge.profileId == 0 && !tariffs->tables.profiles.empty()) {
          charge.profileId = tariffs->tables.profiles.back().profileId;
        }
        return charge;
      }));
  SettingsPage page = tablePage(texts("IDS_PAGE_CHARGES"), model, "chargesTable", texts("IDS_HINT_CHARGES"), texts);
  page.reported = true;
  page.check = [charges, &texts]() -> QString {
    for (const Charge& charge : charges.list()) {
      if (charge.days == 0 || charge.currency.empty() || charge.endMinute < charge.startMinute) {
        return texts.format("IDS_SETTINGS_BAD_BAND", charge.destinationId, charge.profileId);
      }
    }
    return {};
  };
  return page;
}

SettingsPage areasPage(const Tariffs& tariffs, const Texts& texts) {
  using Area = tariff::AreaRow;
  const auto areas = listOf(tariffs, &Tables::areas);
  auto* model = new RecordTableModel(
      {textColumn(texts("IDS_PREFIX"), areas, &Area::prefix), textColumn(texts("IDS_AREA"), areas, &Area::name),
       textColumn(texts("IDS_COUNTRY"), areas, &Area::country)},
      editableRows<Area>(areas, [] { return Area(); }));
  return tablePage(texts("IDS_AREAS"), model, "areasTable", texts("IDS_HINT_AREAS"), texts);
}

}  // namespace

std::vector<SettingsPage> tariffPages(const Tariffs& tariffs, const std::shared_ptr<EditedParties>& parties,
                                      const QStringList& currencies, const Texts& texts) {
  return {providersPage(tariffs, parties, texts), profilesPage(tariffs, texts), prefixesPage(tariffs, texts),
          chargesPage(tariffs, currencies, texts), areasPage(tariffs, texts)};
}

}  // namespace ui
