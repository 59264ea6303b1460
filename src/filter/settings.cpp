#include "filter/settings.h"

#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>

#include "base/printf.h"
#include "base/text.h"
#include "base/typed_date.h"

namespace filter {

namespace {

using F = FilterSettings;
namespace keys = foundation::keys::filter;

constexpr FilterKey number(const foundation::NumberKey& key, std::int32_t F::*member) {
  return {key, KeyType::Integer, member, nullptr};
}
constexpr FilterKey text(const foundation::TextKey& key, std::string F::*member) {
  return {key, KeyType::Text, nullptr, member};
}
constexpr FilterKey date(const foundation::TextKey& key, std::string F::*member) {
  return {key, KeyType::DateTime, nullptr, member};
}

constexpr std::array kKeys = {
    number(keys::Number_Filter_Enabled, &F::numberFilterEnabled),
    number(keys::OnFilter, &F::onFilter),
    number(keys::Hidden, &F::hidden),
    number(keys::OnIncoming, &F::onIncoming),
    number(keys::OnOutgoing, &F::onOutgoing),
    number(keys::OnExtension, &F::onExtension),
    text(keys::ExtensionStr, &F::extension),
    number(keys::OnTrunk, &F::onTrunk),
    number(keys::Trunk, &F::trunk),
    number(keys::OnAccount, &F::onAccount),
    text(keys::Cont, &F::account),
    text(keys::ContName, &F::accountName),
    number(keys::OnDepartment, &F::onDepartment),
    text(keys::Department, &F::department),
    number(keys::OnName, &F::onName),
    text(keys::Name, &F::name),
    number(keys::OnClient, &F::onClient),
    text(keys::Client, &F::client),
    number(keys::OnFolder, &F::onFolder),
    text(keys::Folder, &F::folder),
    number(keys::OnArea, &F::onArea),
    text(keys::Area, &F::area),
    number(keys::OnPeriod, &F::onPeriod),
    date(keys::IntervalStart, &F::intervalStart),
    date(keys::IntervalEnd, &F::intervalEnd),
    text(keys::NumberPrefix, &F::numberPrefix),
    text(keys::Number, &F::number),
    text(keys::Country, &F::country),
    text(keys::Provider, &F::provider),
    number(keys::OnMinDuration, &F::onMinDuration),
    number(keys::MinDuration, &F::minDuration),
};

struct NameKey {
  const foundation::TextKey& key;
  std::string DisplayNames::*name;
  std::string F::*value;
};
constexpr std::array kNameKeys = {
    NameKey{foundation::keys::names::Interior, &DisplayNames::extension, &F::extension},
    NameKey{foundation::keys::names::Client, &DisplayNames::client, &F::client},
    NameKey{foundation::keys::names::Folder, &DisplayNames::folder, &F::folder},
    NameKey{foundation::keys::names::Depart, &DisplayNames::department, &F::department},
};

std::optional<std::int32_t> parseInteger(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::string parseDate(const FilterKey& key, std::string_view value) {
  auto parsed = base::typedDate(value);
  if (!parsed) {
    throw std::invalid_argument(
        base::format("%s: \"%s\" is not a date; write 31.01.2025 08:30:00, 2025-01-31 08:30:00 or 1/31/2025 08:30:00",
                     key.key, value));
  }
  const bool bareDate = value.find(':') == std::string_view::npos;
  if (bareDate && key.text == &F::intervalEnd) parsed = parsed->midnight().plusSeconds(86399);
  return parsed->format(kPeriodFormat);
}

// `first` is any moment of the month.
void setMonth(FilterSettings& settings, base::DateTime moment) {
  const auto parts = moment.parts();
  const auto first = *base::DateTime::fromParts(parts.year, parts.month, 1);
  const auto last = first.plusDays(base::daysInMonth(parts.year, parts.month)).plusSeconds(-1);
  settings.onFilter = 1;
  settings.onPeriod = 1;
  settings.intervalStart = first.format("%m/%d/%Y 00:00:00");
  settings.intervalEnd = last.format("%m/%d/%Y 23:59:59");
}

}  // namespace

std::span<const FilterKey> filterKeys() {
  return kKeys;
}

const FilterKey* findFilterKey(std::string_view key) {
  for (const FilterKey& candidate : kKeys) {
    if (base::equalFoldAscii(candidate.key, key)) return &candidate;
  }
  return nullptr;
}

std::string valueText(const FilterSettings& settings, const FilterKey& key) {
  return key.type == KeyType::Integer ? std::to_string(settings.*key.integer) : settings.*key.text;
}

FilterSettings readSettings(foundation::ConfigManager& config) {
  FilterSettings settings;
  for (const FilterKey& key : kKeys) {
    if (key.type == KeyType::Integer) {
      settings.*key.integer = config.ReadConfigInt(foundation::NumberKey(key.setting));
    } else {
      settings.*key.text = config.ReadConfigString(foundation::TextKey(key.setting));
    }
  }
  return settings;
}

namespace {

bool writeSetting(foundation::ConfigManager& config, const FilterSettings& settings, const FilterKey& key) {
  return key.type == KeyType::Integer ? config.WriteConfigInt(settings.*key.integer, foundation::NumberKey(key.setting))
                                      : config.WriteConfigString(settings.*key.text, foundation::TextKey(key.setting));
}

}  // namespace

bool writeSettings(foundation::ConfigManager& config, const FilterSettings& settings) {
  bool written = true;
  for (const FilterKey& key : kKeys) written &= writeSetting(config, settings, key);
  return written;
}

bool writeKeys(foundation::ConfigManager& config, const FilterSettings& settings,
               std::span<const std::string_view> keys) {
  bool written = true;
  for (const std::string_view key : keys) written &= writeSetting(config, settings, *findFilterKey(key));
  return written;
}

DisplayNames readDisplayNames(foundation::ConfigManager& config, const FilterSettings& settings) {
  DisplayNames names;
  for (const NameKey& key : kNameKeys) {
    names.*key.name = config.ReadConfigString(key.key, settings.*key.value);
  }
  return names;
}

bool writeDisplayNames(foundation::ConfigManager& config, const DisplayNames& names) {
  bool written = true;
  for (const NameKey& key : kNameKeys) {
    written &= config.WriteConfigString(names.*key.name, key.key);
  }
  return written;
}

bool dropStaleNames(foundation::ConfigManager& config, const FilterSettings& before, const FilterSettings& after) {
  bool written = true;
  for (const NameKey& key : kNameKeys) {
    if (before.*key.value == after.*key.value) continue;
    written &= config.ForgetConfig(key.key);
  }
  return written;
}

void setValue(FilterSettings& settings, std::string_view name, std::string_view value) {
  const FilterKey* key = findFilterKey(name);
  if (key == nullptr) {
    std::string known;
    for (const FilterKey& candidate : kKeys) known.append(known.empty() ? "" : ", ").append(candidate.key);
    throw std::invalid_argument(base::format("\"%s\" is no filter setting; there are: %s", name, known));
  }
  switch (key->type) {
    case KeyType::Integer: {
      const auto number = parseInteger(base::trim(value));
      if (!number) {
        throw std::invalid_argument(base::format("%s: \"%s\" is not a whole number of 32 bits", key->key, value));
      }
      settings.*key->integer = *number;
      return;
    }
    case KeyType::DateTime:
      settings.*key->text = parseDate(*key, value);
      return;
    case KeyType::Text:
      settings.*key->text = value;
  }
}

void setThisMonth(FilterSettings& settings, base::DateTime today) {
  setMonth(settings, today);
}

void setPreviousMonth(FilterSettings& settings, base::DateTime today) {
  setMonth(settings, today.midnight().plusDays(-today.parts().day));
}

base::DateTime parsePeriod(std::string_view stored, std::string_view fallback) {
  if (const auto parsed = base::DateTime::fromUsText(stored)) return *parsed;
  return base::DateTime::fromUsText(fallback).value_or(base::DateTime());
}

DialogPeriod readDialogPeriod(foundation::ConfigManager& config) {
  constexpr std::string_view kStart = "1/1/2001 00:00:00";
  const auto read = [&](const foundation::TextKey& key, std::string_view fallback) {
    return parsePeriod(config.ReadConfigString(key, fallback), fallback);
  };
  return {read(keys::IntervalStart, kStart), read(keys::IntervalEnd, keys::IntervalEnd.fallback)};
}

}  // namespace filter
