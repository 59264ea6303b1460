#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "foundation/settings_catalogue.h"
#include "schema/database_place.h"
#include "server/doctor.h"

namespace server {

// The part of the examination that opens the databases.
void examineDatabases(const schema::DatabasePlace& place, base::DateTime now, std::vector<Finding>& findings);

// What is wrong with what a store holds under a known setting; empty when nothing is, and when nothing is stored.
[[nodiscard]] std::string settingFault(const foundation::Setting& setting, const std::optional<std::string>& text,
                                       std::optional<std::int64_t> number);

}  // namespace server
