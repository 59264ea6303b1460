#pragma once

#include <cstdint>
#include <initializer_list>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/engine/driver.h"
#include "jet/engine/shaped_text.h"
#include "jet/engine/versions.h"

namespace jet::engine {

using BoundQueryPtr = std::shared_ptr<const bind::BoundQuery>;

// A prepared query for some classes of values at its sites, and the values of its last run.
struct Variant {
  std::string key;
  BoundQueryPtr bound;
  std::unique_ptr<Query> query;
  std::vector<Value> literals;
  std::vector<SiteValue> sites;
  bool busy = false;
};

// Everything kept for one shape in one role.
struct CachedQuery {
  std::unique_ptr<const Statement> statement;
  ExpressionPtr criteria;
  MasksPtr masks;
  BoundQueryPtr bound;
  std::uint64_t generation = 0;  // of the definitions that `bound` and the variants were made from
  std::vector<std::unique_ptr<Variant>> variants;
};

// A running query. It ends, and gives the prepared one back, with its destruction.
class Execution {
 public:
  Execution(std::shared_ptr<CachedQuery> owner, Variant& variant);
  Execution(Execution&& other) noexcept;
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;
  Execution& operator=(Execution&&) = delete;
  ~Execution();

  bool step() { return variant_->query->step(); }
  [[nodiscard]] Query& query() const { return *variant_->query; }
  [[nodiscard]] const bind::BoundStatement& statement() const { return variant_->bound->statement; }
  [[nodiscard]] std::size_t width() const { return statement().items.size(); }
  [[nodiscard]] Value value(std::size_t item) const {
    return valueOf(query().cell(item), statement().items[item].expression.type);
  }
  void read(std::size_t item, Value& out) const {
    readValue(query().cell(item), statement().items[item].expression.type, out);
  }
  [[nodiscard]] RowKey key() const { return query().key(); }
  [[nodiscard]] std::vector<std::string> names() const;

 private:
  std::shared_ptr<CachedQuery> owner_;
  Variant* variant_;
};

// Prepared queries by role and shape, the least recently used ones dropped.
class StatementCache {
 public:
  StatementCache(Driver& driver, Versions& versions) : driver_(driver), versions_(versions) {}

  // The statement in the given role, its values bound.
  Execution open(Role role, const ShapedText& text, const ShapedText* criteria = nullptr,
                 std::initializer_list<std::int64_t> extras = {}) {
    return openWith(role, text, criteria, {extras.begin(), extras.size()});
  }
  Execution openWith(Role role, const ShapedText& text, const ShapedText* criteria,
                     std::span<const std::int64_t> extras);
  // As Driver says.
  std::optional<Place> placeBefore(const ShapedText& text, std::int64_t position);
  std::optional<std::int64_t> positionOf(const ShapedText& text, RowKey key);
  // The statement, bound to the definitions as they are.
  BoundQueryPtr bound(const ShapedText& text);

 private:
  struct Slot {
    std::string key;
    std::shared_ptr<CachedQuery> query;
  };
  struct WildcardList {
    std::uint64_t version = 0;
    std::vector<std::string> prefixes;
  };

  // Asks the driver about a list: calls `ask` with its request and arguments.
  template <typename Ask>
  auto ofList(const ShapedText& text, Ask ask);
  std::shared_ptr<CachedQuery> lookUp(Role role, const ShapedText& text, const ShapedText* criteria);
  std::shared_ptr<CachedQuery> insert(const ShapedText& text, const ShapedText* criteria);
  void bindIfOld(CachedQuery& query, std::string_view text);
  void readValues(const bind::BoundQuery& query, const ShapedText& text, const ShapedText* criteria);
  Variant& variantFor(CachedQuery& query, Role role, std::string_view text);
  void readWildcards(const bind::BoundQuery& query);
  void classify(const bind::BoundQuery& query);
  [[nodiscard]] SiteValue classified(const bind::BoundQuery& query, const bind::Site& site);
  WildcardList& wildcardsOf(const bind::BoundQuery& query, const bind::Site& site);

  Driver& driver_;
  Versions& versions_;
  std::list<Slot> slots_;  // most recently used first
  std::unordered_map<std::string_view, std::list<Slot>::iterator> byKey_;
  std::unordered_map<std::string, WildcardList> wildcards_;
  // Reused from call to call.
  std::string key_;
  std::string variantKey_;
  std::vector<Value> literals_;
  std::vector<SiteValue> sites_;
};

}  // namespace jet::engine
