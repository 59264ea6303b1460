#include "convert/row_stream.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace convert {

namespace {

constexpr std::size_t kFlushSize = 64 * 1024;
constexpr std::size_t kFrameLimit = 256U * 1024 * 1024;
constexpr std::size_t kFrameHead = 5;

template <typename Number>
void putNumber(std::string& out, Number value) {
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.append(bytes, sizeof value);
}

void putText(std::string& out, std::string_view text) {
  putNumber(out, static_cast<std::uint32_t>(text.size()));
  out += text;
}

void putValue(std::string& out, const jet::Value& value) {
  out += static_cast<char>(value.type());
  switch (value.type()) {
    case jet::Type::Null:
      break;
    case jet::Type::Boolean:
      out += value.boolean() ? '\1' : '\0';
      break;
    case jet::Type::Long:
      putNumber(out, value.integer());
      break;
    case jet::Type::Double:
      putNumber(out, value.number());
      break;
    case jet::Type::Text:
      putText(out, value.text());
      break;
    case jet::Type::DateTime:
      putNumber(out, value.dateTime().secondsSinceDayZero());
      break;
  }
}

// Takes numbers, texts and values off the front of a payload.
class Payload {
 public:
  explicit Payload(std::string_view bytes) : bytes_(bytes) {}

  template <typename Number>
  Number number() {
    Number value;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return value;
  }

  std::string text() { return std::string(take(number<std::uint32_t>())); }

  jet::Value value() {
    switch (static_cast<jet::Type>(take(1)[0])) {
      case jet::Type::Null:
        return {};
      case jet::Type::Boolean:
        return take(1)[0] != '\0';
      case jet::Type::Long:
        return number<std::int64_t>();
      case jet::Type::Double:
        return number<double>();
      case jet::Type::Text:
        return text();
      case jet::Type::DateTime:
        return dateTime();
    }
    throw StreamError("The reading process sent a value of no known type.");
  }

 private:
  base::DateTime dateTime() {
    static const auto first = base::DateTime::fromParts(100, 1, 1)->secondsSinceDayZero();
    static const auto last = base::DateTime::fromParts(9999, 12, 31, 23, 59, 59)->secondsSinceDayZero();
    const auto seconds = number<std::int64_t>();
    if (seconds < first || seconds > last) throw StreamError("The reading process sent a date outside the calendar.");
    return base::DateTime(seconds);
  }

  std::string_view take(std::size_t size) {
    if (size > bytes_.size()) throw StreamError("The reading process sent a frame that is cut short.");
    const std::string_view front = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return front;
  }

  std::string_view bytes_;
};

jet::Type columnType(std::uint8_t code) {
  const auto type = static_cast<jet::Type>(code);
  if (type == jet::Type::Null || type > jet::Type::DateTime) {
    throw StreamError("The reading process sent a column of no known type.");
  }
  return type;
}

OldTable takeTable(Payload payload) {
  OldTable table;
  table.definition.name = payload.text();
  table.declaredRows = payload.number<std::int64_t>();
  const auto count = payload.number<std::uint32_t>();
  for (std::uint32_t i = 0; i < count; ++i) {
    jet::FieldDef field{.name = payload.text()};
    field.type = columnType(payload.number<std::uint8_t>());
    field.size = payload.number<std::int32_t>();
    field.autoIncrement = payload.number<std::uint8_t>() != 0;
    table.definition.fields.push_back(std::move(field));
    table.oldTypes.push_back(payload.text());
  }
  return table;
}

}  // namespace

void RowStreamWriter::beginTable(const OldTable& table) {
  std::string payload;
  putText(payload, table.definition.name);
  putNumber(payload, table.declaredRows);
  putNumber(payload, static_cast<std::uint32_t>(table.definition.fields.size()));
  for (std::size_t i = 0; i < table.definition.fields.size(); ++i) {
    const jet::FieldDef& field = table.definition.fields[i];
    putText(payload, field.name);
    putNumber(payload, static_cast<std::uint8_t>(field.type));
    putNumber(payload, static_cast<std::int32_t>(field.size));
    putNumber(payload, static_cast<std::uint8_t>(field.autoIncrement));
    putText(payload, table.oldTypes[i]);
  }
  frame('T', payload);
  // The other side has to know the table before the first row can bring this process down.
  flush();
}

void RowStreamWriter::row(const OldRow& row) {
  std::string payload;
  for (const jet::Value& value : row) putValue(payload, value);
  frame('R', payload);
}

void RowStreamWriter::problem(const std::string& what) {
  frame('P', what);
}

void RowStreamWriter::endTable() {
  frame('E', {});
  flush();
}

void RowStreamWriter::fault(const std::string& what) {
  frame('F', what);
  flush();
}

void RowStreamWriter::end() {
  frame('Z', {});
  flush();
}

void RowStreamWriter::frame(char kind, std::string_view payload) {
  pending_ += kind;
  putText(pending_, payload);
  if (pending_.size() >= kFlushSize) flush();
}

void RowStreamWriter::flush() {
  std::string_view left = pending_;
  while (!left.empty()) {
    const ssize_t written = write(descriptor_, left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) std::_Exit(1);
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  pending_.clear();
}

void RowStreamParser::feed(std::string_view bytes) {
  buffer_ += bytes;
  std::size_t at = 0;
  while (buffer_.size() - at >= kFrameHead) {
    std::uint32_t size = 0;
    std::memcpy(&size, buffer_.data() + at + 1, sizeof size);
    if (size > kFrameLimit) throw StreamError("The reading process sent a value larger than any file holds.");
    if (buffer_.size() - at - kFrameHead < size) break;
    handle(buffer_[at], std::string_view(buffer_).substr(at + kFrameHead, size));
    at += kFrameHead + size;
  }
  buffer_.erase(0, at);
}

void RowStreamParser::handle(char kind, std::string_view payload) {
  if ((kind == 'T' && inTable_) || ((kind == 'R' || kind == 'E') && !inTable_)) {
    throw StreamError("The reading process sent its frames out of order.");
  }
  switch (kind) {
    case 'T': {
      const OldTable table = takeTable(Payload(payload));
      openTable_ = table.definition.name;
      columns_ = table.definition.fields.size();
      inTable_ = true;
      sink_.beginTable(table);
      return;
    }
    case 'R': {
      OldRow row(columns_);
      Payload values(payload);
      for (jet::Value& value : row) value = values.value();
      sink_.row(row);
      return;
    }
    case 'P':
      sink_.problem(std::string(payload));
      return;
    case 'E':
      openTable_.clear();
      inTable_ = false;
      sink_.endTable();
      return;
    case 'F':
      fault_ = payload;
      return;
    case 'Z':
      ended_ = true;
      return;
    default:
      throw StreamError("The reading process sent bytes that make no sense.");
  }
}

}  // namespace convert
