#include "jet/engine/statement_cache.h"

#include <algorithm>
#include <utility>

#include "jet/bind/statement_binder.h"
#include "jet/engine/site_values.h"
#include "jet/letters.h"

namespace jet::engine {

namespace {

// Enough for every statement of the system with its variants; a prepared one takes some kilobytes.
constexpr std::size_t kCapacity = 200;
// A condition with many LIKEs could have thousands of classes; the usual ones are few.
constexpr std::size_t kMaxVariants = 16;

}  // namespace

Execution::Execution(std::shared_ptr<CachedQuery> owner, Variant& variant)
    : owner_(std::move(owner)), variant_(&variant) {
  variant_->busy = true;
}

Execution::Execution(Execution&& other) noexcept
    : owner_(std::move(other.owner_)), variant_(std::exchange(other.variant_, nullptr)) {}

Execution::~Execution() {
  if (variant_ == nullptr) return;
  variant_->query->reset();
  variant_->busy = false;
}

std::vector<std::string> Execution::names() const {
  std::vector<std::string> names;
  for (const bind::BoundItem& item : statement().items) names.push_back(item.name);
  return names;
}

Execution StatementCache::openWith(Role role, const ShapedText& text, const ShapedText* criteria,
                                   std::span<const std::int64_t> extras) {
  std::shared_ptr<CachedQuery> query = lookUp(role, text, criteria);
  bindIfOld(*query, text.text);
  readValues(*query->bound, text, criteria);
  Variant& variant = variantFor(*query, role, text.text);
  variant.literals.swap(literals_);
  variant.sites.swap(sites_);
  Execution execution(std::move(query), variant);
  variant.query->bind({variant.literals, variant.sites, extras});
  return execution;
}

// Into literals_, sites_ and variantKey_.
void StatementCache::readValues(const bind::BoundQuery& query, const ShapedText& text, const ShapedText* criteria) {
  readWildcards(query);
  bind::convertAll(query.literals, text.shape.literals,
                   criteria != nullptr ? std::span<const Value>(criteria->shape.literals) : std::span<const Value>(),
                   literals_);
  classify(query);
}

template <typename Ask>
auto StatementCache::ofList(const ShapedText& text, Ask ask) {
  const std::shared_ptr<CachedQuery> query = lookUp(Role::KeysPage, text, nullptr);
  bindIfOld(*query, text.text);
  readValues(*query->bound, text, nullptr);
  return ask(QueryRequest{.role = Role::KeysPage, .query = query->bound.get(), .sites = sites_, .text = text.text},
             Arguments{literals_, sites_, {}});
}

std::optional<Place> StatementCache::placeBefore(const ShapedText& text, std::int64_t position) {
  return ofList(text, [&](const QueryRequest& request, const Arguments& arguments) {
    return driver_.placeBefore(request, arguments, position);
  });
}

std::optional<std::int64_t> StatementCache::positionOf(const ShapedText& text, RowKey key) {
  return ofList(text, [&](const QueryRequest& request, const Arguments& arguments) {
    return driver_.positionOf(request, arguments, key);
  });
}

BoundQueryPtr StatementCache::bound(const ShapedText& text) {
  const auto query = lookUp(Role::Run, text, nullptr);
  bindIfOld(*query, text.text);
  return query->bound;
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
  if (criteria != nullptr) query->criteria = parseCondition(criteria->text);
  query->masks = text.masks;
  slots_.push_front({key_, query});
  byKey_.emplace(slots_.front().key, slots_.begin());
  if (slots_.size() > kCapacity) {
    byKey_.erase(slots_.back().key);
    slots_.pop_back();
  }
  return query;
}

void StatementCache::bindIfOld(CachedQuery& query, std::string_view text) {
  if (query.bound && query.generation == driver_.generation()) return;
  std::erase_if(query.variants, [](const auto& variant) { return !variant->busy; });
  for (const auto& variant : query.variants) variant->key += "\x1Fout of date";
  query.bound = std::make_shared<const bind::BoundQuery>(bind::bindStatement(
      *query.statement, query.criteria.get(), [this](std::string_view table) { return driver_.definition(table); },
      text, query.masks.get()));
  query.generation = driver_.generation();
}

Variant& StatementCache::variantFor(CachedQuery& query, Role role, std::string_view text) {
  std::erase_if(query.variants, [this](const auto& variant) {
    return !variant->busy && variant->key == variantKey_ && !variant->query->usable();
  });
  for (const auto& variant : query.variants) {
    if (!variant->busy && variant->key == variantKey_) return *variant;
  }
  if (query.variants.size() >= kMaxVariants) {
    std::erase_if(query.variants, [](const auto& variant) { return !variant->busy; });
  }
  auto variant = std::make_unique<Variant>();
  variant->key = variantKey_;
  variant->bound = query.bound;
  variant->query = driver_.prepare({.role = role, .query = query.bound.get(), .sites = sites_, .text = text});
  query.variants.push_back(std::move(variant));
  return *query.variants.back();
}

// Fills sites_ and variantKey_ from literals_.
void StatementCache::classify(const bind::BoundQuery& query) {
  sites_.clear();
  variantKey_.clear();
  for (const bind::Site& site : query.sites) {
    sites_.push_back(classified(query, site));
    variantKey_ += static_cast<char>(sites_.back().kind);
    if (sites_.back().kind == SiteClass::OwnPrefixes) variantKey_ += std::to_string(sites_.back().prefixes.size());
  }
}

SiteValue StatementCache::classified(const bind::BoundQuery& query, const bind::Site& site) {
  const Value& first = literals_[site.literals.front()];
  switch (site.kind) {
    case bind::Site::Kind::Like:
      return classifyPattern(first);
    case bind::Site::Kind::OwnPrefix:
      if (literals_[site.literals.back()] != Value("*") || !query.statement.readsOneTable()) return {};
      return classifyOwnPrefixes(first, wildcardsOf(query, site).prefixes);
    case bind::Site::Kind::Equal:
      break;
  }
  const bool plain = std::ranges::all_of(site.literals, [this](std::size_t index) {
    return literals_[index].type() != Type::Text || isAscii(literals_[index].text());
  });
  return {plain ? SiteClass::Plain : SiteClass::General, {}, {}};
}

StatementCache::WildcardList& StatementCache::wildcardsOf(const bind::BoundQuery& query, const bind::Site& site) {
  const TableDef& table = *query.statement.tables[site.table].def;
  return wildcards_[table.name + '\x1F' + table.fields[site.field].name];
}

// The values with a wildcard of every column that patterns are made from: few or none, found by one scan for each
// version of the table. Before anything of the run is kept, for it runs a query of its own.
void StatementCache::readWildcards(const bind::BoundQuery& query) {
  for (const bind::Site& site : query.sites) {
    if (site.kind != bind::Site::Kind::OwnPrefix) continue;
    const TableDef& table = *query.statement.tables[site.table].def;
    WildcardList& list = wildcardsOf(query, site);
    const std::uint64_t version = versions_.of(table.name);
    if (list.version == version) continue;
    const std::string& column = table.fields[site.field].name;
    const ShapedText text("select distinct([" + column + "]) from [" + table.name + "] where [" + column +
                          "] like '*[[*?#]*'");
    std::vector<std::string> prefixes;
    Execution scan = open(Role::Run, text);
    while (scan.step()) {
      if (const Value value = scan.value(0); value.type() == Type::Text) prefixes.push_back(value.text());
    }
    list.prefixes = std::move(prefixes);
    list.version = version;
  }
}

}  // namespace jet::engine
