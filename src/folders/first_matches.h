#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "folders/folder_view.h"

namespace folders {

// The first rows of a list of calls that meet a further condition, in the list's order: for the screen that is looked
// at while what tells all of them is still being read. Looks from the list's first row on, a stretch of time after the
// other, and at nothing else. The constructor and lookFor throw jet::Error.
class FirstMatches {
 public:
  // Whether a list is in an order in which its beginning is found without its other rows: calls by their time.
  [[nodiscard]] static bool canFind(const FolderView& list);

  // `list`: canFind(), with what narrows it apart from `criteria`, a condition over its table. At most `most` rows.
  FirstMatches(std::unique_ptr<FolderView> list, std::string criteria, std::size_t most);

  // Looks further for `time` and some milliseconds, unless done().
  void lookFor(std::chrono::milliseconds time);
  // True when `most` rows were found, or the list was looked through.
  [[nodiscard]] bool done() const { return rows_.size() >= most_ || !next_; }
  [[nodiscard]] const std::vector<FolderView::ShownRow>& rows() const { return rows_; }

 private:
  void lookThrough(const base::DateTime& from, const base::DateTime& beyond);

  std::unique_ptr<FolderView> list_;
  std::optional<Narrowing> own_;
  std::string criteria_;
  std::size_t most_;
  bool newestFirst_;
  // Where the next stretch begins, in the list's direction: that second itself. Nothing at the end.
  std::optional<base::DateTime> next_;
  std::optional<base::DateTime> last_;  // of the list, itself
  std::int64_t stretch_ = 1;            // seconds
  std::vector<FolderView::ShownRow> rows_;
};

}  // namespace folders
