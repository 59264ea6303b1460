#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"
#include "filter/settings.h"
#include "foundation/config_manager.h"

namespace filter {

// Filters kept under a name: on this workstation, or in the main database for all of them. A period that has a name
// ("this month") is kept by it and means the month in which the filter is used. Names differ in more than their case.
class SavedFilters {
 public:
  // foundation::StoreMachine or StoreDatabase. The settings must outlive this.
  SavedFilters(foundation::ConfigManager& config, int store) : config_(config), store_(store) {}

  // In the order of their alphabet.
  [[nodiscard]] std::vector<std::string> names();
  // Nothing when there is none of that name.
  [[nodiscard]] std::optional<FilterSettings> find(std::string_view name, base::DateTime now);
  // In place of one of that name. These are false when the store cannot be written.
  bool save(std::string_view name, const FilterSettings& settings, base::DateTime now);
  bool remove(std::string_view name);

 private:
  struct Entry {
    std::string name;
    std::string text;
  };
  [[nodiscard]] std::vector<Entry> read();
  bool write(const std::vector<Entry>& entries);

  foundation::ConfigManager& config_;
  int store_;
};

}  // namespace filter
