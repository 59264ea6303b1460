#include "jet/sqlite/user_functions.h"

#include <cmath>
#include <string>

#include "jet/letters.h"
#include "jet/masks.h"
#include "jet/operators.h"
#include "jet/store_value.h"

namespace jet::sqlite {

namespace detail {

namespace {

void freeContext(void* context) {
  delete static_cast<FunctionContext*>(context);
}

}  // namespace

void defineScalar(Connection& connection, const char* name, int arguments, ScalarFunction function, bool deterministic,
                  const void* data) {
  const int flags = SQLITE_UTF8 | SQLITE_INNOCUOUS | (deterministic ? SQLITE_DETERMINISTIC : 0);
  const int code =
      sqlite3_create_function_v2(connection.handle(), name, arguments, flags, new FunctionContext{&connection, data},
                                 function, nullptr, nullptr, &freeContext);
  if (code != SQLITE_OK) connection.fail(code, name);
}

FunctionContext& contextOf(sqlite3_context* context) {
  return *static_cast<FunctionContext*>(sqlite3_user_data(context));
}

std::string_view textOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

Value valueOf(sqlite3_value* value, char letter) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER:
      if (letter == 'b') return Value(sqlite3_value_int64(value) != 0);
      return Value(static_cast<std::int64_t>(sqlite3_value_int64(value)));
    case SQLITE_FLOAT:
      return Value(sqlite3_value_double(value));
    default: {
      const std::string_view text = textOf(value);
      if (letter == 'd') {
        if (const auto date = base::DateTime::fromStored(text)) return Value(*date);
      }
      return Value(text);
    }
  }
}

void giveResult(sqlite3_context* context, const Value& value) {
  switch (value.type()) {
    case Type::Null:
      sqlite3_result_null(context);
      break;
    case Type::Boolean:
      sqlite3_result_int(context, value.boolean() ? 1 : 0);
      break;
    case Type::Long:
      sqlite3_result_int64(context, value.integer());
      break;
    case Type::Double:
      if (std::isfinite(value.number())) {
        sqlite3_result_double(context, value.number());
      } else {
        sqlite3_result_null(context);
      }
      break;
    case Type::Text:
      sqlite3_result_text64(context, value.text().data(), value.text().size(), SQLITE_TRANSIENT, SQLITE_UTF8);
      break;
    case Type::DateTime: {
      const std::string stored = value.dateTime().stored();
      sqlite3_result_text64(context, stored.data(), stored.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
      break;
    }
  }
}

void giveError(sqlite3_context* context, const Error& error) {
  contextOf(context).connection->setFunctionError(error);
  sqlite3_result_error(context, error.what(), -1);
}

}  // namespace detail

using namespace detail;

namespace {

// Runs the body; no exception may pass through SQLite.
template <typename Body>
void guarded(sqlite3_context* context, Body body) {
  try {
    body();
  } catch (const Error& error) {
    giveError(context, error);
  } catch (const std::exception& error) {
    giveError(context, Error(3000, error.what()));
  }
}

// A function of the dialect: the first argument says the types of the others.
void callListed(sqlite3_context* context, int count, sqlite3_value** arguments) {
  guarded(context, [&] {
    const auto& function = *static_cast<const Function*>(contextOf(context).data);
    const std::string_view letters = textOf(arguments[0]);
    std::vector<Value> values;
    values.reserve(static_cast<std::size_t>(count) - 1);
    for (std::size_t i = 1; i < static_cast<std::size_t>(count); ++i) {
      values.push_back(valueOf(arguments[i], i <= letters.size() ? letters[i - 1] : 'v'));
    }
    giveResult(context, function.call(values));
  });
}

void callLike(sqlite3_context* context, int, sqlite3_value** arguments) {
  guarded(context, [&] {
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL || sqlite3_value_type(arguments[1]) == SQLITE_NULL) return;
    sqlite3_result_int(context, like(textOf(arguments[0]), textOf(arguments[1])) ? 1 : 0);
  });
}

// jet_text(letter, value): the text that a value has in expressions.
void callText(sqlite3_context* context, int, sqlite3_value** arguments) {
  guarded(context, [&] {
    const Value value = valueOf(arguments[1], textOf(arguments[0]).front());
    if (!value.isNull()) giveResult(context, Value(value.toText()));
  });
}

void callNumber(sqlite3_context* context, int, sqlite3_value** arguments) {
  guarded(context, [&] {
    const Value value = valueOf(arguments[0], 'v');
    if (value.isNull()) return;
    const auto number = value.asNumber();
    if (!number) throw Error(3421, "Data type conversion error: '" + value.toText() + "' is no number.");
    giveResult(context, Value(*number));
  });
}

void callNumberOrNull(sqlite3_context* context, int, sqlite3_value** arguments) {
  guarded(context, [&] {
    if (const auto number = valueOf(arguments[0], 'v').asNumber()) giveResult(context, Value(*number));
  });
}

// jet_store(letter, value, type, size, column)
void callStore(sqlite3_context* context, int, sqlite3_value** arguments) {
  guarded(context, [&] {
    FieldDef field;
    field.type = static_cast<Type>(sqlite3_value_int(arguments[2]));
    field.size = sqlite3_value_int(arguments[3]);
    field.name = textOf(arguments[4]);
    giveResult(context, storedValue(valueOf(arguments[1], textOf(arguments[0]).front()), field));
  });
}

// A number that is not finite is Null.
void callFinite(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) != SQLITE_FLOAT || std::isfinite(sqlite3_value_double(arguments[0]))) {
    sqlite3_result_value(context, arguments[0]);
  }
}

template <Value (*Operation)(const Value&, const Value&)>
void callOperation(sqlite3_context* context, int, sqlite3_value** arguments) {
  guarded(context, [&] { giveResult(context, Operation(valueOf(arguments[0], 'v'), valueOf(arguments[1], 'v'))); });
}

int compareTexts(void*, int leftSize, const void* left, int rightSize, const void* right) {
  return compareLetters({static_cast<const char*>(left), static_cast<std::size_t>(leftSize)},
                        {static_cast<const char*>(right), static_cast<std::size_t>(rightSize)});
}

}  // namespace

void registerFunctions(Connection& connection) {
  if (const int code =
          sqlite3_create_collation_v2(connection.handle(), "jet", SQLITE_UTF8, nullptr, &compareTexts, nullptr);
      code != SQLITE_OK) {
    connection.fail(code, "jet");
  }
  for (const auto* list : {&functions(), &maskFunctions()}) {
    for (const Function& function : *list) {
      const std::string name = "jet_" + std::string(function.name);
      defineScalar(connection, name.c_str(), -1, &callListed, function.deterministic, &function);
    }
  }
  defineScalar(connection, "jet_like", 2, &callLike);
  defineScalar(connection, "jet_text", 2, &callText);
  defineScalar(connection, "jet_number", 1, &callNumber);
  defineScalar(connection, "jet_number_or_null", 1, &callNumberOrNull);
  defineScalar(connection, "jet_store", 5, &callStore);
  defineScalar(connection, "jet_finite", 1, &callFinite);
  defineScalar(connection, "jet_power", 2, &callOperation<power>);
  defineScalar(connection, "jet_divide", 2, &callOperation<integerDivide>);
  defineScalar(connection, "jet_modulo", 2, &callOperation<modulo>);
  registerDateFunctions(connection);
  registerAggregates(connection);
}

}  // namespace jet::sqlite
