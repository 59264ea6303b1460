#include "jet/postgres/postgres_query.h"

#include "base/text.h"
#include "jet/engine/site_values.h"
#include "jet/operators.h"
#include "jet/postgres/wire.h"

namespace jet::postgres {

namespace {

// The first text after all that begin with `prefix`, of ASCII letters, among texts whose A-Z are folded.
std::string prefixEnd(std::string_view prefix) {
  constexpr char kLastAscii = 0x7F;
  std::string end = base::foldAscii(prefix);
  if (end.back() == kLastAscii) {
    end.back() = static_cast<char>(0xC2);  // U+0080
    end += static_cast<char>(0x80);
  } else {
    end.back() = static_cast<char>(end.back() + 1);
  }
  return end;
}

// Of ASCII.
std::string outline(std::string_view text) {
  std::string pattern;
  for (const char c : base::foldAscii(text)) {
    if (c == '%' || c == '_' || c == '\\') pattern += '\\';
    pattern += c >= 'a' && c <= 'z' ? '_' : c;
  }
  return pattern;
}

// "{1,2,3}"
std::string arrayOf(std::span<const std::int64_t> numbers) {
  std::string array = "{";
  for (const std::int64_t number : numbers) array += (array.size() == 1 ? "" : ",") + std::to_string(number);
  return array + "}";
}

void addParameter(Parameters& parameters, const Parameter& parameter, const engine::Arguments& arguments) {
  switch (parameter.kind) {
    case Parameter::Kind::Literal:
      return parameters.add(arguments.literals[parameter.index], parameter.type);
    case Parameter::Kind::SiteText:
      return parameters.addText(arguments.sites[parameter.site].text);
    case Parameter::Kind::PrefixEnd:
      return parameters.addText(prefixEnd(arguments.sites[parameter.site].text));
    case Parameter::Kind::Contained:
      return parameters.addText(engine::containedPattern(arguments.sites[parameter.site].text));
    case Parameter::Kind::Outline: {
      const Value& text = arguments.literals[parameter.index];
      return text.isNull() ? parameters.addNull() : parameters.addOwned(outline(text.toText()));
    }
    case Parameter::Kind::OwnPrefix:
      return parameters.addText(arguments.sites[parameter.site].prefixes[parameter.index]);
    case Parameter::Kind::Now: {
      static const Function& now = *findFunction("now");
      return parameters.add(now.call({}), parameter.type);
    }
    case Parameter::Kind::Extra:
      return parameters.add(arguments.extras[parameter.index]);
    case Parameter::Kind::Extras:
      return parameters.addOwned(arrayOf(arguments.extras));
  }
}

}  // namespace

void addParameters(Parameters& parameters, const Plan& plan, const engine::Arguments& arguments) {
  parameters.clear();
  for (const Parameter& parameter : plan.parameters) addParameter(parameters, parameter, arguments);
}

PostgresSelect::PostgresSelect(std::shared_ptr<Session> session, Plan plan, std::size_t keyColumns, bool many,
                               std::string_view text)
    : session_(std::move(session)),
      plan_(std::move(plan)),
      keyColumns_(keyColumns),
      many_(many),
      text_(text),
      prepared_{plan_.sql},
      rows_(session_->connection()) {}

PostgresSelect::~PostgresSelect() {
  rows_.end();
  session_->connection().drop(prepared_);
}

void PostgresSelect::bind(const engine::Arguments& arguments) {
  addParameters(parameters_, plan_, arguments);
  started_ = false;
}

bool PostgresSelect::step() {
  if (!started_) rows_.start(prepared_, parameters_, many_, text_);
  started_ = true;
  return rows_.next();
}

// The server does not say how many rows it looked at.
std::int64_t PostgresSelect::work() const {
  return rows_.count();
}

void PostgresSelect::reset() noexcept {
  rows_.end();
  started_ = false;
}

PostgresScan::PostgresScan(std::shared_ptr<Session> session, const std::string& copyStatement,
                           const std::vector<Type>& types)
    : session_(std::move(session)), rows_(session_->connection()) {
  std::vector<Type> all{Type::Long};
  all.insert(all.end(), types.begin(), types.end());
  rows_.startCopy(copyStatement, all);
}

PostgresChange::PostgresChange(std::shared_ptr<Session> session, Plan plan, std::string_view text, Around around)
    : session_(std::move(session)),
      plan_(std::move(plan)),
      text_(text),
      around_(std::move(around)),
      prepared_{plan_.sql} {}

PostgresChange::~PostgresChange() {
  session_->connection().drop(prepared_);
}

void PostgresChange::bind(const engine::Arguments& arguments) {
  addParameters(parameters_, plan_, arguments);
}

bool PostgresChange::step() {
  session_->change(prepared_, parameters_, around_.before, text_, changed_);
  if (!around_.after.empty()) session_->change(around_.after);
  if (around_.catalog != nullptr) around_.catalog->invalidate();
  return false;
}

PostgresRowChange::PostgresRowChange(std::shared_ptr<Session> session, std::string sql, std::vector<Type> types)
    : session_(std::move(session)), prepared_{std::move(sql)}, types_(std::move(types)) {}

PostgresRowChange::~PostgresRowChange() {
  session_->connection().drop(prepared_);
}

std::int64_t PostgresRowChange::run(engine::RowKey key, std::span<const Value* const> values) {
  parameters_.clear();
  parameters_.add(key);
  for (std::size_t i = 0; i < values.size(); ++i) parameters_.add(*values[i], types_[i]);
  std::int64_t changed = 0;
  session_->change(prepared_, parameters_, {}, {}, changed);
  return changed;
}

PostgresInsert::PostgresInsert(std::shared_ptr<Session> session, std::string numbered, std::string withKey,
                               std::vector<Type> types, std::optional<std::size_t> keyValue,
                               std::vector<std::string> afterOwnKey, std::unique_ptr<BulkInsert> bulk)
    : session_(std::move(session)),
      numbered_{std::move(numbered)},
      withKey_{std::move(withKey)},
      types_(std::move(types)),
      keyValue_(keyValue),
      afterOwnKey_(std::move(afterOwnKey)),
      bulk_(std::move(bulk)) {}

PostgresInsert::~PostgresInsert() {
  bulk_.reset();
  session_->connection().drop(numbered_);
  session_->connection().drop(withKey_);
}

std::int64_t PostgresInsert::run(engine::RowKey, std::span<const Value* const> values) {
  Connection& connection = session_->connection();
  const bool ownKey = keyValue_ && !values[*keyValue_]->isNull();
  if (!ownKey && bulk_ && runs_ == connection.runs() && session_->inTransaction()) {
    values_.clear();
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i != keyValue_) values_.push_back(values[i]);
    }
    bulk_->add(++lastKey_, values_);
  } else {
    insert(ownKey, values);
  }
  runs_ = connection.runs();
  return lastKey_;
}

void PostgresInsert::insert(bool ownKey, std::span<const Value* const> values) {
  parameters_.clear();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (ownKey || i != keyValue_) parameters_.add(*values[i], types_[i]);
  }
  std::int64_t changed = 0;
  const Result result = session_->change(ownKey ? withKey_ : numbered_, parameters_, {}, {}, changed);
  lastKey_ = integerAt(result.get(), 0, 0);
  // A number after those of the table is not the next one of its numbering before that follows.
  if (ownKey) session_->change(afterOwnKey_);
}

}  // namespace jet::postgres
