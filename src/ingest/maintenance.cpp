#include "ingest/maintenance.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"

namespace ingest {

namespace {

// The documented condition; midnight is left out of the text form, as everywhere in the dialect.
std::string notAfter(base::DateTime day) {
  return base::format("DateTime<=#%s#", day.format("%m/%d/%Y"));
}

void requireWhole(std::string_view number) {
  constexpr int kSyntaxError = 3075;
  if (!endsQuotes(number)) return;
  throw jet::Error(kSyntaxError,
                   base::format("The apostrophe in the number %s breaks the statements that it would stand "
                                "in; nothing was changed. Write each apostrophe twice.",
                                number));
}

}  // namespace

bool endsQuotes(std::string_view text) {
  return base::replaceAll(std::string(text), "''", "").find('\'') != std::string::npos;
}

// Same result as deleting row after row what meets the condition, but a day of calls at a time: a first run over years
// of calls neither holds the database for its whole length nor doubles the file with its log.
std::int64_t deleteOldCalls(jet::Database& main, foundation::ConfigManager& config, const platform::Clock& clock,
                            const std::function<void()>& beforeMany) {
  if (main.readOnly()) return 0;
  const std::int32_t days = config.ReadConfigInt(foundation::keys::calls::Sterge);
  if (days <= 0) return 0;
  const base::DateTime limit = clock.now().midnight().plusDays(1 - static_cast<std::int64_t>(days));

  std::int64_t deleted = 0;
  while (true) {
    const auto oldest = main.openSnapshot("select min(DateTime) as d from Calls").at(0, 0).toDateTime();
    if (!oldest || *oldest > limit) return deleted;
    const base::DateTime dayEnd = oldest->midnight().plusDays(1);
    if (deleted == 0 && dayEnd < limit && beforeMany) beforeMany();
    const std::int64_t rows = main.execute("DELETE FROM Calls WHERE " + notAfter(std::min(limit, dayEnd)));
    if (rows == 0) return deleted;
    deleted += rows;
  }
}

void HideNumber(jet::Database& main, std::string_view number) {
  requireWhole(number);
  jet::Transaction transaction(main);
  main.execute(base::format("update calls set hidden=1 where dialnumber='%s'", number));
  main.execute(base::format("insert into FilteredNumbers ([number]) values ('%s')", number));
  transaction.commit();
}

void ShowNumber(jet::Database& main, std::string_view number) {
  requireWhole(number);
  jet::Transaction transaction(main);
  main.execute(base::format("delete from FilteredNumbers where [number] = '%s'", number));
  main.execute(base::format("update calls set hidden=0 where dialnumber='%s'", number));
  transaction.commit();
}

}  // namespace ingest
