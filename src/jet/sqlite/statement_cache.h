#pragma once

#include <cstdint>
#include <initializer_list>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "jet/parser/parser.h"
#include "jet/sqlite/binder.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/plan.h"
#include "jet/sqlite/versions.h"

namespace jet::sqlite {

// A text with its shape, taken apart once.
struct ShapedText {
  ShapedText() = default;
  explicit ShapedText(std::string_view sql) { assign(sql); }
  void assign(std::string_view sql) {
    text.assign(sql);
    shapeOf(text, shape);
  }
  std::string text;
  Shape shape;
};

// A prepared statement of one class of LIKE patterns.
struct Variant {
  std::string key;
  Plan plan;
  StatementHandle statement;
  bool busy = false;
};

// Everything kept for one shape in one role.
struct CachedQuery {
  std::unique_ptr<const Statement> statement;
  ExpressionPtr criteria;
  std::vector<LikeSite> sites;
  std::vector<std::unique_ptr<Variant>> variants;
  std::uint64_t generation = 0;  // of the catalog that the variants were made from
};

// A running statement. It ends, and gives the prepared statement back, with its destruction.
class Execution {
 public:
  Execution(Connection& connection, std::shared_ptr<CachedQuery> query, Variant& variant, std::string_view text);
  Execution(Execution&& other) noexcept;
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;
  Execution& operator=(Execution&&) = delete;
  ~Execution();

  bool step() { return connection_.step(variant_->statement.get(), text_); }
  [[nodiscard]] sqlite3_stmt* raw() const { return variant_->statement.get(); }
  [[nodiscard]] const Plan& plan() const { return variant_->plan; }
  // Column `index` of the plan; `shift` columns (the key) stand before the plan's.
  [[nodiscard]] Value value(std::size_t index, int shift = 0) const {
    return readColumn(raw(), static_cast<int>(index) + shift, variant_->plan.types[index]);
  }
  [[nodiscard]] std::int64_t key() const { return sqlite3_column_int64(raw(), 0); }
  [[nodiscard]] const Statement& statement() const { return *query_->statement; }

 private:
  Connection& connection_;
  std::shared_ptr<CachedQuery> query_;
  Variant* variant_;
  std::string_view text_;
};

// Prepared statements by shape, the least recently used ones dropped.
class StatementCache {
 public:
  StatementCache(Connection& connection, Catalog& catalog, Versions& versions)
      : connection_(connection), catalog_(catalog), versions_(versions) {}

  // The statement in the given role, its parameters bound. The texts must outlive the execution.
  Execution open(Role role, const ShapedText& text, const ShapedText* criteria = nullptr,
                 std::initializer_list<std::int64_t> extras = {}) {
    return openWith(role, text, criteria, {extras.begin(), extras.size()});
  }
  Execution openWith(Role role, const ShapedText& text, const ShapedText* criteria,
                     std::span<const std::int64_t> extras);
  // The tree of a statement.
  std::shared_ptr<const CachedQuery> parsed(const ShapedText& text);
  void clear();

 private:
  struct Slot {
    std::string key;
    std::shared_ptr<CachedQuery> query;
  };
  struct WildcardList {
    std::uint64_t version = 0;
    std::vector<std::string> prefixes;
  };

  std::shared_ptr<CachedQuery> lookUp(Role role, const ShapedText& text, const ShapedText* criteria);
  std::shared_ptr<CachedQuery> insert(const ShapedText& text, const ShapedText* criteria);
  Variant& variantFor(CachedQuery& query, Role role, std::string_view text);
  void classify(const CachedQuery& query, const ShapedText& text, const ShapedText* criteria);
  LikeValue classifyColumnPattern(const CachedQuery& query, const LikeSite& site, std::span<const Value> literals);
  const std::vector<std::string>& wildcardPrefixes(const TableDef& table, const FieldDef& field);

  Connection& connection_;
  Catalog& catalog_;
  Versions& versions_;
  std::list<Slot> slots_;  // most recently used first
  std::unordered_map<std::string_view, std::list<Slot>::iterator> byKey_;
  std::unordered_map<std::string, WildcardList> wildcards_;
  // Reused from call to call.
  std::string key_;
  std::string variantKey_;
  std::vector<LikeValue> likes_;
};

}  // namespace jet::sqlite
