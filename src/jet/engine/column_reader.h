#pragma once

#include "jet/engine/columns/column_source.h"

namespace jet::engine {

class Engine;

// Where statistics over columns get what they add up.
class ColumnReader final : public columns::ColumnSource {
 public:
  explicit ColumnReader(Engine& engine) : engine_(engine) {}

  std::int64_t rowLimit(const TableDef& table) override;
  bool readsInOrder(const TableDef& table, std::size_t field) override;
  [[nodiscard]] bool isServer() const override;
  Changes changes(std::string_view table) override;
  void beginView() override;
  void endView() noexcept override;
  columns::ColumnSource::Extent extent(const TableDef& table) override;
  Read readColumns(const TableDef& table, std::span<const std::size_t> fields,
                   std::span<columns::Column* const> columns, std::int64_t after, std::int64_t last,
                   columns::KeyRuns& keys) override;
  Read readSelected(const ShapedText& text, std::span<columns::Column* const> columns,
                    const std::function<void(std::span<const std::int64_t> keys)>& block) override;
  Read readParts(const ShapedText& text, bool exactly, columns::Column& key, std::size_t operands,
                 const std::function<void(const Part& part)>& take) override;
  std::vector<Value> readRows(const TableDef& table, std::span<const std::size_t> fields,
                              std::span<const std::int64_t> keys) override;

 private:
  Engine& engine_;
};

}  // namespace jet::engine
