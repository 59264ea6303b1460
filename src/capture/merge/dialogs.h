#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "capture/format/rules.h"
#include "capture/merge/memory.h"

namespace capture {

// Calls of which the answer was told and the end not yet.
class Dialogs {
 public:
  struct Dialog {
    Fields fields;  // of the answer
    bool ended = false;
  };

  // Both sides' tags may be in either order.
  [[nodiscard]] static std::string key(const std::string& call, std::vector<std::string> ends) {
    std::sort(ends.begin(), ends.end());
    std::string key = call;
    for (const std::string& end : ends) key += '\n' + end;
    return key;
  }

  // The first answer counts: later ones change the media of the same call.
  void answered(const std::string& key, const Fields& fields) {
    if (dialogs_.find(key) == nullptr) dialogs_[key] = {fields, false};
  }
  [[nodiscard]] Dialog* find(const std::string& key) { return dialogs_.find(key); }

 private:
  Memory<Dialog> dialogs_{20000};
};

}  // namespace capture
