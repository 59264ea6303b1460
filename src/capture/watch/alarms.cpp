#include "capture/watch/alarms.h"

#include "capture/watch/times.h"

namespace capture {

void Alarms::raise(const std::string& source, const std::string& event, const std::string& text) {
  const auto [place, isNew] = active_.try_emplace({source, event}, Alarm{source, event, text, true, nowMilliseconds()});
  if (isNew) tell_(place->second);
}

void Alarms::clear(const std::string& source, const std::string& event) {
  const auto place = active_.find({source, event});
  if (place == active_.end()) return;
  Alarm alarm = place->second;
  active_.erase(place);
  alarm.raised = false;
  tell_(alarm);
}

void Alarms::forget(const std::string& source) {
  std::erase_if(active_, [&](const auto& alarm) { return alarm.first.first == source; });
}

std::vector<Alarm> Alarms::active() const {
  std::vector<Alarm> alarms;
  for (const auto& [key, alarm] : active_) alarms.push_back(alarm);
  return alarms;
}

}  // namespace capture
