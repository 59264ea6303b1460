#pragma once

#include <string>
#include <string_view>

namespace jet::postgres {

// Where a database on a server is: "postgresql://user@host:port/office/tallybook.mdb". What is before the last slash is
// a URI of libpq, with options before that slash ("...@host/office?sslmode=verify-full/"); the name after it, without
// its ending and in small letters, is a schema of that database.
class Address {
 public:
  // Whether a path is an address at all.
  static bool is(std::string_view path);
  // Throws Error 3051, which says what is wrong with it: it is none that libpq can read, or has a password in it, which
  // would then be readable to everybody who sees the settings.
  explicit Address(std::string_view path);

  [[nodiscard]] const std::string& uri() const { return uri_; }
  [[nodiscard]] const std::string& schema() const { return schema_; }
  // For messages to a person.
  [[nodiscard]] std::string describe() const { return uri_ + "/" + schema_; }

  // A path with any password in it left out, for a message.
  static std::string withoutPassword(std::string_view path);

 private:
  std::string uri_;
  std::string schema_;
};

}  // namespace jet::postgres
