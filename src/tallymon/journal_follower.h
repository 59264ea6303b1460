#pragma once

#include <filesystem>

#include "tallymon/shown_lines.h"

namespace tallymon {

// Shows what a running service adds to the journal of a source.
class JournalFollower {
 public:
  // Begins with the `last` lines that are there. Throws std::runtime_error when the journal may not be read.
  JournalFollower(std::filesystem::path folder, std::size_t last, ShownLines& shown);
  void showNew();

 private:
  std::filesystem::path folder_;
  ShownLines& shown_;
  std::uint64_t next_ = 1;
};

}  // namespace tallymon
