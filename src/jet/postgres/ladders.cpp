#include "jet/postgres/ladders.h"

#include <algorithm>
#include <charconv>

#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"
#include "jet/postgres/statement_emitter.h"
#include "jet/postgres/wire.h"

namespace jet::postgres {

namespace {

constexpr std::int64_t kStep = 4096;  // rows
// A ladder is made again when more rows than these must be counted for each place.
constexpr std::int64_t kMostAdded = 20'000;
// From the beginning of a ladder to that of the next one of the same list, however often its table changes.
constexpr std::chrono::seconds kPause{20};
constexpr std::size_t kMostLists = 32;

// "{1,2,3}"
std::vector<std::int64_t> numbersOf(std::string_view array) {
  std::vector<std::int64_t> numbers;
  for (const char* at = array.data() + 1; at < array.data() + array.size();) {
    std::int64_t number = 0;
    at = std::from_chars(at, array.data() + array.size(), number).ptr + 1;
    numbers.push_back(number);
  }
  if (array == "{}") numbers.clear();
  return numbers;
}

std::string_view textAt(const PGresult* result, int column) {
  return {PQgetvalue(result, 0, column), static_cast<std::size_t>(PQgetlength(result, 0, column))};
}

bool isTrue(const PGresult* result, int column) {
  return PQgetisnull(result, 0, column) == 0 && *PQgetvalue(result, 0, column) != 0;
}

}  // namespace

struct Ladders::Question {
  const engine::QueryRequest& request;
  const engine::Arguments& arguments;
  const Plan& plan;  // makes the ladder
  const Parameters& parameters;
  std::string name;

  [[nodiscard]] const TableDef& table() const { return request.query->statement.table(); }
  // Lists of some rows are of one desk; a condition may be one on all rows alike, as where no filter is set.
  [[nodiscard]] bool isShared() const { return readsAllRows(request.query->statement); }
  // The number of the last change after which the ladder holds no more. Others can spoil a list of some rows.
  [[nodiscard]] std::string lastMove() const {
    const std::size_t field = request.query->statement.orderBy.front().expression.index;
    return postgres::lastMove(table(), isShared() ? table().fields[field].name : std::string());
  }
};

std::optional<engine::Place> Ladders::placeBefore(const engine::QueryRequest& request,
                                                  const engine::Arguments& arguments, std::int64_t position) {
  return ask(request, arguments,
             [&](const Question& question, List& list) { return placeIn(question, list, position); });
}

std::optional<std::int64_t> Ladders::positionOf(const engine::QueryRequest& request, const engine::Arguments& arguments,
                                                engine::RowKey key) {
  return ask(request, arguments, [&](const Question& question, List& list) { return positionIn(question, list, key); });
}

// `answer` is given a list with a ladder; one is begun where there is none.
template <typename Answer>
auto Ladders::ask(const engine::QueryRequest& request, const engine::Arguments& arguments, Answer answer)
    -> decltype(answer(std::declval<const Question&>(), std::declval<List&>())) {
  if (!readsByIndex(request.query->statement)) return std::nullopt;
  takeMade();
  const Plan plan = emitLadder(request, kStep);
  Parameters parameters;
  addParameters(parameters, plan, arguments);
  Question question{request, arguments, plan, parameters, plan.sql};
  for (int i = 0; i < parameters.count(); ++i) {
    const char* const value = parameters.values()[i];
    question.name += value != nullptr ? std::string("\x1F") + value : std::string("\x1E");
  }
  List& list = listOf(question.name);
  if (!question.isShared()) {
    const std::int64_t rewritten = session_->rewritten(question.table().name);
    if (list.ladder && list.ladder->rewritten < rewritten) list.ladder.reset();
  } else if (!mayRead()) {
    return std::nullopt;
  } else if (!list.ladder) {
    find(question, list);
  }
  const auto place = list.ladder ? answer(question, list) : std::nullopt;
  if (!list.ladder) make(question, list);
  return place;
}

Ladders::List& Ladders::listOf(const std::string& name) {
  if (lists_.size() >= kMostLists && !lists_.contains(name)) {
    lists_.erase(std::ranges::min_element(lists_, {}, [](const auto& list) { return list.second.used; }));
  }
  List& list = lists_[name];
  list.used = ++questions_;
  return list;
}

// Rows that were added or taken away move a place: one that is moved past the position gives way to another.
std::optional<engine::Place> Ladders::placeIn(const Question& question, List& list, std::int64_t position) {
  constexpr int kAttempts = 4;
  std::int64_t added = 0;
  for (int attempt = 0; attempt < kAttempts && list.ladder; ++attempt) {
    const std::vector<engine::Place>& places = list.ladder->places;
    const auto behind = std::ranges::upper_bound(places, position - added, {}, &engine::Place::position);
    if (behind == places.begin()) return std::nullopt;
    const engine::Place place = *(behind - 1);
    const auto rows = rowsBefore(question, list, place.key);
    if (!rows) continue;
    added = *rows;
    if (place.position + added <= position) return engine::Place{place.position + added, place.key};
  }
  return std::nullopt;
}

// The last place at or before the row, and the number of rows from there to it. A row without a value in the order, and
// one that is gone, has no place.
std::optional<std::int64_t> Ladders::positionIn(const Question& question, List& list, engine::RowKey key) {
  if (!list.isBehind) {
    list.isBehind = std::make_unique<PostgresSelect>(session_, emitIsBehind(question.request), 0, false, "");
    list.rowsBetween = std::make_unique<PostgresSelect>(session_, emitRowsBetween(question.request), 0, false, "");
  }
  const auto value = [&](PostgresSelect& select, engine::RowKey place) -> std::optional<std::int64_t> {
    const std::int64_t extras[] = {key, place};
    select.bind({question.arguments.literals, question.arguments.sites, extras});
    const engine::Cell cell = select.step() ? select.cell(0) : engine::Cell();
    select.reset();
    if (cell.kind == engine::Cell::Kind::Null) return std::nullopt;
    return cell.integer;
  };
  const std::vector<engine::Place> places = list.ladder->places;
  std::size_t from = 0;
  for (std::size_t behind = places.size(); from < behind;) {
    const std::size_t middle = (from + behind) / 2;
    const auto isBefore = value(*list.isBehind, places[middle].key);
    if (!isBefore) return std::nullopt;
    if (*isBefore != 0) {
      from = middle + 1;
    } else {
      behind = middle;
    }
  }
  if (from == 0) return std::nullopt;
  const engine::Place& place = places[from - 1];
  const auto between = value(*list.rowsBetween, place.key);
  const auto added = rowsBefore(question, list, place.key);
  if (!between || !added) return std::nullopt;
  return place.position + *added + *between;
}

// Nothing when the ladder holds no more, and when the place is gone, which is then left out.
std::optional<std::int64_t> Ladders::rowsBefore(const Question& question, List& list, engine::RowKey key) {
  if (!list.rowsBefore) {
    list.rowsBefore = std::make_unique<PostgresSelect>(session_, emitRowsBefore(question.request), 0, false, "");
  }
  const std::int64_t extras[] = {key, list.ladder->last, list.ladder->rewritten, list.ladder->seen};
  PostgresSelect& select = *list.rowsBefore;
  select.bind({question.arguments.literals, question.arguments.sites, extras});
  select.step();
  const std::int64_t before = select.cell(0).integer;
  const std::int64_t added = select.cell(1).integer;
  const bool holds = select.cell(2).integer != 0;
  const bool isThere = select.cell(3).integer != 0;
  select.reset();
  if (!holds) {
    list.ladder.reset();
    return std::nullopt;
  }
  if (!isThere) {
    std::erase_if(list.ladder->places, [&](const engine::Place& place) { return place.key == key; });
    return std::nullopt;
  }
  if (added > kMostAdded) make(question, list);
  return before;
}

// False for a schema of an earlier version, and without the right. Asked beforehand: a fault would end a transaction.
bool Ladders::mayRead() {
  if (mayRead_) return true;
  Parameters tables;
  tables.addText(quotedName(kLaddersTable));
  tables.addText(quotedName(kOrdersTable));
  const Result result =
      session_->connection().run({"SELECT coalesce(has_table_privilege(to_regclass($1::text), 'SELECT') AND "
                                  "has_table_privilege(to_regclass($2::text), 'SELECT'), false)"},
                                 tables);
  mayRead_ = isTrue(result.get(), 0);
  return mayRead_;
}

// Another desk's, or of an earlier run of this one.
void Ladders::find(const Question& question, List& list) {
  constexpr int kHolds = 5;
  constexpr int kRecent = 6;
  Parameters what;
  what.addText(question.name);
  const Result found = session_->connection().run(
      {"SELECT rewritten, last, keys::text, positions::text, seen, rewritten = " + question.lastMove() +
       ", made > now() - interval '" + std::to_string(kPause.count()) + " s' FROM " + quotedName(kLaddersTable) +
       " WHERE what = $1::text"},
      what);
  if (PQntuples(found.get()) == 0) return;
  if (isTrue(found.get(), kHolds)) {
    list.ladder = ladderOf(found.get());
  } else if (isTrue(found.get(), kRecent)) {
    list.begun = std::chrono::steady_clock::now();
  }
}

// Columns: rewritten, last, keys, positions, seen.
Ladders::Ladder Ladders::ladderOf(const PGresult* result) {
  constexpr int kSeen = 4;
  Ladder ladder{integerAt(result, 0, 0), integerAt(result, 0, kSeen), integerAt(result, 0, 1), {}};
  const std::vector<std::int64_t> keys = numbersOf(textAt(result, 2));
  const std::vector<std::int64_t> positions = numbersOf(textAt(result, 3));
  for (std::size_t i = 0; i < std::min(keys.size(), positions.size()); ++i) {
    ladder.places.push_back({positions[i], keys[i]});
  }
  return ladder;
}

// In one statement, so that all of it is of one moment. One desk at a time makes a ladder of a list.
void Ladders::make(const Question& question, List& list) {
  const auto now = std::chrono::steady_clock::now();
  if (making_ || (list.begun && now - *list.begun < kPause)) return;
  list.begun = now;
  const std::string columns = "rewritten, last, keys, positions, seen";
  const std::string ladder = "SELECT " + question.lastMove() + " AS rewritten, " + lastChange(question.table()) +
                             " AS seen, coalesce((SELECT max(" + keyColumn(question.table()) + ") FROM " +
                             quotedName(question.table().name) +
                             "), 0) AS last, coalesce(array_agg(k ORDER BY n), '{}') AS keys, "
                             "coalesce(array_agg(n ORDER BY n), '{}') AS positions FROM (" +
                             question.plan.sql + ") AS l";
  const std::string given = "rewritten, last, keys::text, positions::text, seen";
  const bool stores = question.isShared() && !session_->connection().readOnly() && !refused_;
  const std::string statement =
      stores ? "INSERT INTO " + quotedName(kLaddersTable) + " AS o (what, made, " + columns + ") SELECT " +
                   quotedText(question.name) + ", now(), " + columns + " FROM (" + ladder +
                   ") AS m ON CONFLICT (what) DO UPDATE SET (made, " + columns +
                   ") = (excluded.made, excluded.rewritten, excluded.last, excluded.keys, excluded.positions, "
                   "excluded.seen) "
                   "RETURNING " +
                   given
             : "SELECT " + given + " FROM (" + ladder + ") AS m";
  begin(question, statement, stores);
}

void Ladders::begin(const Question& question, const std::string& statement, bool stores) {
  constexpr int kBinary = 1;
  const Connection& own = session_->connection();
  try {
    auto making = std::make_unique<Making>(own.address(), stores ? OpenMode::ReadWrite : OpenMode::ReadOnly);
    making->list = question.name;
    making->stores = stores;
    Parameters name;
    name.addText(own.address().schema() + question.name);
    const Result alone = making->connection.run({"SELECT pg_try_advisory_lock(hashtextextended($1::text, 0))"}, name);
    if (!isTrue(alone.get(), 0)) return;
    if (PQsendQueryParams(making->connection.handle(), statement.c_str(), question.parameters.count(), nullptr,
                          question.parameters.values(), nullptr, nullptr, kBinary) == 1) {
      making_ = std::move(making);
    }
  } catch (const Error&) {
    // The server has no connection to spare. Jumps are slow, and it is asked again later.
  }
}

void Ladders::takeMade() {
  if (!making_) return;
  PGconn* const server = making_->connection.handle();
  const bool there = PQflush(server) >= 0 && PQconsumeInput(server) == 1;
  if (there && PQisBusy(server) != 0) return;
  const std::unique_ptr<Making> made = std::move(making_);
  if (!there) return;
  const Result result(PQgetResult(server));
  if (PQresultStatus(result.get()) == PGRES_TUPLES_OK && PQntuples(result.get()) == 1) {
    lists_[made->list].ladder = ladderOf(result.get());
  } else {
    refused_ = refused_ || made->stores;
  }
}

}  // namespace jet::postgres
