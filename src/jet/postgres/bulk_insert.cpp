#include "jet/postgres/bulk_insert.h"

#include <cmath>
#include <utility>

#include "jet/postgres/texts.h"
#include "jet/postgres/wire.h"

namespace jet::postgres {

namespace {

using namespace std::string_view_literals;

// Before the rows and after them.
constexpr std::string_view kHead = "PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0"sv;
constexpr std::string_view kEnd = "\377\377"sv;
// Bytes that are sent at a time: enough that the server works on them while more are made.
constexpr std::size_t kPortion = 32 * 1024;

constexpr std::size_t kCountSize = 2;
constexpr std::size_t kLengthSize = 4;
constexpr std::int64_t kNull = -1;

}  // namespace

BulkInsert::BulkInsert(Connection& connection, std::string copyStatement, std::string numberingStatement,
                       std::vector<Type> types)
    : connection_(connection),
      copyStatement_(std::move(copyStatement)),
      numberingStatement_(std::move(numberingStatement)),
      types_(std::move(types)) {}

BulkInsert::~BulkInsert() {
  try {
    if (connection_.isBulk(this)) connection_.settle();
  } catch (const Error&) {
    // The transaction is broken: its commit tells.
  }
}

void BulkInsert::append(const Value& value, Type type) {
  const auto number = [&] { return type == Type::Double ? value.asNumber().value_or(0) : 0; };
  if (value.isNull() && type == Type::Boolean) {
    appendWhole(rows_, 1, kLengthSize);
    rows_ += '\0';
  } else if (value.isNull() || !std::isfinite(number())) {
    appendWhole(rows_, kNull, kLengthSize);
  } else if (type == Type::Boolean) {
    appendWhole(rows_, 1, kLengthSize);
    rows_ += value.toBool() ? '\1' : '\0';
  } else if (type == Type::Long) {
    appendWhole(rows_, sizeof(std::int64_t), kLengthSize);
    appendWhole(rows_, value.toLong(), sizeof(std::int64_t));
  } else if (type == Type::Double) {
    appendWhole(rows_, sizeof(double), kLengthSize);
    appendReal(rows_, number());
  } else if (type == Type::DateTime) {
    appendWhole(rows_, sizeof(std::int64_t), kLengthSize);
    appendMoment(rows_, value.toDateTime().value_or(base::DateTime()));
  } else {
    const std::string text = value.type() == Type::Text ? std::string() : value.toText();
    const std::string& given = value.type() == Type::Text ? value.text() : text;
    const std::string changed = isKeptAsItIs(given) ? std::string() : toServer(given);
    const std::string& sent = changed.empty() ? given : changed;
    appendWhole(rows_, static_cast<std::int64_t>(sent.size()), kLengthSize);
    rows_ += sent;
  }
}

void BulkInsert::add(std::int64_t key, std::span<const Value* const> values) {
  connection_.setBulk(this);
  lastKey_ = key;
  if (rows_.empty() && !sending_) rows_ = kHead;
  appendWhole(rows_, static_cast<std::int64_t>(types_.size()) + 1, kCountSize);
  appendWhole(rows_, sizeof key, kLengthSize);
  appendWhole(rows_, key, sizeof key);
  for (std::size_t i = 0; i < types_.size(); ++i) append(*values[i], types_[i]);
  if (rows_.size() < kPortion) return;
  if (!sending_) connection_.beginCopy(copyStatement_);
  sending_ = true;
  connection_.putCopy(rows_);
  rows_.clear();
}

void BulkInsert::finish() {
  std::string rest;
  rest.swap(rows_);
  rest += kEnd;
  if (!std::exchange(sending_, false)) connection_.beginCopy(copyStatement_);
  connection_.putCopy(rest);
  connection_.endCopy();
  Parameters last;
  last.add(lastKey_);
  connection_.run({numberingStatement_}, last);
}

void BulkInsert::forget() noexcept {
  rows_.clear();
  if (sending_) connection_.abandonCopy();
  sending_ = false;
}

}  // namespace jet::postgres
