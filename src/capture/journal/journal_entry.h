#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace capture {

enum class EntryKind : char {
  Line = 'L',   // one line as the exchange sent it
  Break = 'B',  // the connection came back after a loss: what follows may repeat what came before
  Tick = 'T'    // only a time: releases what the merger holds back
};

// One entry of a source's journal.
struct JournalEntry {
  std::uint64_t position = 0;  // counts from 1, without gaps, for the life of the source
  std::int64_t time = 0;       // arrival, milliseconds since 1970-01-01 UTC
  EntryKind kind = EntryKind::Line;
  // Where the line ends in the transport's own terms (file and offset, key of a row), so that a transport goes on
  // after the last line that is really here. No blanks; empty where the transport has no such place.
  std::string origin;
  std::string bytes;
};

// The entry as a line of the journal, line feed included: "position time kind origin length bytes". Control characters,
// what is neither ASCII nor UTF-8, and the backslash are written as \xHH and \\, so that grep and a pager work on the
// file.
[[nodiscard]] std::string encodeEntry(const JournalEntry& entry);

// Reads a line without its line feed. Nothing when it is no whole entry (torn, or changed by another program).
[[nodiscard]] std::optional<JournalEntry> decodeEntry(std::string_view line);

// Bytes as the journal shows them: control characters, and in a text that is no UTF-8 every byte that is not ASCII,
// made visible.
[[nodiscard]] std::string escapeBytes(std::string_view bytes);

// "2026-11-25T07:14:31.123Z" from milliseconds since 1970; the day alone is the first ten characters.
[[nodiscard]] std::string utcText(std::int64_t milliseconds);
// Milliseconds since 1970 from that form; nothing when it is none.
[[nodiscard]] std::optional<std::int64_t> utcTime(std::string_view text);

}  // namespace capture
