#pragma once

#include <chrono>
#include <utility>

#include "base/journal_line.h"
#include "server/server_doc.h"

namespace server {

// Takes up the connection of a document to the server of its databases after it was lost: tries again after growing
// pauses, for as long as it takes, and says so.
class Reconnection {
 public:
  using Clock = std::chrono::steady_clock;

  // `say` takes a sentence for the operator: once when the connection was lost, once when it is back.
  Reconnection(CServerDoc& document, base::Say say) : document_(document), say_(std::move(say)) {}

  // Whether the databases can be used now. To be asked before whatever uses them, and while waiting.
  bool ready();
  // True once after a loss that is mended: what is shown has to be read anew, what was stopped goes on.
  bool takeBack();
  // When ready() would try again; later than any timer while nothing is lost.
  [[nodiscard]] Clock::time_point nextTry() const { return lost_ ? nextTry_ : Clock::time_point::max(); }

 private:
  CServerDoc& document_;
  base::Say say_;
  bool lost_ = false;
  bool back_ = false;
  bool lookedAgain_ = false;  // since the last pause
  Clock::time_point nextTry_;
  std::chrono::milliseconds pause_{};
};

}  // namespace server
