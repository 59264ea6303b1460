#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "jet/postgres/session.h"

namespace jet::postgres {

// Makes the indexes that a long table of an earlier version lacks, one after the other on a connection of its own,
// while this program and others read and write. One program at a time does it. When the program ends, the server still
// finishes the index that it is at; what is missing then is made by the next start.
class IndexMaker {
 public:
  explicit IndexMaker(std::shared_ptr<Session> session) : session_(std::move(session)) {}

  // Those of `indexes` are for order alone. Never throws: without them, lists in their order are slow, and that is all.
  void begin(const TableDef& table, const std::vector<IndexDef>& indexes) noexcept;
  // Whether one is at it, of this program or another.
  [[nodiscard]] bool isMaking();
  // Begins the next one when one is made, and tells all programs in the end. Costs nothing while none is being made.
  void goOn();

 private:
  // Of what the one that makes them holds until its connection ends.
  [[nodiscard]] std::string lockName() const;
  [[nodiscard]] bool isAlone();
  // Left by a server that was ended in the middle of it: it serves no one and keeps its name.
  [[nodiscard]] bool isUnfinished(const std::string& name);
  void send();

  std::shared_ptr<Session> session_;
  std::unique_ptr<Connection> connection_;  // null while nothing is made
  std::deque<std::string> statements_;      // to be sent
};

}  // namespace jet::postgres
