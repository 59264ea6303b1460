#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "capture/call.h"
#include "capture/merge/memory.h"

namespace capture {

// Lines of one call that an exchange tells once for every phone that rang. An answered line is a record at once and
// makes the unanswered ones parts; when no one answered, the first line is the record, which is certain only when the
// window has passed. The window counts from the group's first line.
class CallGroups {
 public:
  explicit CallGroups(std::chrono::seconds window) : window_(window) {}

  // Adds a line's records (one or two, of one call) under the group's key; gives what is certain now.
  void add(const std::string& key, LineResult line, std::chrono::sys_seconds arrived, std::vector<LineResult>& out);
  // True when an answered line of the group came before.
  [[nodiscard]] bool answeredBefore(const std::string& key);
  [[nodiscard]] std::optional<std::chrono::sys_seconds> due() const;
  // Settles the groups whose window has passed.
  void settle(std::chrono::sys_seconds now, std::vector<LineResult>& out);
  void settleAll(std::vector<LineResult>& out);

 private:
  struct Group {
    bool answered = false;
    bool settled = false;  // its window has passed
    std::optional<LineResult> waiting;
  };
  struct Deadline {
    std::chrono::sys_seconds when;
    std::string key;
  };

  void settleFirst(std::vector<LineResult>& out);

  std::chrono::seconds window_;
  Memory<Group> groups_;
  std::deque<Deadline> deadlines_;  // of the groups that are not settled, earliest first
};

}  // namespace capture
