#include "jet/postgres/address.h"

#include <libpq-fe.h>

#include <cstddef>
#include <filesystem>
#include <memory>

#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"

namespace jet::postgres {

namespace {

constexpr int kCannotBeOpened = 3051;
constexpr std::size_t kLongestName = 63;  // longer ones are cut by the server
constexpr std::string_view kSchemes[] = {"postgresql://", "postgres://"};

struct OptionsDeleter {
  void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
};

std::size_t lengthOfScheme(std::string_view place) {
  for (const std::string_view scheme : kSchemes) {
    if (place.starts_with(scheme)) return scheme.size();
  }
  return 0;
}

[[noreturn]] void failToRead(std::string_view place, const std::string& why) {
  throw Error(kCannotBeOpened, base::format("%s is not the address of a database: %s. An address is like "
                                            "postgresql://user@host:port/database/",
                                            Address::withoutPassword(place), why));
}

// Refuses what libpq cannot read, and a password in any of the forms that it takes.
void checkServer(const std::string& server) {
  char* fault = nullptr;
  const std::unique_ptr<PQconninfoOption, OptionsDeleter> options(PQconninfoParse(server.c_str(), &fault));
  if (options == nullptr) {
    // The library's sentence may repeat the address, password and all.
    PQfreemem(fault);
    failToRead(server, "it cannot be read");
  }
  for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option) {
    const std::string_view keyword = option->keyword;
    if (option->val == nullptr || (keyword != "password" && keyword != "sslpassword")) continue;
    throw Error(kCannotBeOpened,
                base::format("The address %s has a password in it, where others can read it. Take it out and write it "
                             "into the password file (~/.pgpass, a line host:port:database:user:password, readable by "
                             "its owner alone).",
                             Address::withoutPassword(server)));
  }
}

}  // namespace

bool Address::is(std::string_view path) {
  return lengthOfScheme(path) > 0;
}

Address::Address(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || slash < lengthOfScheme(path)) {
    failToRead(path, "a slash is missing after the name of the database");
  }
  uri_ = path.substr(0, slash);
  checkServer(uri_);
  schema_ = base::foldAscii(std::filesystem::path(path.substr(slash + 1)).stem().string());
  if (schema_.empty()) failToRead(path, "the name of the schema is missing");
  if (schema_.size() > kLongestName) {
    failToRead(path, base::format("the schema %s has a name of more than %d bytes", schema_, kLongestName));
  }
}

std::string Address::withoutPassword(std::string_view place) {
  std::string text(place);
  const std::size_t begin = lengthOfScheme(place);
  const std::size_t end = text.find_first_of("/?", begin);
  const std::size_t at = text.substr(0, end).rfind('@');
  const std::size_t colon = text.find(':', begin);
  if (begin > 0 && at != std::string::npos && colon < at) text.replace(colon, at - colon, "");
  constexpr std::string_view kOption = "password=";  // sslpassword, too
  for (std::size_t found = text.find(kOption); found != std::string::npos; found = text.find(kOption, found)) {
    found += kOption.size();
    const std::size_t next = text.find_first_of("&/", found);
    text.erase(found, next == std::string::npos ? next : next - found);
  }
  return text;
}

}  // namespace jet::postgres
