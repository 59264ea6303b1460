#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include "jet/postgres/connect.h"

namespace jet::postgres {

// A connection for a few plain statements about whole databases: no table of ours is read or written through it. Errors
// are those of connectTo(), and 3051 with the server's own text.
class ServerSession {
 public:
  explicit ServerSession(const Address& address);

  // The first column of the first row; nothing without a row.
  std::optional<std::string> run(const std::string& statement, std::initializer_list<const char*> values = {});
  [[nodiscard]] std::string quoted(const std::string& name) const;

 private:
  [[noreturn]] void fail() const;

  std::string description_;
  Handle connection_;
};

}  // namespace jet::postgres
