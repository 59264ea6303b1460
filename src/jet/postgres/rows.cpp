#include "jet/postgres/rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "jet/postgres/texts.h"
#include "jet/postgres/wire.h"

namespace jet::postgres {

namespace {

using engine::Cell;

// Numbers of the server's types; they are the same in every server.
constexpr Oid kBool = 16;
constexpr Oid kInt8 = 20;
constexpr Oid kInt2 = 21;
constexpr Oid kInt4 = 23;
constexpr Oid kText = 25;
constexpr Oid kFloat8 = 701;
constexpr Oid kTimestamp = 1114;

Oid serverType(Type type) {
  switch (type) {
    case Type::Boolean:
      return kBool;
    case Type::Long:
      return kInt8;
    case Type::Double:
      return kFloat8;
    case Type::DateTime:
      return kTimestamp;
    default:
      return kText;
  }
}

void appendLength(std::string& out, std::int32_t length) {
  char bytes[sizeof length];
  std::memcpy(bytes, &length, sizeof length);
  out.append(bytes, sizeof bytes);
}

std::int32_t lengthAt(const std::string& kept, std::size_t place) {
  std::int32_t length = 0;
  std::memcpy(&length, kept.data() + place, sizeof length);
  return length;
}

}  // namespace

void Rows::start(Prepared& statement, const Parameters& parameters, bool many, std::string_view text) {
  end();
  count_ = 0;
  types_.clear();
  connection_.start(statement, parameters, {}, many, this, text);
  arriving_ = true;
  if (many) return;
  result_ = connection_.next();
  row_ = -1;
  arriving_ = false;
  learnTypes(result_.get());
  while (connection_.next()) {
  }
}

void Rows::learnTypes(const PGresult* result) {
  if (result == nullptr || !types_.empty()) return;
  for (int i = 0; i < PQnfields(result); ++i) types_.push_back(PQftype(result, i));
  fields_.resize(types_.size());
  texts_.resize(types_.size());
}

Rows::Field Rows::fieldOf(const PGresult* result, int row, int column) {
  return {PQgetisnull(result, row, column) != 0,
          {PQgetvalue(result, row, column), static_cast<std::size_t>(PQgetlength(result, row, column))}};
}

void Rows::keepField(const Field& field) {
  appendLength(kept_, field.null ? -1 : static_cast<std::int32_t>(field.bytes.size()));
  kept_ += field.bytes;
}

void Rows::readRow(const PGresult* result, int row) {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    fields_[i] = fieldOf(result, row, static_cast<int>(i));
  }
}

bool Rows::nextArrived() {
  if (arriving_) {
    result_ = connection_.next();
    row_ = -1;
    learnTypes(result_.get());
    if (!result_) arriving_ = false;
  }
  if (!result_ || ++row_ >= PQntuples(result_.get())) {
    if (!arriving_) return false;
    // The end of rows that came one by one.
    while (connection_.next()) {
    }
    arriving_ = false;
    result_.reset();
    return false;
  }
  readRow(result_.get(), row_);
  return true;
}

bool Rows::nextKept() {
  if (place_ >= kept_.size()) return false;
  for (Field& field : fields_) {
    const std::int32_t length = lengthAt(kept_, place_);
    place_ += sizeof length;
    field.null = length < 0;
    field.bytes = std::string_view(kept_).substr(place_, field.null ? 0 : static_cast<std::size_t>(length));
    place_ += field.bytes.size();
  }
  return true;
}

void Rows::startCopy(const std::string& statement, const std::vector<Type>& types) {
  end();
  count_ = 0;
  types_.clear();
  for (const Type type : types) types_.push_back(serverType(type));
  fields_.resize(types_.size());
  texts_.resize(types_.size());
  connection_.startCopy(statement, this);
  arriving_ = true;
  copying_ = true;
  head_ = true;
}

// The fields of the row that arrived; false after the last one.
bool Rows::readCopied() {
  constexpr std::size_t kHeadSize = 19;
  constexpr std::size_t kCountSize = 2;
  constexpr std::size_t kLengthSize = 4;
  std::string_view bytes = copied_.bytes();
  if (std::exchange(head_, false)) bytes.remove_prefix(std::min(bytes.size(), kHeadSize));
  if (bytes.size() < kCountSize || wholeNumber(bytes.substr(0, kCountSize)) < 0) return false;
  bytes.remove_prefix(kCountSize);
  for (Field& field : fields_) {
    const std::int64_t length = wholeNumber(bytes.substr(0, kLengthSize));
    bytes.remove_prefix(kLengthSize);
    field.null = length < 0;
    field.bytes = bytes.substr(0, field.null ? 0 : static_cast<std::size_t>(length));
    bytes.remove_prefix(field.bytes.size());
  }
  return true;
}

bool Rows::nextCopied() {
  while (arriving_) {
    copied_ = connection_.nextCopied();
    if (!copied_) {
      arriving_ = false;
      copying_ = false;
    } else if (readCopied()) {
      return true;
    }
  }
  return false;
}

bool Rows::next() {
  const bool found = !kept_.empty() ? nextKept() : copying_ ? nextCopied() : nextArrived();
  if (found) ++count_;
  if (!found && fault_) throw Error(*fault_);
  return found;
}

void Rows::keep(const PGresult* result) {
  for (int row = 0; row < PQntuples(result); ++row) {
    for (int column = 0; column < PQnfields(result); ++column) {
      keepField(fieldOf(result, row, column));
    }
  }
}

// A fault is one of these rows: it is met where they are read.
void Rows::takeRest() {
  try {
    keepRest();
  } catch (const Error& error) {
    fault_ = error;
  }
  arriving_ = false;
  copying_ = false;
}

// The current row stays the current one: it lies in result_ or copied_.
void Rows::keepRest() {
  if (copying_) {
    // The current row lies in fields_, where each of the others is read to.
    CopiedRow current = std::move(copied_);
    const std::vector<Field> fields = fields_;
    while (nextCopied()) {
      for (const Field& field : fields_) keepField(field);
    }
    copied_ = std::move(current);
    fields_ = fields;
    return;
  }
  while (const Result more = connection_.next()) {
    learnTypes(more.get());
    keep(more.get());
  }
}

Cell Rows::cell(std::size_t column) const {
  const Field& field = fields_[column];
  if (field.null) return {};
  const std::string_view bytes = field.bytes;
  switch (types_[column]) {
    case kBool:
      return {.kind = Cell::Kind::Integer, .integer = bytes.front() != 0 ? 1 : 0};
    case kInt2:
    case kInt4:
    case kInt8:
      return {.kind = Cell::Kind::Integer, .integer = wholeNumber(bytes)};
    case kFloat8:
      return {.kind = Cell::Kind::Real, .real = realNumber(bytes)};
    case kTimestamp:
      texts_[column] = moment(bytes).stored();
      return {.kind = Cell::Kind::Text, .text = texts_[column]};
    default:
      if (!holdsBytes(bytes)) return {.kind = Cell::Kind::Text, .text = bytes};
      texts_[column] = fromServer(bytes);
      return {.kind = Cell::Kind::Text, .text = texts_[column]};
  }
}

void Rows::end() noexcept {
  if (arriving_) connection_.finish(this);
  arriving_ = false;
  copying_ = false;
  copied_ = {};
  result_.reset();
  row_ = 0;
  kept_.clear();
  place_ = 0;
  fault_.reset();
}

}  // namespace jet::postgres
