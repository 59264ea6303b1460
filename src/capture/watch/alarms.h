#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace capture {

// One thing that is wrong, or is right again.
struct Alarm {
  std::string source;      // empty: the program as a whole
  std::string event;       // silence, unknown, gap, exchange, lost, disk, spool ...
  std::string text;        // for people, with what to do
  bool raised = true;      // false: the all-clear
  std::int64_t since = 0;  // milliseconds since 1970
};

// What is wrong now. Each thing is told once when it begins and once when it is over, however often it is found.
class Alarms {
 public:
  using Tell = std::function<void(const Alarm&)>;
  explicit Alarms(Tell tell) : tell_(std::move(tell)) {}

  void raise(const std::string& source, const std::string& event, const std::string& text);
  void clear(const std::string& source, const std::string& event);
  // A source that is no longer there has nothing wrong.
  void forget(const std::string& source);
  [[nodiscard]] std::vector<Alarm> active() const;

 private:
  std::map<std::pair<std::string, std::string>, Alarm> active_;
  Tell tell_;
};

}  // namespace capture
