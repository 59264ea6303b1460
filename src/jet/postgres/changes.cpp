#include "jet/postgres/changes.h"

#include <cstdlib>

#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"

namespace jet::postgres {

namespace {

constexpr int kColumnOfWriter = 3;

}  // namespace

std::string Changes::select() const {
  return "SELECT name, changed::text, rewritten::text FROM " + quotedName(schema_) + "." + quotedName(kChangesTable);
}

std::string Changes::selectOfWriter() const {
  return "SELECT name, changed::text, rewritten::text, pg_current_xact_id()::text FROM " + quotedName(schema_) + "." +
         quotedName(kChangesTable);
}

std::int64_t Changes::rewritten(const std::string& table) const {
  const auto note = known_.find(table);
  return note == known_.end() ? 0 : std::strtoll(note->second.rewritten.c_str(), nullptr, 10);
}

// One writer at a time: whatever was noted since, but by the last own transaction, is of others.
void Changes::take(const PGresult* notes) {
  for (int row = 0; row < PQntuples(notes); ++row) {
    const std::string table = PQgetvalue(notes, row, 0);
    const std::string changed = PQgetvalue(notes, row, 1);
    const std::string rewritten = PQgetvalue(notes, row, 2);
    Note& known = known_[table];
    const bool news = started_ && changed != known.changed && changed != own_;
    const bool olds = started_ && rewritten != known.rewritten && rewritten != own_;
    if (table.empty()) {
      definitions_ = definitions_ || news;
    } else if (olds) {
      rewritten_.insert(table);
    } else if (news) {
      appended_.insert(table);
    }
    known = {changed, rewritten};
  }
  if (PQntuples(notes) > 0 && PQnfields(notes) > kColumnOfWriter) own_ = PQgetvalue(notes, 0, kColumnOfWriter);
  started_ = true;
}

bool Changes::tell(engine::ChangeListener& listener) {
  for (const std::string& table : appended_) listener.tableAppended(table);
  for (const std::string& table : rewritten_) listener.tableChanged(table);
  appended_.clear();
  rewritten_.clear();
  if (!definitions_) return false;
  definitions_ = false;
  listener.definitionsChanged();
  return true;
}

}  // namespace jet::postgres
