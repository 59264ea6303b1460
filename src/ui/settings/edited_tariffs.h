#pragma once

#include <QString>
#include <QStringList>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "tariff/tariff_tables.h"
#include "ui/texts.h"

namespace ui {

// The operator's copy of the tariff database while the settings sheet is open, and the names that its numbers are
// for. Names are what the tables show; in place of a name its number is understood too.
class EditedTariffs {
 public:
  // `countryCode` is the exchange's own, without "00".
  explicit EditedTariffs(std::string countryCode) : countryCode_(std::move(countryCode)) {}

  tariff::TariffTables tables;

  // To be called after each change of the tables.
  void touch();
  [[nodiscard]] bool changed() const { return changed_; }
  void markSaved() { changed_ = false; }

  // "Telco", or "Telco (2)" when another provider has that name; the number of one that does not exist; empty for none.
  [[nodiscard]] QString providerName(std::int32_t id) const;
  [[nodiscard]] QStringList providerNames() const;
  // 0 for the empty text; nothing for a text that means no provider.
  [[nodiscard]] std::optional<std::int32_t> providerOf(const QString& text) const;
  [[nodiscard]] bool hasProvider(std::int32_t id) const;

  // The names of a provider's profiles, each once.
  [[nodiscard]] QStringList profileNames(std::int32_t providerId) const;
  // "2: Standard, Telco, 01.01.2026".
  [[nodiscard]] QString profileLabel(std::int32_t id) const;
  [[nodiscard]] QStringList profileLabels() const;
  [[nodiscard]] std::optional<std::int32_t> profileOf(const QString& label) const;

  // "7: 0044 Great Britain", with "..." after it when more prefixes lead there.
  [[nodiscard]] QString destinationLabel(std::int32_t id);
  [[nodiscard]] QStringList destinationLabels();
  [[nodiscard]] static std::optional<std::int32_t> destinationOf(const QString& label);
  // The area that numbers with a dialled prefix reach; empty when it is not known.
  [[nodiscard]] QString areaOf(const std::string& prefix);

 private:
  struct Destination {
    std::string firstPrefix;
    int prefixes = 0;
  };

  void refreshNames();

  std::string countryCode_;
  bool changed_ = false;
  bool namesAreOld_ = true;
  std::map<std::int32_t, Destination> destinations_;
  std::unordered_map<std::string, std::string> areas_;  // by prefix in international form
};

}  // namespace ui
