#include "base/journal_line.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

namespace base {

bool isJournal(int descriptor) {
  const char* stream = std::getenv("JOURNAL_STREAM");  // "DEVICE:INODE" of the journal's end
  struct stat status {};
  if (stream == nullptr || ::fstat(descriptor, &status) != 0) return false;
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == stream;
}

std::string journalLine(Priority priority, std::string_view text, bool forJournal) {
  std::string line = forJournal ? "<" + std::to_string(static_cast<int>(priority)) + ">" : std::string();
  line += text;
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
  return line;
}

}  // namespace base
