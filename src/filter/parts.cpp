#include "filter/parts.h"

#include "base/printf.h"
#include "filter/condition.h"
#include "filter/periods.h"

namespace filter {

namespace {

namespace keys = foundation::keys::filter;

class Collector {
 public:
  explicit Collector(const foundation::LanguageFile& texts) : texts_(texts) {}

  // A switch that needs no value.
  void flag(bool on, const char* captionKey, const foundation::Setting& key) {
    if (on) parts_.push_back({texts_.Translate(captionKey), {{std::string(key.key), "0"}}});
  }
  // A switch and the value that it makes count.
  void value(bool on, const char* captionKey, const std::string& shown, const foundation::Setting& key) {
    if (on) parts_.push_back({caption(captionKey, shown), {{std::string(key.key), "0"}}});
  }
  // A value that counts when there is one.
  void text(const std::string& shown, const char* captionKey, const foundation::Setting& key) {
    if (!shown.empty()) parts_.push_back({caption(captionKey, shown), {{std::string(key.key), ""}}});
  }
  void add(Part part) { parts_.push_back(std::move(part)); }
  std::vector<Part> take() { return std::move(parts_); }

 private:
  [[nodiscard]] std::string caption(const char* key, const std::string& shown) const {
    return texts_.Translate(key) + ": " + (shown.empty() ? std::string("-") : shown);
  }

  const foundation::LanguageFile& texts_;
  std::vector<Part> parts_;
};

std::string periodText(const FilterSettings& settings, const foundation::LanguageFile& texts, base::DateTime now) {
  const Period period = periodOf(settings);
  if (const auto preset = presetOf(period, now)) {
    for (const PresetName& name : kPresets) {
      if (name.preset == *preset) return texts.Translate(name.captionKey);
    }
  }
  const bool wholeDays = period.start == period.start.midnight() && period.end.secondOfDay() == 86399;
  const std::string_view format = wholeDays ? "%d.%m.%Y" : "%d.%m.%Y %H:%M";
  return period.start.format(format) + " - " + period.end.format(format);
}

}  // namespace

std::vector<Part> partsOf(const FilterSettings& settings, const DisplayNames& names,
                          const foundation::LanguageFile& texts, base::DateTime now) {
  Collector parts(texts);
  if (settings.onFilter != 1) return parts.take();
  if (settings.onPeriod != 0) parts.add({periodText(settings, texts, now), {{std::string(keys::OnPeriod.key), "0"}}});
  parts.flag(settings.hidden != 0, "IDS_FILTER_HIDDEN", keys::Hidden);
  parts.flag(settings.onIncoming != 0, "IDS_FILTER_EXCLUDE_INCOMING", keys::OnIncoming);
  parts.flag(settings.onOutgoing != 0, "IDS_FILTER_EXCLUDE_OUTGOING", keys::OnOutgoing);
  parts.value(settings.onExtension == 1, "IDS_EXTENSION", names.extension, keys::OnExtension);
  parts.value(settings.onTrunk == 1, "IDS_TRUNK", std::to_string(settings.trunk), keys::OnTrunk);
  parts.value(settings.onAccount == 1, "IDS_ACCOUNT", settings.accountName, keys::OnAccount);
  parts.value(settings.onDepartment == 1, "IDS_DEPARTMENT", names.department, keys::OnDepartment);
  parts.value(settings.onName == 1, "IDS_NAME", settings.name, keys::OnName);
  parts.value(settings.onClient != 0, "IDS_CLIENT", names.client, keys::OnClient);
  parts.value(settings.onFolder != 0, "IDS_FOLDER", names.folder, keys::OnFolder);
  parts.value(settings.onArea != 0, "IDS_AREA", settings.area.empty() ? std::string(kLocalArea) : settings.area,
              keys::OnArea);
  parts.text(settings.numberPrefix.empty() ? "" : settings.numberPrefix + "...", "IDS_NUMBER", keys::NumberPrefix);
  parts.text(settings.number, "IDS_NUMBER", keys::Number);
  parts.text(settings.country, "IDS_COUNTRY", keys::Country);
  parts.text(settings.provider, "IDS_PROVIDER", keys::Provider);
  if (settings.onMinDuration != 0) {
    const std::string shown = base::format("%s >= %d %s", texts.Translate("IDS_DURATION"), settings.minDuration,
                                           texts.Translate("IDS_SECONDS"));
    parts.add({shown, {{std::string(keys::OnMinDuration.key), "0"}}});
  }
  return parts.take();
}

}  // namespace filter
