#pragma once

#include <optional>

#include "jet/engine/engine.h"
#include "jet/engine/field_index.h"
#include "jet/recordset.h"

namespace jet::engine {

// A select that groups, joins, drops duplicates or works values out: read by the first move, and never changed (3027).
class StaticRecordset final : public Recordset {
 public:
  StaticRecordset(Engine& engine, ShapedText text);

  bool bof() override;
  bool eof() override;
  void moveFirst() override;
  void moveLast() override;
  void moveNext() override;
  void movePrevious() override;

  void findFirst(std::string_view criteria) override { find(criteria, 0); }
  void findNext(std::string_view criteria) override;
  [[nodiscard]] bool noMatch() const override { return noMatch_; }

  Value get(std::string_view field) override { return get(index_.find(field)); }
  void set(std::string_view field, Value value) override;
  [[nodiscard]] const std::vector<std::string>& fieldNames() const override { return names_; }
  Value get(std::size_t field) override;
  void set(std::size_t field, Value value) override;

  void addNew() override { failReadOnly(); }
  void edit() override { failReadOnly(); }
  void update() override;
  void cancelUpdate() override {}
  void remove() override { failReadOnly(); }

  [[nodiscard]] std::int64_t lastAddedKey() const override { return 0; }
  std::int64_t recordCount() override;
  std::int64_t absolutePosition() override;

 private:
  [[noreturn]] void failReadOnly() const;
  void load();
  void loadIfChanged();
  std::uint64_t version();
  [[nodiscard]] std::int64_t rows() const { return static_cast<std::int64_t>(snapshot_.rowCount()); }
  void find(std::string_view criteria, std::int64_t from);

  Engine& engine_;
  ShapedText text_;
  std::vector<std::string> names_;
  FieldIndex index_;
  std::vector<std::string> tables_;
  bool loaded_ = false;
  std::uint64_t loadedVersion_ = 0;
  Snapshot snapshot_;
  std::int64_t row_ = 0;  // -1 before the first, rows() after the last
  bool noMatch_ = false;
};

}  // namespace jet::engine
