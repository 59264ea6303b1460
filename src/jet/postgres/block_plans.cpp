#include "jet/postgres/block_plans.h"

#include "base/printf.h"
#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"

namespace jet::postgres {

namespace {

using engine::Role;

Plan planOf(std::string sql, std::size_t extras) {
  Plan plan{std::move(sql), {}};
  for (std::size_t i = 0; i < extras; ++i) {
    plan.parameters.push_back({.kind = Parameter::Kind::Extra, .index = i, .type = Type::Long});
  }
  return plan;
}

class BlockPlans {
 public:
  explicit BlockPlans(const TableDef& table)
      : table_(quotedName(table.name)),
        key_(keyColumn(table)),
        blocks_(base::format("%s WHERE name = %s", quotedName(kBlocksTable), quotedText(table.name))) {}

  [[nodiscard]] std::string count() const {
    return base::format("SELECT coalesce(sum(rows), 0)::bigint FROM %s", blocks_);
  }

  // How many rows are before the key $1.
  [[nodiscard]] std::string countBefore() const {
    return base::format(
        "SELECT (SELECT coalesce(sum(rows), 0) FROM %s AND block < $1::bigint >> %d)::bigint + "
        "(SELECT count(*) FROM %s WHERE %s >= ($1::bigint >> %d) << %d AND %s < $1::bigint)",
        blocks_, kBlockBits, table_, key_, kBlockBits, kBlockBits, key_);
  }

  // At most `limit` keys in the table's order, `place` left out before.
  [[nodiscard]] std::string page(const std::string& limit, const std::string& place) const {
    return base::format(
        "WITH place AS MATERIALIZED (SELECT %s AS n), start AS MATERIALIZED (SELECT block, before FROM "
        "(SELECT block, (sum(rows) OVER (ORDER BY block) - rows)::bigint AS before FROM %s) AS b, place "
        "WHERE before <= n ORDER BY block DESC LIMIT 1) "
        "SELECT %s FROM %s WHERE %s >= (SELECT block << %d FROM start) ORDER BY %s LIMIT %s "
        "OFFSET (SELECT n FROM place) - (SELECT before FROM start)",
        place, blocks_, key_, table_, key_, kBlockBits, key_, limit);
  }

  // The same from the end, backwards.
  [[nodiscard]] std::string pageBack(const std::string& limit, const std::string& place) const {
    return base::format(
        "WITH place AS MATERIALIZED (SELECT %s AS n), start AS MATERIALIZED (SELECT block, behind FROM "
        "(SELECT block, (sum(rows) OVER (ORDER BY block DESC) - rows)::bigint AS behind FROM %s) AS b, place "
        "WHERE behind <= n ORDER BY block LIMIT 1) "
        "SELECT %s FROM %s WHERE %s < (SELECT (block + 1) << %d FROM start) ORDER BY %s DESC LIMIT %s "
        "OFFSET (SELECT n FROM place) - (SELECT behind FROM start)",
        place, blocks_, key_, table_, key_, kBlockBits, key_, limit);
  }

 private:
  std::string table_;
  std::string key_;
  std::string blocks_;  // a source with its condition
};

}  // namespace

std::optional<Plan> placePlan(const engine::QueryRequest& request) {
  const bind::BoundStatement& statement = request.query->statement;
  if (!statement.keyed || statement.where || !statement.orderBy.empty() || request.query->criteria) return std::nullopt;
  const BlockPlans plans(statement.table());
  const std::string before = "(" + plans.countBefore() + ")";
  switch (request.role) {
    case Role::Count:
      return planOf(plans.count(), 0);
    case Role::CountBefore:
      return planOf(plans.countBefore(), 1);
    case Role::KeysPage:
      return planOf(plans.page("$1::bigint", "$2::bigint"), 2);
    case Role::KeysPageBack:
      return planOf(plans.pageBack("$1::bigint", "$2::bigint"), 2);
    case Role::KeysFrom:
      return planOf(plans.page("$2::bigint", before + " + $3::bigint"), 3);
    case Role::KeysBefore:
      return planOf(plans.pageBack("$2::bigint", base::format("(%s) - %s + $3::bigint", plans.count(), before)), 3);
    default:
      return std::nullopt;
  }
}

}  // namespace jet::postgres
