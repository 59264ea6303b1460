#pragma once

#include "jet/engine/memory/row_source.h"
#include "jet/masks.h"

namespace jet::engine {

class Engine;

// Where the answers from memory get what they hold. Rows are those that are stored; what is bound and run is so under
// the masks.
class MemorySource final : public memory::RowSource {
 public:
  explicit MemorySource(Engine& engine, MasksPtr masks = nullptr) : engine_(engine), masks_(std::move(masks)) {}

  memory::VersionCounters versionCounters(std::string_view table) override;
  std::shared_ptr<const TableDef> definition(std::string_view table) override;
  std::int64_t rowLimit(const TableDef& table) override;
  void readRows(const TableDef& table, const std::function<bool(const std::vector<Value>&)>& row) override;
  void readTexts(const TableDef& table, const FieldDef& column,
                 const std::function<bool(std::int64_t key, std::string_view text)>& text) override;
  std::shared_ptr<const bind::BoundQuery> bind(std::string_view sql) override;
  std::shared_ptr<const ResultTable> runSelect(std::string_view sql) override;
  std::shared_ptr<const ResultTable> runSelectAmong(std::string_view sql, std::span<const std::int64_t> keys) override;

 private:
  Engine& engine_;
  MasksPtr masks_;
};

}  // namespace jet::engine
