#pragma once

#include <chrono>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "capture/call.h"

namespace capture {

// One record for all parts of a call: extension, number and start of the first answered part, the talk times of all
// answered ones in its direction added up. A call is told when no part of it has come for the window.
class MergedCalls {
 public:
  explicit MergedCalls(std::chrono::seconds window) : window_(window) {}

  void add(const std::string& key, LineResult line, std::chrono::sys_seconds arrived, std::vector<LineResult>& out);
  [[nodiscard]] std::optional<std::chrono::sys_seconds> due() const;
  void settle(std::chrono::sys_seconds now, std::vector<LineResult>& out);
  void settleAll(std::vector<LineResult>& out);

 private:
  struct Waiting {
    std::string key;
    std::chrono::sys_seconds due;
    std::vector<LineResult> lines;
  };

  void settleFirst(std::vector<LineResult>& out);

  std::chrono::seconds window_;
  std::list<Waiting> waiting_;  // the one that is due first in front
  std::unordered_map<std::string, std::list<Waiting>::iterator> byKey_;
};

}  // namespace capture
