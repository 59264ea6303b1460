#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>

#include "jet/engine/driver.h"
#include "jet/postgres/connection.h"

namespace jet::postgres {

// What other connections changed, from the notes that each transaction leaves in the schema ("jet changes"). A note is
// read with a round trip; a NOTIFY tells that there may be some.
class Changes {
 public:
  explicit Changes(std::string schema) : schema_(std::move(schema)) {}

  // Reads the notes and the number of the transaction that reads them, which is then one of its own.
  [[nodiscard]] std::string selectOfWriter() const;
  [[nodiscard]] std::string select() const;
  // The number of the transaction that selectOfWriter() was last read in.
  [[nodiscard]] const std::string& writer() const { return own_; }
  // The connection was lost: a server that crashed meanwhile may give the number to another program's transaction.
  void forgetWriter() { own_.clear(); }
  // The last transaction that is known to have done more to the table than to add rows after all others; 0 when none
  // is.
  [[nodiscard]] std::int64_t rewritten(const std::string& table) const;
  // The answer of either.
  void take(const PGresult* notes);
  // Tells what was taken since the last call; true when definitions changed.
  bool tell(engine::ChangeListener& listener);

 private:
  struct Note {
    std::string changed;
    std::string rewritten;
  };

  std::string schema_;
  std::unordered_map<std::string, Note> known_;  // by table
  std::string own_;
  bool started_ = false;
  bool definitions_ = false;
  std::set<std::string> appended_;
  std::set<std::string> rewritten_;
};

}  // namespace jet::postgres
