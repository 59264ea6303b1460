#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "jet/database.h"

namespace ingest {

// Live calls on their way into a database on a server, each from before its commit until the server confirmed it. When
// the connection is lost in between, it is unknown whether the call is stored, and its sender repeats it: then the
// server is asked what became of that commit. They are kept in a file meanwhile, so that a program that is killed
// before it could ask leaves them to the next one. For database files there is nothing to keep.
// A server that crashed with the commit still in its memory gives the number of that transaction to another one
// afterwards: that it was committed is no proof, and the row has to be looked at as well.
class UnconfirmedCalls {
 public:
  // The file is made when there is something to keep, and survives a kill, not a power cut. Where it cannot be written,
  // or none is named, a kill forgets the calls. Those of another database are forgotten.
  UnconfirmedCalls(jet::Database& main, std::filesystem::path file);

  // Within the transaction that stores the call as the row of that key, the last thing before its commit.
  void add(std::span<const unsigned char> record, std::int64_t key);
  // The commit of the call added last was confirmed.
  void confirmLast();
  // For a record that has come: once, the key of the row that it was stored as without that its sender heard of it, if
  // that row is the call. Throws jet::Error.
  std::optional<std::int64_t> takeStored(std::span<const unsigned char> record);

 private:
  struct Entry {
    std::string transaction;
    std::int64_t key = 0;
    std::string record;  // two hexadecimal digits a byte
  };

  void read();
  void write() const;

  jet::Database& main_;
  std::filesystem::path file_;
  std::vector<Entry> entries_;
};

}  // namespace ingest
