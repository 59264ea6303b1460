#include "jet/engine/memory/packed_rows.h"

#include <bit>
#include <cstring>

namespace jet::memory {

namespace {

// Reads what add() wrote.
class Reader {
 public:
  explicit Reader(const char* at) : at_(at) {}

  std::size_t count() {
    std::uint16_t value = 0;
    std::memcpy(&value, at_, sizeof value);
    at_ += sizeof value;
    return value;
  }
  std::uint8_t byte() { return static_cast<std::uint8_t>(*at_++); }
  std::int64_t number() {
    std::int64_t value = 0;
    std::memcpy(&value, at_, sizeof value);
    at_ += sizeof value;
    return value;
  }
  std::string_view text() {
    std::uint32_t size = 0;
    std::memcpy(&size, at_, sizeof size);
    at_ += sizeof size + size;
    return {at_ - size, size};
  }

 private:
  const char* at_;
};

Value readValue(Reader& reader) {
  switch (static_cast<Type>(reader.byte())) {
    case Type::Boolean:
      return Value(reader.byte() != 0);
    case Type::Long:
      return Value(reader.number());
    case Type::Double:
      return Value(std::bit_cast<double>(reader.number()));
    case Type::Text:
      return Value(reader.text());
    case Type::DateTime:
      return Value(base::DateTime(reader.number()));
    case Type::Null:
      break;
  }
  return {};
}

void skipContent(Reader& reader, Type type) {
  switch (type) {
    case Type::Null:
      break;
    case Type::Boolean:
      reader.byte();
      break;
    case Type::Text:
      reader.text();
      break;
    default:
      reader.number();
  }
}

}  // namespace

void PackedRows::addNumber(std::int64_t number) {
  bytes_.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void PackedRows::addText(std::string_view text) {
  const auto size = static_cast<std::uint32_t>(text.size());
  bytes_.append(reinterpret_cast<const char*>(&size), sizeof size);
  bytes_ += text;
}

void PackedRows::add(const std::vector<Value>& row) {
  starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  const auto count = static_cast<std::uint16_t>(row.size());
  bytes_.append(reinterpret_cast<const char*>(&count), sizeof count);
  for (const Value& value : row) {
    bytes_ += static_cast<char>(value.type());
    switch (value.type()) {
      case Type::Null:
        break;
      case Type::Boolean:
        bytes_ += value.boolean() ? '\1' : '\0';
        break;
      case Type::Long:
        addNumber(value.integer());
        break;
      case Type::Double:
        addNumber(std::bit_cast<std::int64_t>(value.number()));
        break;
      case Type::Text:
        addText(value.text());
        break;
      case Type::DateTime:
        addNumber(value.dateTime().secondsSinceDayZero());
        break;
    }
  }
}

std::optional<std::string_view> PackedRows::text(std::size_t row, std::size_t column) const {
  Reader reader(bytes_.data() + starts_[row]);
  reader.count();
  for (std::size_t i = 0; i < column; ++i) skipContent(reader, static_cast<Type>(reader.byte()));
  if (static_cast<Type>(reader.byte()) != Type::Text) return std::nullopt;
  return reader.text();
}

void PackedRows::unpack(std::size_t row, std::vector<Value>& cells) const {
  Reader reader(bytes_.data() + starts_[row]);
  const std::size_t count = reader.count();
  for (std::size_t i = 0; i < count; ++i) cells.push_back(readValue(reader));
}

}  // namespace jet::memory
