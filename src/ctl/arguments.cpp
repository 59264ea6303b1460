#include <charconv>
#include <cmath>

#include "base/printf.h"
#include "base/typed_date.h"
#include "ctl/command.h"

namespace ctl {

std::optional<std::string> Arguments::find(std::string_view name) const {
  const auto found = values_.find(name);
  if (found == values_.end() || found->second.empty()) return std::nullopt;
  return found->second.front();
}

std::string Arguments::text(std::string_view name, std::string_view fallback) const {
  return find(name).value_or(std::string(fallback));
}

const std::vector<std::string>& Arguments::all(std::string_view name) const {
  static const std::vector<std::string> none;
  const auto found = values_.find(name);
  return found == values_.end() ? none : found->second;
}

std::int64_t Arguments::integer(std::string_view name, std::int64_t fallback, std::int64_t least,
                                std::int64_t most) const {
  const auto typed = find(name);
  if (!typed) return fallback;
  std::int64_t value = 0;
  const auto [end, fault] = std::from_chars(typed->data(), typed->data() + typed->size(), value);
  if (fault != std::errc() || end != typed->data() + typed->size() || value < least || value > most) {
    throw WrongUsage(base::format("%s takes a whole number from %d to %d, not \"%s\".", name, least, most, *typed));
  }
  return value;
}

double Arguments::number(std::string_view name, double fallback) const {
  const auto typed = find(name);
  if (!typed) return fallback;
  double value = 0;
  const auto [end, fault] = std::from_chars(typed->data(), typed->data() + typed->size(), value);
  if (fault != std::errc() || end != typed->data() + typed->size() || !std::isfinite(value)) {
    throw WrongUsage(base::format("%s takes a number such as 4.97, not \"%s\".", name, *typed));
  }
  return value;
}

std::optional<base::DateTime> Arguments::date(std::string_view name) const {
  const auto typed = find(name);
  if (!typed) return std::nullopt;
  auto value = base::typedDate(*typed);
  if (!value) {
    throw WrongUsage(
        base::format("%s takes a date such as 2026-03-31 or \"2026-03-31 10:00\", not \"%s\".", name, *typed));
  }
  return value;
}

}  // namespace ctl
