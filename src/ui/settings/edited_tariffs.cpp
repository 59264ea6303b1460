#include "ui/settings/edited_tariffs.h"

#include <algorithm>

namespace ui {

namespace {

std::optional<std::int32_t> numberBefore(const QString& label) {
  bool valid = false;
  const int number = label.section(':', 0, 0).trimmed().toInt(&valid);
  return valid && number >= 0 ? std::optional<std::int32_t>(number) : std::nullopt;
}

}  // namespace

void EditedTariffs::touch() {
  changed_ = true;
  namesAreOld_ = true;
}

bool EditedTariffs::hasProvider(std::int32_t id) const {
  return std::any_of(tables.providers.begin(), tables.providers.end(),
                     [id](const auto& provider) { return provider.providerId == id; });
}

QString EditedTariffs::providerName(std::int32_t id) const {
  const tariff::ProviderRow* found = nullptr;
  for (const auto& provider : tables.providers) {
    if (provider.providerId == id) found = &provider;
  }
  if (found == nullptr) return id > 0 ? QString::number(id) : QString();
  if (found->name.empty()) return QString::number(id);
  const auto namesakes = std::count_if(tables.providers.begin(), tables.providers.end(),
                                       [&](const auto& provider) { return provider.name == found->name; });
  return namesakes == 1 ? toQt(found->name) : QString("%1 (%2)").arg(toQt(found->name)).arg(id);
}

QStringList EditedTariffs::providerNames() const {
  QStringList names;
  for (const auto& provider : tables.providers) names << providerName(provider.providerId);
  return names;
}

std::optional<std::int32_t> EditedTariffs::providerOf(const QString& text) const {
  if (text.isEmpty()) return 0;
  for (const auto& provider : tables.providers) {
    if (providerName(provider.providerId) == text) return provider.providerId;
  }
  const auto number = numberBefore(text);
  return number && hasProvider(*number) ? number : std::nullopt;
}

QStringList EditedTariffs::profileNames(std::int32_t providerId) const {
  QStringList names;
  for (const auto& profile : tables.profiles) {
    if (profile.providerId == providerId && !names.contains(toQt(profile.name))) names << toQt(profile.name);
  }
  return names;
}

QString EditedTariffs::profileLabel(std::int32_t id) const {
  for (const auto& profile : tables.profiles) {
    if (profile.profileId != id) continue;
    QStringList words{toQt(profile.name), providerName(profile.providerId),
                      profile.startDate ? toQt(profile.startDate->format("%d.%m.%Y")) : QString()};
    words.removeAll(QString());
    return QString("%1: %2").arg(id).arg(words.join(", "));
  }
  return QString::number(id);
}

QStringList EditedTariffs::profileLabels() const {
  QStringList labels;
  for (const auto& profile : tables.profiles) labels << profileLabel(profile.profileId);
  return labels;
}

std::optional<std::int32_t> EditedTariffs::profileOf(const QString& label) const {
  const auto number = numberBefore(label);
  const bool exists = number && std::any_of(tables.profiles.begin(), tables.profiles.end(),
                                            [&](const auto& profile) { return profile.profileId == *number; });
  return exists ? number : std::nullopt;
}

void EditedTariffs::refreshNames() {
  if (!namesAreOld_) return;
  namesAreOld_ = false;
  destinations_.clear();
  for (const auto& prefix : tables.prefixes) {
    Destination& destination = destinations_[prefix.destinationId];
    ++destination.prefixes;
    if (destination.firstPrefix.empty()) destination.firstPrefix = prefix.prefix;  // the empty one says least
  }
  for (const auto& charge : tables.charges) destinations_.try_emplace(charge.destinationId);
  areas_.clear();
  for (const auto& area : tables.areas) areas_.insert_or_assign(area.prefix, area.name);
}

QString EditedTariffs::areaOf(const std::string& prefix) {
  refreshNames();
  std::string whole = prefix;
  if (!prefix.starts_with("00") && prefix.starts_with('0')) whole = "00" + countryCode_ + prefix.substr(1);
  for (; !whole.empty(); whole.pop_back()) {
    if (const auto found = areas_.find(whole); found != areas_.end()) return toQt(found->second);
  }
  return {};
}

QString EditedTariffs::destinationLabel(std::int32_t id) {
  refreshNames();
  const auto found = destinations_.find(id);
  if (found == destinations_.end() || found->second.prefixes == 0) return QString::number(id);
  const Destination& destination = found->second;
  const QString words = (toQt(destination.firstPrefix) + ' ' + areaOf(destination.firstPrefix)).trimmed();
  if (words.isEmpty()) return QString::number(id);
  return QString("%1: %2%3").arg(id).arg(words, destination.prefixes > 1 ? ", ..." : "");
}

QStringList EditedTariffs::destinationLabels() {
  refreshNames();
  QStringList labels;
  for (const auto& [id, destination] : destinations_) labels << destinationLabel(id);
  return labels;
}

std::optional<std::int32_t> EditedTariffs::destinationOf(const QString& label) {
  return numberBefore(label);
}

}  // namespace ui
