#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

// How many characters of a text go into the call record.
inline constexpr std::size_t kNumberRoom = 63;
inline constexpr std::size_t kNameRoom = 31;  // extension and trunk
inline constexpr std::size_t kAccountRoom = 15;
inline constexpr std::size_t kCdRoom = 7;

// True when the bytes are UTF-8.
[[nodiscard]] bool isUtf8(std::string_view bytes);

// The number of "cp1252", "windows-1250", "1250", "iso-8859-1" or "utf-8" as base/codepage.h counts them; nothing when
// there is no such code page.
[[nodiscard]] std::optional<int> codepageByName(std::string_view name);

// UTF-8 reduced to the letters of a code page and cut to `room` characters of it: a letter that the page lacks becomes
// its base letter, else "?". Control characters are left out.
[[nodiscard]] std::string fitText(std::string_view text, int codepage, std::size_t room);

// The number in a text that may hold a name too: what is in <>, else the longest run of digits (three at least)
// when there are letters. Then without sip: and host, "+" in front as 00, hidden digits ("?") as X, and nothing but
// 0-9 * # X. Empty for a name alone and for withheld numbers.
[[nodiscard]] std::string cleanNumber(std::string_view text);

// Takes the first code that the number begins with off its front, once.
[[nodiscard]] std::string stripAccess(std::string number, const std::vector<std::string>& codes);

// A trunk of digits only without its leading zeros (zeros only: empty); any other as it is.
[[nodiscard]] std::string cleanTrunk(std::string_view text);

// A count of pulses; 0 for a blank and for an amount of money ("1,20"); nothing when the text is neither.
[[nodiscard]] std::optional<std::int32_t> readPulses(std::string_view text);

}  // namespace capture
