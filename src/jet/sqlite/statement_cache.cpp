#include "jet/sqlite/statement_cache.h"

#include <utility>

#include "jet/error.h"
#include "jet/sqlite/like_pattern.h"
#include "jet/sqlite/statement_emitter.h"

namespace jet::sqlite {

namespace {

// Enough for every statement of the system with its variants; a prepared statement takes some kilobytes.
constexpr std::size_t kCapacity = 200;
// A condition with many LIKEs could have thousands of classes; the usual ones are few.
constexpr std::size_t kMaxVariants = 16;

}  // namespace

Execution::Execution(Connection& connection, std::shared_ptr<CachedQuery> query, Variant& variant,
                     std::string_view text)
    : connection_(connection), query_(std::move(query)), variant_(&variant), text_(text) {
  variant_->busy = true;
}

Execution::Execution(Execution&& other) noexcept
    : connection_(other.connection_),
      query_(std::move(other.query_)),
      variant_(std::exchange(other.variant_, nullptr)),
      text_(other.text_) {}

Execution::~Execution() {
  if (variant_ == nullptr) return;
  sqlite3_reset(variant_->statement.get());
  variant_->busy = false;
}

Execution StatementCache::openWith(Role role, const ShapedText& text, const ShapedText* criteria,
                                   std::span<const std::int64_t> extras) {
  std::shared_ptr<CachedQuery> query = lookUp(role, text, criteria);
  classify(*query, text, criteria);
  Variant& variant = variantFor(*query, role, text.text);
  Execution execution(connection_, std::move(query), variant, text.text);
  BindSources sources;
  sources.literals[0] = text.shape.literals;
  if (criteria != nullptr) sources.literals[1] = criteria->shape.literals;
  sources.likes = &likes_;
  sources.extras = extras;
  bindAll(variant.statement.get(), variant.plan.bindings, sources);
  return execution;
}

std::shared_ptr<const CachedQuery> StatementCache::parsed(const ShapedText& text) {
  return lookUp(Role::Run, text, nullptr);
}

void StatementCache::clear() {
  byKey_.clear();
  slots_.clear();
}

std::shared_ptr<CachedQuery> StatementCache::lookUp(Role role, const ShapedText& text, const ShapedText* criteria) {
  key_.assign(1, static_cast<char>(role));
  key_ += text.shape.key;
  if (criteria != nullptr) {
    key_ += '\x1F';
    key_ += criteria->shape.key;
  }
  if (const auto found = byKey_.find(key_); found != byKey_.end()) {
    slots_.splice(slots_.begin(), slots_, found->second);
    return found->second->query;
  }
  return insert(text, criteria);
}

std::shared_ptr<CachedQuery> StatementCache::insert(const ShapedText& text, const ShapedText* criteria) {
  auto query = std::make_shared<CachedQuery>();
  query->statement = parseStatement(text.text);
  collectLikeSites(*query->statement, query->sites);
  if (criteria != nullptr) {
    query->criteria = parseCondition(criteria->text);
    collectLikeSites(query->criteria.get(), 1, query->sites);
  }
  slots_.push_front({key_, query});
  byKey_.emplace(slots_.front().key, slots_.begin());
  if (slots_.size() > kCapacity) {
    byKey_.erase(slots_.back().key);
    slots_.pop_back();
  }
  return query;
}

Variant& StatementCache::variantFor(CachedQuery& query, Role role, std::string_view text) {
  if (query.generation != catalog_.generation()) {
    std::erase_if(query.variants, [](const auto& variant) { return !variant->busy; });
    for (const auto& variant : query.variants) variant->key += "\x1Fout of date";
    query.generation = catalog_.generation();
  }
  for (const auto& variant : query.variants) {
    if (!variant->busy && variant->key == variantKey_) return *variant;
  }
  if (query.variants.size() >= kMaxVariants) {
    std::erase_if(query.variants, [](const auto& variant) { return !variant->busy; });
  }
  EmitRequest request;
  request.role = role;
  request.statement = query.statement.get();
  request.criteria = query.criteria.get();
  request.sites = &query.sites;
  request.likes = &likes_;
  request.text = text;
  auto variant = std::make_unique<Variant>();
  variant->key = variantKey_;
  variant->plan = emitStatement(request, catalog_);
  variant->statement = connection_.prepare(variant->plan.sql, text);
  query.variants.push_back(std::move(variant));
  return *query.variants.back();
}

void StatementCache::classify(const CachedQuery& query, const ShapedText& text, const ShapedText* criteria) {
  likes_.clear();
  variantKey_.clear();
  for (const LikeSite& site : query.sites) {
    const std::span<const Value> literals = site.source == 0 ? text.shape.literals : criteria->shape.literals;
    if (site.patternInColumn) {
      likes_.push_back(classifyColumnPattern(query, site, literals));
    } else {
      likes_.push_back(classifyPattern(literals[site.expression->operands[1]->parameter]));
    }
    variantKey_ += static_cast<char>(likes_.back().kind);
    if (likes_.back().kind == LikeClass::OwnPrefixes) variantKey_ += std::to_string(likes_.back().prefixes.size());
  }
}

LikeValue StatementCache::classifyColumnPattern(const CachedQuery& query, const LikeSite& site,
                                                std::span<const Value> literals) {
  const Expression& pattern = *site.expression->operands[1];
  const Value& ending = literals[pattern.operands[1]->parameter];
  const Statement& statement = *query.statement;
  if (ending != Value("*") || !statement.from || statement.from->join != Source::Join::None) return {};
  const TableDefPtr table = catalog_.get(statement.from->table, {});
  const FieldDef* field = table->find(pattern.operands[0]->name);
  if (field == nullptr || field->type != Type::Text) return {};
  return classifyOwnPrefixes(literals[site.expression->operands[0]->parameter], wildcardPrefixes(*table, *field));
}

// The column's values that hold a wildcard: few or none, found by one scan for each version of the table.
const std::vector<std::string>& StatementCache::wildcardPrefixes(const TableDef& table, const FieldDef& field) {
  WildcardList& list = wildcards_[table.name + '\x1F' + field.name];
  const std::uint64_t version = versions_.of(table.name);
  if (list.version == version) return list.prefixes;
  list.prefixes.clear();
  const std::string column = quotedName(field.name);
  const StatementHandle scan = connection_.prepare("SELECT DISTINCT " + column + " FROM " + quotedName(table.name) +
                                                   " WHERE " + column + " GLOB '*[[*?#]*'");
  while (connection_.step(scan.get(), "wildcards")) {
    const Value value = readColumn(scan.get(), 0, Type::Text);
    if (value.type() == Type::Text) list.prefixes.push_back(value.text());
  }
  list.version = version;
  return list.prefixes;
}

}  // namespace jet::sqlite
