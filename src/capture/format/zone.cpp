#include "capture/format/zone.h"

#include <date/tz.h>

#include <string>

#include "capture/format/source_settings.h"

namespace capture {

namespace {

// 1970-01-01 on DateTime's scale.
constexpr std::int64_t kUnixEpoch = std::int64_t{25569} * 86400;

const date::time_zone* find(std::string_view name) {
  try {
    return name.empty() ? date::current_zone() : date::locate_zone(std::string(name));
  } catch (const std::exception&) {
    // A machine without a zone of its own runs in UTC.
    if (name.empty()) return date::locate_zone("Etc/UTC");
    throw SettingError("'" + std::string(name) + "' is no time zone; zones are named like Europe/Bucharest");
  }
}

}  // namespace

Zone::Zone(std::string_view name) : zone_(find(name)) {}

base::DateTime Zone::toLocal(std::chrono::sys_seconds instant) const {
  return base::DateTime(zone_->to_local(instant).time_since_epoch().count() + kUnixEpoch);
}

std::chrono::sys_seconds Zone::toInstant(base::DateTime local) const {
  const date::local_seconds clock{std::chrono::seconds(local.secondsSinceDayZero() - kUnixEpoch)};
  return zone_->to_sys(clock, date::choose::earliest);
}

base::DateTime utcClock(std::chrono::sys_seconds instant) {
  return base::DateTime(instant.time_since_epoch().count() + kUnixEpoch);
}

std::chrono::sys_seconds fromUtcClock(base::DateTime utc) {
  return std::chrono::sys_seconds(std::chrono::seconds(utc.secondsSinceDayZero() - kUnixEpoch));
}

}  // namespace capture
