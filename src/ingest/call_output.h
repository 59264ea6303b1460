#pragma once

#include <string_view>

namespace ingest {

// Takes the forwarding lines of outgoing calls.
class CallOutput {
 public:
  virtual ~CallOutput() = default;
  // False while a line would go nowhere; it need not be built then.
  [[nodiscard]] virtual bool isOpen() const = 0;
  // 1 when the line was queued or there is no port, 0 when the port's queue has no room for it.
  virtual int SendLine(std::string_view line) = 0;
};

}  // namespace ingest
