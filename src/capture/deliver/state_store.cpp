#include "capture/deliver/state_store.h"

#include <algorithm>
#include <array>

#include "capture/journal/journal_keeping.h"
#include "capture/time_units.h"

namespace capture {

namespace {

constexpr int kUnknownKept = 20;  // lines a day, for the installer to look at
constexpr std::array<std::int32_t, 2> kFirstNumber = {1001, 9'000'001};

constexpr const char* kTables = R"(
CREATE TABLE IF NOT EXISTS source (
  id TEXT PRIMARY KEY, converted INTEGER NOT NULL, pending TEXT NOT NULL, replaced TEXT NOT NULL, origin TEXT NOT NULL,
  lines INTEGER NOT NULL, record_lines INTEGER NOT NULL, parts INTEGER NOT NULL, headings INTEGER NOT NULL,
  skipped INTEGER NOT NULL, alarms INTEGER NOT NULL, unknown INTEGER NOT NULL, calls INTEGER NOT NULL,
  internal INTEGER NOT NULL, repeats INTEGER NOT NULL, last_line INTEGER NOT NULL, last_call TEXT NOT NULL,
  day TEXT NOT NULL, unknown_today INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS recorded (source TEXT NOT NULL, first INTEGER NOT NULL, last INTEGER NOT NULL,
  PRIMARY KEY (source, first)) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS recorded_last ON recorded (source, last);
CREATE TABLE IF NOT EXISTS unknown_line (source TEXT NOT NULL, position INTEGER NOT NULL, time INTEGER NOT NULL,
  text TEXT NOT NULL, reason TEXT NOT NULL, PRIMARY KEY (source, position)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS number (kind INTEGER NOT NULL, source TEXT NOT NULL, name TEXT NOT NULL,
  number INTEGER NOT NULL, PRIMARY KEY (kind, source, name), UNIQUE (kind, number)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS taken (source TEXT NOT NULL, name TEXT NOT NULL, time INTEGER NOT NULL,
  PRIMARY KEY (source, name)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS replay (file TEXT PRIMARY KEY) WITHOUT ROWID;
)";

using CountField = std::int64_t SourceCounts::*;
// In the order of the columns.
constexpr CountField kCounts[] = {&SourceCounts::lines,    &SourceCounts::recordLines, &SourceCounts::parts,
                                  &SourceCounts::headings, &SourceCounts::skipped,     &SourceCounts::alarms,
                                  &SourceCounts::unknown,  &SourceCounts::calls,       &SourceCounts::internal,
                                  &SourceCounts::repeats};

std::int64_t signedOf(std::uint64_t value) {
  return static_cast<std::int64_t>(value);
}

}  // namespace

StateStore::StateStore(const std::filesystem::path& file) : file_(file) {
  file_.run(kTables);
}

SourceState StateStore::load(std::string_view source) const {
  SqliteStatement row(file_,
                      "SELECT converted, pending, replaced, origin, lines, record_lines, parts, headings, skipped, "
                      "alarms, unknown, calls, internal, repeats, last_line, last_call, day, unknown_today "
                      "FROM source WHERE id = ?");
  row.bind(source);
  SourceState state;
  if (!row.step()) return state;
  state.converted = static_cast<std::uint64_t>(row.integer(0));
  state.pending = row.text(1);
  state.replaced = row.text(2);
  state.origin = row.text(3);
  int column = 4;
  for (const CountField field : kCounts) state.counts.*field = row.integer(column++);
  state.lastLine = row.integer(column++);
  state.lastCall = row.text(column++);
  state.day = row.text(column++);
  state.unknownToday = row.integer(column);
  return state;
}

std::vector<std::string> StateStore::sources() const {
  std::vector<std::string> ids;
  SqliteStatement rows(file_, "SELECT id FROM source ORDER BY id");
  while (rows.step()) ids.push_back(rows.text(0));
  return ids;
}

void StateStore::commit(std::string_view source, const SourceState& state, const std::vector<std::uint64_t>& recorded,
                        const std::vector<UnknownLine>& unknown) {
  SqliteTransaction transaction(file_);
  SqliteStatement row(file_, "INSERT OR REPLACE INTO source VALUES (?,?,?,?,?, ?,?,?,?,?,?,?,?,?,?, ?,?,?,?)");
  row.bind(source).bind(signedOf(state.converted)).bind(state.pending).bind(state.replaced).bind(state.origin);
  for (const CountField field : kCounts) row.bind(state.counts.*field);
  row.bind(state.lastLine).bind(state.lastCall).bind(state.day).bind(state.unknownToday).run();
  addRecorded(source, recorded);
  keepUnknown(source, unknown);
  transaction.commit();
}

// Runs of positions are one row; a new run that follows an old one lengthens it.
void StateStore::addRecorded(std::string_view source, const std::vector<std::uint64_t>& positions) {
  std::vector<std::uint64_t> sorted = positions;
  std::sort(sorted.begin(), sorted.end());
  for (std::size_t i = 0; i < sorted.size();) {
    std::size_t end = i + 1;
    while (end < sorted.size() && sorted[end] <= sorted[end - 1] + 1) ++end;
    const std::int64_t first = signedOf(sorted[i]);
    const std::int64_t last = signedOf(sorted[end - 1]);
    SqliteStatement(file_, "UPDATE recorded SET last = ? WHERE source = ? AND last = ?")
        .bind(last)
        .bind(source)
        .bind(first - 1)
        .run();
    if (sqlite3_changes(file_.handle()) == 0) {
      SqliteStatement(file_, "INSERT OR REPLACE INTO recorded VALUES (?,?,?)")
          .bind(source)
          .bind(first)
          .bind(last)
          .run();
    }
    i = end;
  }
}

void StateStore::keepUnknown(std::string_view source, const std::vector<UnknownLine>& unknown) {
  for (const UnknownLine& line : unknown) {
    const std::int64_t dayBegins = line.time - line.time % kMillisecondsPerDay;
    SqliteStatement(file_, "DELETE FROM unknown_line WHERE source = ? AND time < ?").bind(source).bind(dayBegins).run();
    SqliteStatement count(file_, "SELECT count(*) FROM unknown_line WHERE source = ?");
    count.bind(source);
    if (count.step() && count.integer(0) >= kUnknownKept) return;
    SqliteStatement(file_, "INSERT OR REPLACE INTO unknown_line VALUES (?,?,?,?,?)")
        .bind(source)
        .bind(signedOf(line.position))
        .bind(line.time)
        .bind(line.text)
        .bind(line.reason)
        .run();
  }
}

bool StateStore::gaveRecord(std::string_view source, std::uint64_t position) const {
  SqliteStatement row(file_, "SELECT last FROM recorded WHERE source = ? AND first <= ? ORDER BY first DESC LIMIT 1");
  row.bind(source).bind(signedOf(position));
  return row.step() && row.integer(0) >= signedOf(position);
}

void StateStore::commitReplay(std::string_view source, const std::vector<std::uint64_t>& recorded,
                              std::string_view readyFile) {
  SqliteTransaction transaction(file_);
  addRecorded(source, recorded);
  SqliteStatement(file_, "INSERT INTO replay VALUES (?)").bind(readyFile).run();
  transaction.commit();
}

std::vector<std::string> StateStore::pendingReplays() const {
  std::vector<std::string> files;
  SqliteStatement rows(file_, "SELECT file FROM replay");
  while (rows.step()) files.push_back(rows.text(0));
  return files;
}

void StateStore::replayDone(std::string_view readyFile) {
  SqliteStatement(file_, "DELETE FROM replay WHERE file = ?").bind(readyFile).run();
}

std::vector<UnknownLine> StateStore::unknownLines(std::string_view source) const {
  std::vector<UnknownLine> lines;
  SqliteStatement rows(file_,
                       "SELECT position, time, text, reason FROM unknown_line WHERE source = ? ORDER BY position");
  rows.bind(source);
  while (rows.step()) {
    lines.push_back({static_cast<std::uint64_t>(rows.integer(0)), rows.integer(1), rows.text(2), rows.text(3)});
  }
  return lines;
}

std::size_t StateStore::forgetNumber(std::string_view number) {
  SqliteTransaction transaction(file_);
  std::size_t changed = 0;
  SqliteStatement rows(file_, "SELECT source, position, text FROM unknown_line");
  while (rows.step()) {
    std::string text = rows.text(2);
    if (blankNumber(text, number) == 0) continue;
    SqliteStatement(file_, "UPDATE unknown_line SET text = ? WHERE source = ? AND position = ?")
        .bind(text)
        .bind(rows.text(0))
        .bind(rows.integer(1))
        .run();
    ++changed;
  }
  transaction.commit();
  return changed;
}

std::optional<std::int32_t> StateStore::knownNumber(NumberKind kind, std::string_view source,
                                                    std::string_view name) const {
  SqliteStatement row(file_, "SELECT number FROM number WHERE kind = ? AND source = ? AND name = ?");
  row.bind(static_cast<std::int64_t>(kind)).bind(source).bind(name);
  if (!row.step()) return std::nullopt;
  return static_cast<std::int32_t>(row.integer(0));
}

std::int32_t StateStore::numberOf(NumberKind kind, std::string_view source, std::string_view name) {
  if (const auto known = knownNumber(kind, source, name)) return *known;
  SqliteTransaction transaction(file_);
  if (const auto known = knownNumber(kind, source, name)) return *known;
  SqliteStatement highest(file_, "SELECT max(number) FROM number WHERE kind = ?");
  highest.bind(static_cast<std::int64_t>(kind));
  highest.step();
  const std::int64_t first = kFirstNumber[static_cast<std::size_t>(kind)];
  const std::int64_t number = std::max(first, highest.integer(0) + 1);
  SqliteStatement(file_, "INSERT INTO number VALUES (?,?,?,?)")
      .bind(static_cast<std::int64_t>(kind))
      .bind(source)
      .bind(name)
      .bind(number)
      .run();
  transaction.commit();
  return static_cast<std::int32_t>(number);
}

std::vector<NumberRow> StateStore::numbers(NumberKind kind, std::string_view source) const {
  std::vector<NumberRow> rows;
  SqliteStatement found(file_, "SELECT source, name, number FROM number WHERE kind = ? AND source = ? ORDER BY number");
  found.bind(static_cast<std::int64_t>(kind)).bind(source);
  while (found.step()) rows.push_back({found.text(0), found.text(1), static_cast<std::int32_t>(found.integer(2))});
  return rows;
}

bool StateStore::isTaken(std::string_view source, std::string_view name) const {
  SqliteStatement row(file_, "SELECT 1 FROM taken WHERE source = ? AND name = ?");
  row.bind(source).bind(name);
  return row.step();
}

void StateStore::setTaken(std::string_view source, std::string_view name, std::int64_t time) {
  SqliteStatement(file_, "INSERT OR REPLACE INTO taken VALUES (?,?,?)").bind(source).bind(name).bind(time).run();
}

void StateStore::forgetRecorded(std::string_view source, std::uint64_t before) {
  SqliteStatement(file_, "DELETE FROM recorded WHERE source = ? AND last < ?")
      .bind(source)
      .bind(signedOf(before))
      .run();
}

}  // namespace capture
