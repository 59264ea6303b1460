#include "jet/postgres/rows.h"

#include <bit>
#include <cstring>

#include "base/datetime.h"
#include "jet/postgres/texts.h"

namespace jet::postgres {

namespace {

using engine::Cell;

// Numbers of the server's types; they are the same in every server.
constexpr Oid kBool = 16;
constexpr Oid kInt8 = 20;
constexpr Oid kInt2 = 21;
constexpr Oid kInt4 = 23;
constexpr Oid kFloat8 = 701;
constexpr Oid kTimestamp = 1114;

// Days from the dialect's day 0, 1899-12-30, to the server's, 2000-01-01.
constexpr std::int64_t kDaysToDayZero = 36526;
constexpr std::int64_t kSecondsOfDay = 86400;
constexpr std::int64_t kMicroseconds = 1'000'000;

// Of the network's order of bytes.
std::uint64_t bits(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char c : bytes) value = value << 8U | static_cast<unsigned char>(c);
  return value;
}

// A year that the dialect does not have, and infinity, are texts that are no date.
std::string storedDate(std::int64_t microseconds) {
  std::int64_t seconds = microseconds / kMicroseconds;
  if (microseconds % kMicroseconds < 0) --seconds;
  return base::DateTime(seconds + kDaysToDayZero * kSecondsOfDay).stored();
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

void Rows::readRow(const PGresult* result, int row) {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    const int column = static_cast<int>(i);
    fields_[i].null = PQgetisnull(result, row, column) != 0;
    fields_[i].bytes = {PQgetvalue(result, row, column), static_cast<std::size_t>(PQgetlength(result, row, column))};
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

bool Rows::next() {
  const bool found = kept_.empty() ? nextArrived() : nextKept();
  if (found) ++count_;
  return found;
}

void Rows::keep(const PGresult* result) {
  for (int row = 0; row < PQntuples(result); ++row) {
    for (int column = 0; column < PQnfields(result); ++column) {
      const bool null = PQgetisnull(result, row, column) != 0;
      const int length = PQgetlength(result, row, column);
      appendLength(kept_, null ? -1 : length);
      if (!null) kept_.append(PQgetvalue(result, row, column), static_cast<std::size_t>(length));
    }
  }
}

// The current row stays the current one: it lies in result_.
void Rows::takeRest() {
  while (const Result more = connection_.next()) {
    learnTypes(more.get());
    keep(more.get());
  }
  arriving_ = false;
}

Cell Rows::cell(std::size_t column) const {
  const Field& field = fields_[column];
  if (field.null) return {};
  const std::string_view bytes = field.bytes;
  switch (types_[column]) {
    case kBool:
      return {.kind = Cell::Kind::Integer, .integer = bytes.front() != 0 ? 1 : 0};
    case kInt2:
      return {.kind = Cell::Kind::Integer, .integer = static_cast<std::int16_t>(bits(bytes))};
    case kInt4:
      return {.kind = Cell::Kind::Integer, .integer = static_cast<std::int32_t>(bits(bytes))};
    case kInt8:
      return {.kind = Cell::Kind::Integer, .integer = static_cast<std::int64_t>(bits(bytes))};
    case kFloat8:
      return {.kind = Cell::Kind::Real, .real = std::bit_cast<double>(bits(bytes))};
    case kTimestamp:
      texts_[column] = storedDate(static_cast<std::int64_t>(bits(bytes)));
      return {.kind = Cell::Kind::Text, .text = texts_[column]};
    default:
      if (!holdsBytes(bytes)) return {.kind = Cell::Kind::Text, .text = bytes};
      texts_[column] = fromServer(bytes);
      return {.kind = Cell::Kind::Text, .text = texts_[column]};
  }
}

void Rows::end() noexcept {
  if (arriving_) connection_.finish();
  arriving_ = false;
  result_.reset();
  row_ = 0;
  kept_.clear();
  place_ = 0;
}

}  // namespace jet::postgres
