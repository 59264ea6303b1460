#include "capture/journal/journal_entry.h"

#include <charconv>
#include <chrono>
#include <cstdio>

#include "base/datetime.h"
#include "capture/format/clean.h"
#include "capture/time_units.h"

namespace capture {

namespace {

constexpr std::string_view kNoOrigin = "-";
constexpr std::size_t kTimeLength = 24;  // 2026-11-25T07:14:31.123Z
// Seconds from day 0 of base::DateTime to 1970-01-01.
constexpr std::int64_t kEpoch = 25569LL * 86400;

bool mustEscape(unsigned char c) {
  return c < 0x20 || c == 0x7f || c == '\\';
}

// The text up to the next blank, taken off `rest` with the blank.
std::string_view takeWord(std::string_view& rest) {
  const std::size_t end = rest.find(' ');
  const std::string_view word = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return word;
}

template <typename Number>
bool readNumber(std::string_view text, Number& value, int base = 10) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  return error == std::errc() && end == text.data() + text.size();
}

std::optional<std::string> unescapeBytes(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
    } else if (text.substr(i, 2) == "\\\\") {
      bytes += '\\';
      ++i;
    } else {
      unsigned char value = 0;
      if (text.substr(i, 2) != "\\x" || text.size() < i + 4 || !readNumber(text.substr(i + 2, 2), value, 16)) {
        return std::nullopt;
      }
      bytes += static_cast<char>(value);
      i += 3;
    }
  }
  return bytes;
}

}  // namespace

std::string escapeBytes(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  constexpr unsigned char kFirstOfNoAscii = 0x80;
  const bool utf8 = isUtf8(bytes);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!mustEscape(byte) && (utf8 || byte < kFirstOfNoAscii)) {
      text += c;
    } else if (c == '\\') {
      text += "\\\\";
    } else {
      char hex[5];
      std::snprintf(hex, sizeof hex, "\\x%02x", byte);
      text += hex;
    }
  }
  return text;
}

std::string utcText(std::int64_t milliseconds) {
  std::int64_t seconds = milliseconds / kMillisecondsPerSecond;
  std::int64_t rest = milliseconds % kMillisecondsPerSecond;
  if (rest < 0) {
    rest += kMillisecondsPerSecond;
    --seconds;
  }
  char fraction[8];
  std::snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(rest));
  return base::DateTime(seconds + kEpoch).format("%Y-%m-%dT%H:%M:%S") + fraction;
}

std::optional<std::int64_t> utcTime(std::string_view text) {
  if (text.size() != kTimeLength || text[10] != 'T' || text[19] != '.' || text[23] != 'Z') return std::nullopt;
  const std::string stored = std::string(text.substr(0, 10)) + ' ' + std::string(text.substr(11, 8));
  const auto time = base::DateTime::fromStored(stored);
  std::int64_t fraction = 0;
  if (!time || !readNumber(text.substr(20, 3), fraction)) return std::nullopt;
  return (time->secondsSinceDayZero() - kEpoch) * kMillisecondsPerSecond + fraction;
}

std::string encodeEntry(const JournalEntry& entry) {
  std::string line = std::to_string(entry.position) + ' ' + utcText(entry.time) + ' ';
  line += static_cast<char>(entry.kind);
  line += ' ';
  line += entry.origin.empty() ? kNoOrigin : std::string_view(entry.origin);
  line += ' ' + std::to_string(entry.bytes.size()) + ' ' + escapeBytes(entry.bytes) + '\n';
  return line;
}

std::optional<JournalEntry> decodeEntry(std::string_view line) {
  JournalEntry entry;
  if (!readNumber(takeWord(line), entry.position) || entry.position == 0) return std::nullopt;
  const auto time = utcTime(takeWord(line));
  const std::string_view kind = takeWord(line);
  if (!time || (kind != "L" && kind != "B" && kind != "T")) return std::nullopt;
  entry.time = *time;
  entry.kind = static_cast<EntryKind>(kind.front());
  const std::string_view origin = takeWord(line);
  if (origin.empty()) return std::nullopt;
  if (origin != kNoOrigin) entry.origin = origin;
  std::size_t length = 0;
  if (!readNumber(takeWord(line), length)) return std::nullopt;
  auto bytes = unescapeBytes(line);
  if (!bytes || bytes->size() != length) return std::nullopt;
  entry.bytes = std::move(*bytes);
  return entry;
}

}  // namespace capture
