#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "base/datetime.h"

namespace ctl {

// JSON on one line. Bytes that are no UTF-8 (a record read in the wrong code page) do not end the command.
[[nodiscard]] inline std::string jsonText(const nlohmann::ordered_json& value) {
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// "YYYY-MM-DD HH:MM:SS"; null for no date.
[[nodiscard]] inline nlohmann::ordered_json jsonDate(const std::optional<base::DateTime>& date) {
  return date ? nlohmann::ordered_json(date->stored()) : nlohmann::ordered_json(nullptr);
}

}  // namespace ctl
