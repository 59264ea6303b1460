#include "base/typed_date.h"

#include <string>

#include "base/printf.h"
#include "base/text.h"

namespace base {

namespace {

bool isNumber(std::string_view text, std::size_t mostDigits) {
  return !text.empty() && text.size() <= mostDigits && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// "31.12.2025" as "2025-12-31"; other texts as they are.
std::string withYearFirst(std::string_view date) {
  const std::size_t first = date.find('.');
  const std::size_t second = first == std::string_view::npos ? first : date.find('.', first + 1);
  if (second == std::string_view::npos) return std::string(date);
  const std::string_view day = date.substr(0, first);
  const std::string_view month = date.substr(first + 1, second - first - 1);
  const std::string_view year = date.substr(second + 1);
  if (!isNumber(day, 2) || !isNumber(month, 2) || !isNumber(year, 4) || year.size() != 4) return std::string(date);
  return format("%04d-%02d-%02d", leadingInteger(year), leadingInteger(month), leadingInteger(day));
}

}  // namespace

std::optional<DateTime> typedDate(std::string_view typed) {
  typed = trim(typed);
  const std::size_t blank = typed.find_first_of(" T");
  const std::string date = withYearFirst(typed.substr(0, blank));
  const std::string time(blank == std::string_view::npos ? std::string_view() : trim(typed.substr(blank + 1)));
  const std::string text = time.empty() ? date : date + " " + time;
  auto parsed = DateTime::fromStored(text);
  if (!parsed) parsed = DateTime::fromStored(text + ":00");
  if (!parsed) parsed = DateTime::fromUsText(text);
  // A time alone is no date.
  if (!parsed || parsed->dayNumber() == 0) return std::nullopt;
  return parsed;
}

}  // namespace base
