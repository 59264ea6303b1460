#include "jet/postgres/connect.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <exception>
#include <iterator>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "base/printf.h"
#include "jet/error.h"

namespace jet::postgres {

namespace {

// What a connection is told at its start; what the address says holds before it. A dead network is noticed
// within a quarter of a minute.
constexpr std::array kDefaults{
    std::pair{"connect_timeout", "10"},     std::pair{"keepalives_idle", "5"},
    std::pair{"keepalives_interval", "2"},  std::pair{"keepalives_count", "3"},
    std::pair{"tcp_user_timeout", "12000"}, std::pair{"fallback_application_name", "tallybook"}};

// As libpq takes them: names and values, each list ends with a null.
struct Words {
  explicit Words(const Address& address) {
    for (const auto& [name, value] : kDefaults) add(name, value);
    // The address replaces what was added before it, and is replaced by what is added after it.
    add("dbname", address.uri().c_str());
    add("client_encoding", "UTF8");
    add(nullptr, nullptr);
  }

  std::vector<const char*> names;
  std::vector<const char*> values;

 private:
  void add(const char* name, const char* value) {
    names.push_back(name);
    values.push_back(value);
  }
};

// What can be done about a fault that has no number, but a text: in English unless the server was told another
// language.
struct Known {
  std::string_view part;
  bool refusal;  // waiting does not help
  const char* advice;
};
constexpr Known kKnown[] = {
    {"SSL was required", true,
     "The server has no TLS: switch it on there (ssl = on), or take sslmode out of the address."},
    {"certificate", true, "Check the certificates: sslrootcert= in the address names the file of the authority."},
    {"no pg_hba.conf entry", true,
     "The server lets nobody in from this machine with this user, or not in this way: let its administrator add a line "
     "to "
     "pg_hba.conf. When that says \"no encryption\", put sslmode=require into the address."},
    {"Peer authentication failed", true,
     "The user in the address must be the one who runs the program, or pg_hba.conf of the server must ask for a "
     "password."},
    {"could not translate host name", false,
     "Check the server's name in the address, and that this machine can resolve it."},
};

const Known* knownFault(std::string_view reason) {
  const auto found =
      std::ranges::find_if(kKnown, [&](const Known& each) { return reason.find(each.part) != std::string_view::npos; });
  return found == std::end(kKnown) ? nullptr : found;
}

std::string adviceOnRefusal(PGconn* handle, std::string_view reason) {
  if (PQconnectionNeedsPassword(handle) != 0) {
    return "The server asks for a password: write it into the password file (~/.pgpass, a line "
           "host:port:database:user:password, readable by its owner alone).";
  }
  const bool missing = reason.find("does not exist") != std::string_view::npos;
  if (missing && reason.find("database \"") != std::string_view::npos) {
    return "Correct the database in the address, or let an administrator of the server make it (createdb).";
  }
  if (missing) return "Correct the user in the address, or let an administrator of the server make him (createuser).";
  if (PQconnectionUsedPassword(handle) != 0) {
    return "Check the user in the address and his line in the password file (~/.pgpass).";
  }
  return "Check the address, the user and his password file (~/.pgpass).";
}

[[noreturn]] void fail(PGconn* handle, const Words& words, const std::string& place) {
  const std::string reason = oneLine(PQerrorMessage(handle));
  const Known* const known = knownFault(reason);
  // A server that answers has refused.
  const PGPing ping = PQpingParams(words.names.data(), words.values.data(), 1);
  if (ping == PQPING_OK || ping == PQPING_NO_ATTEMPT || (known != nullptr && known->refusal)) {
    throw Error(3051, base::format("%s cannot be opened. %s (%s)", place,
                                   known != nullptr ? known->advice : adviceOnRefusal(handle, reason), reason));
  }
  throw Error(
      Error::kConnectionLost,
      base::format("The server of %s cannot be reached. %s (%s)", place,
                   known != nullptr ? known->advice : "Check that it runs, and the host and port in the address.",
                   reason));
}

}  // namespace

std::string oneLine(const char* text) {
  std::string line = text != nullptr ? text : "";
  while (line.ends_with('\n') || line.ends_with(' ')) line.pop_back();
  for (char& c : line) {
    if (c == '\n' || c == '\t') c = ' ';
  }
  return line;
}

Handle connectTo(const Address& address) {
  const Words words(address);
  Handle handle(PQconnectdbParams(words.names.data(), words.values.data(), 1));
  if (PQstatus(handle.get()) != CONNECTION_OK) fail(handle.get(), words, address.describe());
  return handle;
}

struct Attempt::State {
  std::mutex lock;
  std::condition_variable ended;
  bool done = false;
  Handle handle;
  std::exception_ptr fault;
};

Attempt::Attempt(const Address& address) : state_(std::make_shared<State>()) {
  std::thread([state = state_, address] {
    Handle handle;
    std::exception_ptr fault;
    try {
      handle = connectTo(address);
    } catch (...) {
      fault = std::current_exception();
    }
    const std::lock_guard hold(state->lock);
    state->handle = std::move(handle);
    state->fault = fault;
    state->done = true;
    state->ended.notify_all();
  }).detach();
}

Attempt::~Attempt() = default;

bool Attempt::endsWithin(std::chrono::milliseconds time, Handle& handle) {
  std::unique_lock hold(state_->lock);
  if (!state_->ended.wait_for(hold, time, [this] { return state_->done; })) return false;
  if (state_->fault) std::rethrow_exception(state_->fault);
  handle = std::move(state_->handle);
  return true;
}

}  // namespace jet::postgres
