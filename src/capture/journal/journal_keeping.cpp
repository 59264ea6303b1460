#include "capture/journal/journal_keeping.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "base/datetime.h"
#include "capture/journal/journal_entry.h"
#include "capture/journal/journal_files.h"
#include "capture/time_units.h"
#include "platform/instance_lock.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSureLength = 7;  // digits that are no accident wherever they are

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string significantDigits(std::string_view number) {
  std::string digits;
  for (const char c : number) {
    if (isDigit(c) && (c != '0' || !digits.empty())) digits += c;
  }
  if (digits.empty()) throw std::invalid_argument("A number to forget has at least one digit other than 0.");
  return digits;
}

// True when the digits are a number alone: at the end of `found` there must be no further digit unless they are many.
bool standsAlone(const std::string& text, std::size_t begin, std::size_t length) {
  std::size_t first = begin;
  while (first > 0 && text[first - 1] == '0') --first;
  const bool before = first > 0 && isDigit(text[first - 1]);
  const bool after = begin + length < text.size() && isDigit(text[begin + length]);
  return !before && !after;
}

std::size_t blankDigits(std::string& text, const std::string& digits, std::size_t from) {
  std::size_t places = 0;
  for (std::size_t at = text.find(digits, from); at != std::string::npos; at = text.find(digits, at)) {
    if (digits.size() >= kSureLength || standsAlone(text, at, digits.size())) {
      text.replace(at, digits.size(), digits.size(), 'X');
      ++places;
    }
    at += digits.size();
  }
  return places;
}

// The begin of the bytes in a line of the journal: after the fifth blank.
std::size_t bytesBegin(const std::string& line) {
  std::size_t at = 0;
  for (int blank = 0; blank < 5 && at != std::string::npos; ++blank) {
    at = line.find(' ', at);
    if (at != std::string::npos) ++at;
  }
  return at;
}

bool blankLine(std::string& line, const std::string& digits) {
  const std::size_t begin = bytesBegin(line);
  return begin != std::string::npos && blankDigits(line, digits, begin) > 0;
}

// Bytes are overwritten where they are, so that a program that appends meanwhile is not disturbed.
std::size_t forgetInPlace(const JournalFile& file, const std::string& digits) {
  const auto lines = openJournalLines(file);
  const int descriptor = ::open(file.path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) throw std::runtime_error(file.path.string() + ": " + std::strerror(errno));
  std::size_t changed = 0;
  off_t offset = 0;
  std::string line;
  bool failed = false;
  while (!failed && lines->next(line)) {
    if (blankLine(line, digits)) {
      failed = ::pwrite(descriptor, line.data(), line.size(), offset) != static_cast<ssize_t>(line.size());
      ++changed;
    }
    offset += static_cast<off_t>(line.size()) + 1;
  }
  failed = failed || ::fdatasync(descriptor) != 0;
  const int reason = errno;
  ::close(descriptor);
  if (failed) throw std::runtime_error(file.path.string() + ": " + std::strerror(reason));
  return changed;
}

// Rewrites a file compressed, under a temporary name first; the count of lines changed by `change`. A fault leaves the
// file as it was.
template <typename Change>
std::size_t writeCompressedAs(const JournalFile& file, const fs::path& target, Change change) {
  const fs::path temporary = target.string() + ".tmp";
  const auto lines = openJournalLines(file);
  std::size_t changed = 0;
  std::string line;
  try {
    CompressedWriter out(temporary);
    while (lines->next(line)) {
      if (change(line)) ++changed;
      out.add(line);
    }
    out.finish();
    fs::rename(temporary, target);
  } catch (const std::exception&) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    throw;
  }
  return changed;
}

bool holds(const JournalFile& file, const std::string& digits) {
  const auto lines = openJournalLines(file);
  std::string line;
  while (lines->next(line)) {
    if (blankLine(line, digits)) return true;
  }
  return false;
}

std::size_t forgetCompressed(const JournalFile& file, const std::string& digits) {
  if (!holds(file, digits)) return 0;
  return writeCompressedAs(file, file.path, [&](std::string& line) { return blankLine(line, digits); });
}

void compress(const JournalFile& file) {
  writeCompressedAs(file, file.path.string() + ".zst", [](const std::string&) { return false; });
  fs::remove(file.path);
}

std::string dayBefore(std::int64_t now, int days) {
  return utcText(now - days * kMillisecondsPerDay).substr(0, 10);
}

// Compressing and blanking replace files; only one of them at a time may.
platform::InstanceLock lockKeeping(const fs::path& folder) {
  for (int tries = 0; tries < 200; ++tries) {
    if (auto lock = platform::InstanceLock::acquire(folder / ".keeping")) return std::move(*lock);
  }
  throw std::runtime_error("Another program works on the journal in " + folder.string() + "; try again later.");
}

}  // namespace

void keepJournal(const fs::path& folder, const KeepingRules& rules) {
  const auto files = listJournalFiles(folder);
  if (files.size() < 2) return;
  const auto lock = lockKeeping(folder);
  const std::string oldest = dayBefore(rules.now, rules.keepDays);
  const std::string yesterday = dayBefore(rules.now, 1);
  for (std::size_t i = 0; i + 1 < files.size(); ++i) {
    const auto next = firstPosition(files[i + 1]);
    const bool delivered = next && *next <= rules.converted + 1;
    if (files[i].day < oldest && delivered) {
      fs::remove(files[i].path);
      fs::remove(files[i].path.string() + ".zst");  // what a kill between compressing and deleting left
    } else if (files[i].day < yesterday && !files[i].compressed) {
      compress(files[i]);
    }
  }
}

std::size_t forgetNumber(const fs::path& folder, std::string_view number) {
  const std::string digits = significantDigits(number);
  const auto lock = lockKeeping(folder);
  std::size_t changed = 0;
  for (const JournalFile& file : listJournalFiles(folder)) {
    changed += file.compressed ? forgetCompressed(file, digits) : forgetInPlace(file, digits);
  }
  return changed;
}

std::size_t blankNumber(std::string& text, std::string_view number) {
  return blankDigits(text, significantDigits(number), 0);
}

}  // namespace capture
