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
// afterwards: that it was committed is no proof, and what is in its place has to be looked at as well.
class UnconfirmedCalls {
 public:
  // The file is made when there is something to keep, and survives a kill, not a power cut. Where it cannot be written,
  // or none is named, a kill forgets the calls. Those of another database are forgotten.
  UnconfirmedCalls(jet::Database& main, std::filesystem::path file);

  // Where a call was put.
  struct Place {
    enum class Kind { Row, KeptFile };
    Kind kind = Kind::Row;
    std::int64_t number = 0;  // `RecordID`, or the bytes up to its end in KeptFiles::isKept()
  };

  // Within the transaction that stores the call there, the last thing before its commit.
  void add(std::span<const unsigned char> record, Place place);
  // The commit of the call added last was confirmed.
  void confirmLast();
  // For a record that has come: once, where it was put without that its sender heard of it, if what is there is this
  // call. Throws jet::Error.
  std::optional<Place> takeStored(std::span<const unsigned char> record);

 private:
  struct Entry {
    std::string transaction;
    Place place;
    std::string record;  // two hexadecimal digits a byte
  };

  void read();
  void write() const;

  jet::Database& main_;
  std::filesystem::path file_;
  std::vector<Entry> entries_;
};

}  // namespace ingest
