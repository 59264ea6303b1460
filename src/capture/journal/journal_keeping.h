#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace capture {

// What is done to the files of a journal beside writing it. All of it may run while the journal is written: the newest
// file is never replaced, only bytes in it.

struct KeepingRules {
  std::int64_t now = 0;         // milliseconds since 1970
  int keepDays = 90;            // at least 1; raw lines are personal data
  std::uint64_t converted = 0;  // entries after this position are not yet delivered: their files stay
};

// Compresses files that are more than a day old and deletes those older than the days to keep. Throws
// std::runtime_error.
void keepJournal(const std::filesystem::path& folder, const KeepingRules& rules);

// Blanks a telephone number in every entry: its digits become X. Written with another prefix (+40, 0040, 0) it is the
// same number, so the digits after leading zeros are looked for; seven of them or more wherever they are, fewer only
// as a whole run of digits. Returns the count of entries changed. Throws std::invalid_argument when there is no digit
// in `number`, std::runtime_error when a file cannot be changed.
std::size_t forgetNumber(const std::filesystem::path& folder, std::string_view number);

// The same in a text of any kind; returns the count of places.
std::size_t blankNumber(std::string& text, std::string_view number);

}  // namespace capture
