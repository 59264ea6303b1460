#pragma once

#include <ctime>
#include <optional>
#include <string_view>
#include <vector>

namespace capture {

// When lines are expected: "mon-fri 08:00-18:00", several with commas between.
class WorkingHours {
 public:
  // Nothing when the text is none.
  static std::optional<WorkingHours> parse(std::string_view text);

  // How long the working time that holds `when` has lasted, in seconds; nothing outside of working hours. Local time.
  [[nodiscard]] std::optional<int> secondsInto(const std::tm& when) const;

 private:
  struct Span {
    int firstDay = 0;  // 0 Monday .. 6 Sunday
    int lastDay = 6;
    int begin = 0;  // seconds of the day
    int end = 86400;
  };
  static std::optional<Span> parseSpan(std::string_view text);

  std::vector<Span> spans_;
};

}  // namespace capture
