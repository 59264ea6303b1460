#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "jet/engine/driver.h"
#include "jet/postgres/changes.h"
#include "jet/postgres/connection.h"

namespace jet::postgres {

// One connection with its transactions, and with what it knows of the others' changes.
class Session {
 public:
  Session(const Address& address, OpenMode mode) : connection_(address, mode), changes_(address.schema()) {}

  [[nodiscard]] Connection& connection() { return connection_; }
  [[nodiscard]] const Connection& connection() const { return connection_; }
  // Reads what the schema is like now, and asks to be told of changes. Error 3024 when there is no such schema.
  void join();

  // When the connection is lost, or turns out to be: connects again, ends what the server still does for the lost one,
  // and joins; false while the server cannot be reached.
  bool reconnect();
  // The server's number of the transaction that was begun last.
  [[nodiscard]] const std::string& transactionName() const { return changes_.writer(); }
  // Whether the transaction of that number was committed; false when the server never gave it. Error 3260 when it
  // neither ends nor is undone for some seconds.
  [[nodiscard]] bool committed(const std::string& transaction);

  void begin();
  void commit();
  void rollback() noexcept;
  void savepoint(int level);
  void release(int level);
  void rollbackTo(int level) noexcept;
  [[nodiscard]] bool inTransaction() const;
  void beginView();
  void endView() noexcept;

  // True when definitions changed.
  bool lookForChanges(engine::ChangeListener& listener, bool closely);

  // As Changes says.
  [[nodiscard]] std::int64_t rewritten(const std::string& table) const { return changes_.rewritten(table); }

  // A change of rows. Outside of a transaction it waits for the other writers, in the same round trip; `before` goes
  // with it. The result is the statement's; `changed`, the number of rows.
  Result change(Prepared& statement, const Parameters& parameters, const std::vector<std::string>& before,
                std::string_view text, std::int64_t& changed);
  // Statements that belong together, as the one transaction that is open or as one of their own.
  void change(const std::vector<std::string>& statements);
  // The same before there is a schema with what writers use.
  void changeAlone(const std::vector<std::string>& statements);

 private:
  [[nodiscard]] bool stillConnected();
  void endLostBackend();
  enum class State { Idle, Writing, Viewing };

  void requireSchema();
  [[nodiscard]] std::string lockStatement() const;
  void noteOthers(const PGresult* notes);
  void runUnguarded(std::initializer_list<std::string_view> statements);
  void runAll(const std::vector<std::string>& statements);
  void end(const char* statement);

  Connection connection_;
  Changes changes_;
  State state_ = State::Idle;
  std::string backend_;  // the server's process for this connection, and since when
  bool viewInTransaction_ = false;
  std::chrono::steady_clock::time_point lastLook_;
};

}  // namespace jet::postgres
