#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jet/engine/driver.h"
#include "jet/postgres/postgres_query.h"
#include "jet/postgres/session.h"

namespace jet::postgres {

// Places to start from in long lists. A server comes to the millionth row of an index by passing those before it, so of
// a list in the order of an index every 4,096th row is remembered: its ladder. Making one takes seconds; a connection
// of its own does it while this one goes on. Those of whole tables are kept in the schema for the other desks.
//
// A ladder counts the rows up to a key. Those added since, and some thousand that were taken away, are counted when a
// place is asked for. What else moves rows makes it worthless, such as an update of the column that the list is in the
// order of: the server itself says so when it is asked for that number.
class Ladders {
 public:
  explicit Ladders(std::shared_ptr<Session> session) : session_(std::move(session)) {}

  // As engine::Driver says; begins to make the ladder when there is none.
  std::optional<engine::Place> placeBefore(const engine::QueryRequest& request, const engine::Arguments& arguments,
                                           std::int64_t position);
  // The same for engine::Driver::positionOf().
  std::optional<std::int64_t> positionOf(const engine::QueryRequest& request, const engine::Arguments& arguments,
                                         engine::RowKey key);
  // Takes a ladder over when it is ready. Costs nothing while none is being made.
  void takeMade();
  [[nodiscard]] bool isMaking() {
    takeMade();
    return making_ != nullptr;
  }

 private:
  struct Ladder {
    std::int64_t rewritten = 0;  // the last change that moved rows, for which it holds
    std::int64_t seen = 0;       // the table's last change whose rows it counts
    engine::RowKey last = 0;     // the greatest key of its rows
    std::vector<engine::Place> places;
  };
  // Of one list.
  struct List {
    std::optional<Ladder> ladder;
    std::optional<std::chrono::steady_clock::time_point> begun;  // when one was last begun
    std::unique_ptr<PostgresSelect> rowsBefore;
    std::unique_ptr<PostgresSelect> isBehind;
    std::unique_ptr<PostgresSelect> rowsBetween;
    std::uint64_t used = 0;
  };
  struct Making {
    Making(const Address& address, OpenMode mode) : connection(address, mode) {}
    Connection connection;
    std::string list;
    bool stores = false;
  };
  struct Question;

  template <typename Answer>
  auto ask(const engine::QueryRequest& request, const engine::Arguments& arguments, Answer answer)
      -> decltype(answer(std::declval<const Question&>(), std::declval<List&>()));
  std::optional<std::int64_t> positionIn(const Question& question, List& list, engine::RowKey key);
  List& listOf(const std::string& name);
  std::optional<engine::Place> placeIn(const Question& question, List& list, std::int64_t position);
  std::optional<std::int64_t> rowsBefore(const Question& question, List& list, engine::RowKey key);
  bool mayRead();
  void find(const Question& question, List& list);
  void make(const Question& question, List& list);
  void begin(const Question& question, const std::string& statement, bool stores);
  static Ladder ladderOf(const PGresult* result);

  std::shared_ptr<Session> session_;
  std::map<std::string, List> lists_;  // by the select that makes the ladder and its values
  std::uint64_t questions_ = 0;
  std::unique_ptr<Making> making_;
  bool mayRead_ = false;  // the table of ladders, as far as it was asked
  bool refused_ = false;  // ladders cannot be stored
};

}  // namespace jet::postgres
