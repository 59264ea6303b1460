#pragma once

#include "jet/columns/column_source.h"
#include "jet/sqlite/connection.h"

namespace jet::sqlite {

class SqliteDatabase;

// Where statistics over columns get what they add up.
class ColumnReader final : public columns::ColumnSource {
 public:
  explicit ColumnReader(SqliteDatabase& database) : database_(database) {}

  std::shared_ptr<const TableDef> definition(std::string_view table) override;
  std::int64_t rowLimit(const TableDef& table) override;
  Changes changes(std::string_view table) override;
  void beginView() override;
  void endView() noexcept override;
  Extent extent(const TableDef& table) override;
  Read readColumns(const TableDef& table, std::span<const std::size_t> fields,
                   std::span<columns::Column* const> columns, std::int64_t behind, std::int64_t last,
                   columns::KeyRuns& keys) override;
  Read readSelected(std::string_view sql, std::span<columns::Column* const> columns,
                    const std::function<void(std::span<const std::int64_t> keys)>& block) override;

 private:
  SqliteDatabase& database_;
};

}  // namespace jet::sqlite
