#pragma once

#include <libpq-fe.h>

#include <chrono>
#include <memory>
#include <string>

#include "jet/postgres/address.h"

namespace jet::postgres {

struct HandleCloser {
  void operator()(PGconn* handle) const { PQfinish(handle); }
};
using Handle = std::unique_ptr<PGconn, HandleCloser>;

// The server's text as one line.
std::string oneLine(const char* text);

// Connects to the server of an address, and waits for it: ten seconds for each host, unless the address says otherwise.
// Throws Error 3151 when the server cannot be reached, else 3051; both say what to do.
Handle connectTo(const Address& address);

// The same beside the caller, who has a window to draw meanwhile: names that no server resolves, and hosts that do not
// answer, take their time.
class Attempt {
 public:
  explicit Attempt(const Address& address);
  Attempt(const Attempt&) = delete;
  Attempt& operator=(const Attempt&) = delete;
  // One that is under way is left to itself.
  ~Attempt();

  // Waits for its end, this long at most; false when it goes on. Throws as connectTo.
  bool endsWithin(std::chrono::milliseconds time, Handle& handle);

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace jet::postgres
