#pragma once

#include <chrono>
#include <cstddef>

#include "jet/database.h"
#include "platform/operator.h"
#include "schema/database_place.h"
#include "server/server_doc.h"

namespace server {

// The places from which a desk jumps in its long lists on a server (jet/postgres/ladders), so that it need not wait for
// them after an import, or after calls were changed or deleted. Nothing is done for files.

// Has those of all orders made that are missing, one after the other, and waits for them: some seconds each for
// 10,000,000 calls, nothing where they are there. Begins none after `patience`. Shows progress; the operator may stop
// it. Never throws: a desk that opens a list looks itself.
void makeListPlaces(jet::Database& main, platform::Operator& person,
                    std::chrono::seconds patience = std::chrono::seconds(20));
// The same for databases that were just made, however long it takes.
void makeListPlaces(const schema::DatabasePlace& place, platform::Operator& person);

// Keeps them known.
class ListPlaces {
 public:
  explicit ListPlaces(CServerDoc& document);

  // Looks at one list when it is time, which has places made beside other work where there are none. Costs some
  // milliseconds. Never throws.
  void step();
  // Many calls were added: the lists are due one after the other, without a pause.
  void hurry();

 private:
  CServerDoc& document_;
  std::size_t next_ = 0;
  std::size_t hurried_ = 0;  // lists without a pause before them
  std::chrono::steady_clock::time_point due_;
};

}  // namespace server
