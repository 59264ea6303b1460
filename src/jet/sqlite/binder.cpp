#include "jet/sqlite/binder.h"

#include "jet/compared_literal.h"
#include "jet/error.h"
#include "jet/sqlite/like_pattern.h"
#include "jet/sqlite/store_value.h"

namespace jet::sqlite {

namespace {

Value numberOf(const Value& value, bool asDouble) {
  if (value.type() == Type::Long && !asDouble) return value;
  if (value.isNull()) return value;
  const auto number = value.asNumber();
  if (!number) throw Error(3421, "Data type conversion error: '" + value.toText() + "' is no number.");
  return Value(*number);
}

Value converted(const Binding& binding, const Value& value) {
  switch (binding.convert) {
    case Convert::AsIs:
      return value;
    case Convert::ToText:
      return Value(value.toText());
    case Convert::ToNumber:
      return numberOf(value, false);
    case Convert::ToDouble:
      return numberOf(value, true);
    case Convert::Compare:
      return comparedAs(value, binding.type, binding.ordering);
    case Convert::Store:
      return storedValue(value, binding.field);
  }
  return value;
}

std::string containedPattern(const std::string& text) {
  std::string pattern = "%";
  for (const char c : text) {
    if (c == '%' || c == '_' || c == '\\') pattern += '\\';
    pattern += c;
  }
  return pattern + '%';
}

void bindLiteral(sqlite3_stmt* statement, int parameter, const Binding& binding, const Value& value) {
  const bool asIs = binding.convert == Convert::AsIs ||
                    (binding.convert == Convert::Compare && value.type() == binding.type) ||
                    (binding.convert == Convert::ToNumber && value.type() == Type::Long);
  if (asIs) {
    bindValue(statement, parameter, value);
  } else {
    bindValue(statement, parameter, converted(binding, value));
  }
}

}  // namespace

void bindAll(sqlite3_stmt* statement, const std::vector<Binding>& bindings, const BindSources& sources) {
  for (std::size_t i = 0; i < bindings.size(); ++i) {
    const Binding& binding = bindings[i];
    const int parameter = static_cast<int>(i) + 1;
    switch (binding.kind) {
      case Binding::Kind::Literal:
        bindLiteral(statement, parameter, binding, sources.literals[binding.source][binding.index]);
        break;
      case Binding::Kind::PrefixLow:
        bindValue(statement, parameter, Value((*sources.likes)[binding.site].text));
        break;
      case Binding::Kind::PrefixHigh:
        bindValue(statement, parameter, Value(prefixEnd((*sources.likes)[binding.site].text)));
        break;
      case Binding::Kind::Contained:
        bindValue(statement, parameter, Value(containedPattern((*sources.likes)[binding.site].text)));
        break;
      case Binding::Kind::OwnPrefix:
        bindValue(statement, parameter, Value((*sources.likes)[binding.site].prefixes[binding.index]));
        break;
      case Binding::Kind::Extra:
        sqlite3_bind_int64(statement, parameter, sources.extras[binding.index]);
        break;
    }
  }
}

}  // namespace jet::sqlite
