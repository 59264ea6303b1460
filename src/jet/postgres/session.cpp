#include "jet/postgres/session.h"

#include <cstdlib>
#include <thread>

#include "jet/engine/faults.h"
#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"

namespace jet::postgres {

namespace {

// A notice comes within a millisecond or so of the change, but there is no promise when: after this time the notes are
// read without one.
constexpr std::chrono::milliseconds kBlindTime{20};

std::string levelName(int level) {
  return "level" + std::to_string(level);
}

}  // namespace

void Session::join() {
  constexpr int kNoRight = 3027;
  requireSchema();
  try {
    connection_.run({"LISTEN " + quotedName(channel(connection_.address().schema()))});
  } catch (const Error& error) {
    // A server that follows another one tells nothing: its notes are read from time to time.
    if (error.connectionLost()) throw;
  }
  try {
    noteOthers(connection_.run({changes_.select()}).get());
  } catch (const Error& error) {
    if (error.number() == kNoRight) throw Error(3051, error.description());
    throw;
  }
}

void Session::requireSchema() {
  Parameters names;
  names.addText(connection_.address().schema());
  names.addText(kChangesTable);
  const Result found =
      connection_.run({"SELECT c.oid IS NOT NULL, "
                       "(SELECT pid || ' ' || backend_start FROM pg_stat_activity WHERE pid = pg_backend_pid()) "
                       "FROM pg_namespace AS n LEFT JOIN pg_class AS c "
                       "ON c.relnamespace = n.oid AND c.relname = $2::text WHERE n.nspname = $1::text"},
                      names);
  if (PQntuples(found.get()) == 0) {
    throw Error(3024, "Could not find the database " + connection_.describe() +
                          ". Check the address, or make the database with tallyctl init.");
  }
  if (*PQgetvalue(found.get(), 0, 0) == 0) {
    throw Error(3343, connection_.describe() + " is not a Tallybook database, but a schema of another program.");
  }
  backend_ = PQgetvalue(found.get(), 0, 1);
}

std::string Session::lockStatement() const {
  return "SELECT pg_advisory_xact_lock(" + std::to_string(writersLock(connection_.address().schema())) + ")";
}

// What others committed before the lock was given is in the notes that are read under it.
void Session::begin() {
  try {
    noteOthers(connection_.run({"BEGIN", lockStatement(), changes_.selectOfWriter()}).get());
  } catch (...) {
    rollback();
    throw;
  }
  state_ = State::Writing;
  connection_.setGuarded(true);
}

void Session::end(const char* statement) {
  connection_.settle();
  connection_.setGuarded(false);
  state_ = State::Idle;
  const Result result = connection_.run({statement});
  if (std::string_view(PQcmdStatus(result.get())) == statement) return;
  throw Error(3000, connection_.describe() + ": the changes begun were undone by an earlier fault. Begin them again.");
}

bool Session::inTransaction() const {
  return state_ == State::Writing && !connection_.lost() &&
         PQtransactionStatus(connection_.handle()) != PQTRANS_INERROR;
}

void Session::commit() {
  end("COMMIT");
}

bool Session::reconnect() {
  if (stillConnected()) return true;
  state_ = State::Idle;
  viewInTransaction_ = false;
  if (!connection_.reconnect()) return false;
  endLostBackend();
  changes_.forgetWriter();
  join();
  return true;
}

// A loss is not noticed before something is asked.
bool Session::stillConnected() {
  if (connection_.lost()) return false;
  try {
    connection_.run({"SELECT 1"});
    return true;
  } catch (const Error& error) {
    if (!error.connectionLost()) throw;
    return false;
  }
}

// When the network is dead, the server may go on holding the writers' lock for a connection that is gone.
void Session::endLostBackend() {
  Parameters backend;
  backend.addText(backend_);
  try {
    connection_.run({"SELECT pg_terminate_backend(pid) FROM pg_stat_activity "
                     "WHERE pid <> pg_backend_pid() AND pid || ' ' || backend_start = $1::text"},
                    backend);
  } catch (const Error& error) {
    if (error.connectionLost()) throw;
  }
}

bool Session::committed(const std::string& transaction) {
  constexpr std::chrono::milliseconds kLook{20};
  constexpr std::chrono::seconds kPatience{5};
  Parameters number;
  number.addText(transaction);
  // A number from the future, which only another server can have given, would be an error.
  constexpr std::string_view kState =
      "SELECT pg_xact_status(number) FROM (SELECT $1::text::xid8 AS number) AS asked "
      "WHERE number < pg_snapshot_xmax(pg_current_snapshot())";
  for (const auto end = std::chrono::steady_clock::now() + kPatience; std::chrono::steady_clock::now() < end;) {
    const Result result = connection_.run({kState}, number);
    const std::string_view state = PQntuples(result.get()) > 0 ? PQgetvalue(result.get(), 0, 0) : "";
    if (state != "in progress") return state == "committed";
    std::this_thread::sleep_for(kLook);
  }
  throw engine::lockedFault(connection_.describe(), {});
}

void Session::rollback() noexcept {
  try {
    connection_.forgetBulk();
    if (!connection_.lost()) end("ROLLBACK");
  } catch (const Error&) {
    // The server undoes what a lost connection began.
  }
  connection_.setGuarded(false);
  state_ = State::Idle;
}

// The guard of a statement is a level of its own, which would end with it.
void Session::runUnguarded(std::initializer_list<std::string_view> statements) {
  connection_.settle();
  connection_.setGuarded(false);
  try {
    connection_.run(statements);
  } catch (...) {
    connection_.setGuarded(true);
    throw;
  }
  connection_.setGuarded(true);
}

void Session::savepoint(int level) {
  runUnguarded({"SAVEPOINT " + levelName(level)});
}

void Session::release(int level) {
  runUnguarded({"RELEASE " + levelName(level)});
}

void Session::rollbackTo(int level) noexcept {
  try {
    connection_.forgetBulk();
    runUnguarded({"ROLLBACK TO " + levelName(level), "RELEASE " + levelName(level)});
  } catch (const Error&) {
    // As in rollback().
  }
}

void Session::beginView() {
  viewInTransaction_ = state_ == State::Writing;
  if (viewInTransaction_) return;
  changes_.take(connection_.run({"BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY", changes_.select()}).get());
  state_ = State::Viewing;
}

void Session::endView() noexcept {
  if (viewInTransaction_ || connection_.lost()) return;
  try {
    end("COMMIT");
  } catch (const Error&) {
    rollback();
  }
}

bool Session::lookForChanges(engine::ChangeListener& listener, bool closely) {
  const auto now = std::chrono::steady_clock::now();
  if (state_ == State::Idle && (connection_.hasNotice() || closely || now - lastLook_ > kBlindTime)) {
    noteOthers(connection_.run({changes_.select()}).get());
  }
  return changes_.tell(listener);
}

void Session::noteOthers(const PGresult* notes) {
  changes_.take(notes);
  lastLook_ = std::chrono::steady_clock::now();
}

Result Session::change(Prepared& statement, const Parameters& parameters, const std::vector<std::string>& before,
                       std::string_view text, std::int64_t& changed) {
  constexpr std::size_t kNotes = 1;
  const bool alone = state_ == State::Idle;
  std::vector<std::string> first;
  if (alone) first = {lockStatement(), changes_.selectOfWriter()};
  first.insert(first.end(), before.begin(), before.end());
  connection_.start(statement, parameters, first, false, nullptr, text);
  Result result = connection_.next();
  while (connection_.next()) {
  }
  if (alone) noteOthers(connection_.earlier(kNotes));
  changed = std::strtoll(PQcmdTuples(result.get()), nullptr, 10);
  return result;
}

void Session::runAll(const std::vector<std::string>& statements) {
  try {
    for (const std::string& statement : statements) connection_.run({statement});
  } catch (...) {
    rollback();
    throw;
  }
}

void Session::change(const std::vector<std::string>& statements) {
  if (state_ == State::Writing) {
    for (const std::string& statement : statements) connection_.run({statement});
    return;
  }
  begin();
  runAll(statements);
  commit();
}

void Session::changeAlone(const std::vector<std::string>& statements) {
  connection_.run({"BEGIN"});
  runAll(statements);
  connection_.run({"COMMIT"});
}

}  // namespace jet::postgres
