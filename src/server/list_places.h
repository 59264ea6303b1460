#pragma once

#include <chrono>
#include <cstddef>

#include "server/server_doc.h"

namespace server {

// Keeps the places known from which a desk jumps in its long lists on a server (jet/postgres/ladders), so that it need
// not wait for them after an import, or after calls were changed or deleted. Does nothing for files.
class ListPlaces {
 public:
  explicit ListPlaces(CServerDoc& document) : document_(document) {}

  // Looks at one list when it is time, which has places made beside other work where there are none. Costs some
  // milliseconds. Never throws: a desk that opens the list looks itself.
  void step();

 private:
  CServerDoc& document_;
  std::size_t next_ = 0;
  std::chrono::steady_clock::time_point due_;
};

}  // namespace server
