#pragma once

#include <optional>
#include <unordered_map>

#include "jet/engine/engine.h"
#include "jet/engine/field_index.h"
#include "jet/recordset.h"

namespace jet::engine {

// A recordset over rows of one table. Without an order, rows follow by key and the
// next keys are fetched a few hundred at a time; with one, all keys are fetched by the first move.
class Dynaset final : public Recordset {
 public:
  Dynaset(Engine& engine, ShapedText text);

  bool bof() override;
  bool eof() override;
  void moveFirst() override;
  void moveLast() override;
  void moveNext() override;
  void movePrevious() override;

  void findFirst(std::string_view criteria) override;
  void findNext(std::string_view criteria) override;
  [[nodiscard]] bool noMatch() const override { return noMatch_; }

  Value get(std::string_view field) override { return get(index_.find(field)); }
  void set(std::string_view field, Value value) override { set(index_.find(field), std::move(value)); }
  [[nodiscard]] const std::vector<std::string>& fieldNames() const override { return names_; }
  Value get(std::size_t field) override;
  void set(std::size_t field, Value value) override;

  void addNew() override;
  void edit() override;
  void update() override;
  void cancelUpdate() override { editing_ = Editing::None; }
  void remove() override;

  [[nodiscard]] std::int64_t lastAddedKey() const override { return lastAddedKey_; }
  std::int64_t recordCount() override;
  std::int64_t absolutePosition() override;

 private:
  enum class Place { Unset, Row, Bof, Eof };
  enum class Editing { None, Add, Change };

  // Fields (dynaset.cpp).
  [[nodiscard]] const FieldDef& fieldAt(std::size_t place) const { return def_->fields[fields_[place]]; }
  void setFields();
  void setFieldsIfChanged();
  void requireRow();
  [[noreturn]] void failNoRow() const;

  // Moves (dynaset_moves.cpp).
  void settle();
  void leaveEdit() { editing_ = Editing::None; }
  bool goTo(std::int64_t key);
  void takeRow(const Execution& execution);
  void become(Place place);
  void loadKeys();
  bool fetchAhead(std::int64_t after);
  std::optional<std::int64_t> keyBefore(std::int64_t key);
  void orderedTo(std::size_t index);
  void findIndexOfKey();

  // Finding (dynaset_find.cpp).
  bool findOne(Role role, std::initializer_list<std::int64_t> extras);
  bool findNextOrdered(std::string_view criteria);
  void loadMatches(std::string_view criteria);
  std::size_t firstMatchBehindCurrent();

  // Changes (dynaset_changes.cpp).
  [[nodiscard]] bool numbersItself() const;
  void insertRow();
  void updateRow();
  std::int64_t runChange(RowChange& change, RowKey key);
  RowChange& insertChange();
  RowChange& updateChange();

  Engine& engine_;
  ShapedText text_;
  bool ordered_;
  std::uint64_t generation_ = 0;
  bind::TableDefPtr def_;
  std::vector<std::string> names_;
  std::vector<std::size_t> fields_;  // of def_, by position in names_
  FieldIndex index_;

  Place place_ = Place::Unset;
  std::int64_t key_ = 0;
  bool readable_ = false;  // false once the current row is known to be deleted
  std::vector<Value> row_;
  bool noMatch_ = false;

  std::vector<std::int64_t> ahead_;  // keys after the current row, of a set without order
  std::size_t aheadNext_ = 0;
  bool keysLoaded_ = false;
  std::vector<std::int64_t> keys_;  // of an ordered set
  std::optional<std::size_t> keyIndex_;
  std::optional<std::int64_t> position_;  // of a set without order, as far as known
  std::int64_t seen_ = 0;

  ShapedText criteria_;
  std::string matchCriteria_;
  std::vector<std::int64_t> matches_;
  std::size_t matchNext_ = 0;
  std::int64_t matchKey_ = 0;  // the row that matchNext_ comes after

  Editing editing_ = Editing::None;
  std::vector<Value> buffer_;
  std::string changed_;  // a mark for each field that set() gave another value
  std::unique_ptr<RowChange> insert_;
  std::unique_ptr<RowChange> remove_;
  std::unordered_map<std::string, std::unique_ptr<RowChange>> updates_;  // by changed_
  std::vector<const Value*> values_;                                     // of the change that runs
  std::int64_t lastAddedKey_ = 0;
};

}  // namespace jet::engine
