#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"
#include "foundation/config_manager.h"

namespace analysis {

// When the office answers its telephones, by the day of the week: "Mon-Fri 08:00-18:00, Sat 09:00-13:00". Several spans
// a day are possible; an end of 24:00 is midnight. Days that are not named are free.
class WorkingHours {
 public:
  // Throws std::invalid_argument, with what is wrong, for a text of another form. An empty text: no working hours.
  explicit WorkingHours(std::string_view text);

  [[nodiscard]] bool contains(base::DateTime time) const;
  // Whether two moments lie in one span of working time of one day, with no break between.
  [[nodiscard]] bool inOneSpan(base::DateTime from, base::DateTime to) const;
  [[nodiscard]] const std::string& text() const { return text_; }

  static constexpr std::string_view kDefault = foundation::keys::calls::WorkingHours.fallback;

 private:
  struct Span {
    int start;  // minutes of the day, inclusive
    int end;    // exclusive
  };
  void add(std::string_view part);

  std::string text_;
  std::array<std::vector<Span>, 7> days_;  // Sunday first
};

// Setting "WorkingHours"; the default where what is stored cannot be read.
[[nodiscard]] WorkingHours workingHours(foundation::ConfigManager& config);
// Throws std::invalid_argument for a text that cannot be read; false when the database is open read-only.
bool storeWorkingHours(foundation::ConfigManager& config, std::string_view text);

}  // namespace analysis
