// Calls of the dialect's functions.

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "jet/postgres/expression_emitter.h"
#include "jet/postgres/expression_traits.h"

namespace jet::postgres {

namespace {

using bind::BoundExpression;

// What stands for a call with so many arguments. In `sql` "%t1" is the first argument as a text, "%n1" as a Double,
// "%w1" as a whole number, "%d1" as a date, "%b1" as a condition; "%c0" is the time now. `when`: only if an argument is
// of a type, "w1" whole or Yes/No, "d1" a date, "t1" a text. The first line that fits holds.
struct CallForm {
  std::string_view name;
  std::size_t arguments;
  std::string_view when;
  std::string_view sql;
};

constexpr CallForm kForms[] = {
    {"weekday", 1, "", "(date_part('dow', %d1)::bigint + 1)"},
    {"weekday", 2, "", "jet.weekday(%d1, %w2)"},
    {"year", 1, "", "date_part('year', %d1)::bigint"},
    {"month", 1, "", "date_part('month', %d1)::bigint"},
    {"day", 1, "", "date_part('day', %d1)::bigint"},
    {"hour", 1, "", "date_part('hour', %d1)::bigint"},
    {"minute", 1, "", "date_part('minute', %d1)::bigint"},
    {"second", 1, "", "date_part('second', %d1)::bigint"},
    {"datepart", 2, "", "jet.date_part(%t1, %d2, 1, 1)"},
    {"datepart", 3, "", "jet.date_part(%t1, %d2, %w3, 1)"},
    {"datepart", 4, "", "jet.date_part(%t1, %d2, %w3, %w4)"},
    {"dateadd", 3, "", "jet.date_add(%t1, %w2, %d3)"},
    {"datediff", 3, "", "jet.date_diff(%t1, %d2, %d3, 1)"},
    {"datediff", 4, "", "jet.date_diff(%t1, %d2, %d3, %w4)"},
    {"datediff", 5, "", "(CASE WHEN %t5 IS NOT NULL THEN jet.date_diff(%t1, %d2, %d3, %w4) END)"},
    {"dateserial", 3, "", "jet.date_serial(%w1, %w2, %w3)"},
    {"timeserial", 3, "", "jet.time_serial(%w1, %w2, %w3)"},
    {"datevalue", 1, "", "date_trunc('day', %d1)"},
    {"cdate", 1, "", "%d1"},
    {"date", 0, "", "date_trunc('day', %c0)"},
    {"now", 0, "", "%c0"},
    {"time", 0, "", "(timestamp '1899-12-30' + (%c0)::time)"},
    {"left", 2, "", "jet.left(%t1, %w2)"},
    {"right", 2, "", "jet.right(%t1, %w2)"},
    {"mid", 2, "", "jet.mid(%t1, %w2)"},
    {"mid", 3, "", "jet.mid(%t1, %w2, %w3)"},
    {"len", 1, "", "length(%t1)::bigint"},
    {"instr", 2, "", "jet.in_str(1, %t1, %t2, 2)"},
    {"instr", 3, "", "jet.in_str(%w1, %t2, %t3, 2)"},
    {"instr", 4, "", "jet.in_str(%w1, %t2, %t3, %w4)"},
    {"ucase", 1, "", "jet.upper(%t1)"},
    {"lcase", 1, "", "jet.lower(%t1)"},
    {"trim", 1, "", "btrim(%t1, ' ')"},
    {"ltrim", 1, "", "ltrim(%t1, ' ')"},
    {"rtrim", 1, "", "rtrim(%t1, ' ')"},
    {"val", 1, "", "jet.val(%t1)"},
    {"str", 1, "w1", "jet.str(%w1::text)"},
    {"str", 1, "", "jet.str(jet.text(%n1))"},
    {"cstr", 1, "", "%t1"},
    {"space", 1, "", "jet.repeat(%w1, ' ')"},
    {"string", 2, "t2", "jet.repeat_first(%w1, %t2)"},
    {"string", 2, "", "jet.repeat(%w1, jet.chr(%w2))"},
    {"strcomp", 2, "", "jet.str_comp(%t1, %t2, 2)"},
    {"strcomp", 3, "", "jet.str_comp(%t1, %t2, %w3)"},
    {"replace", 3, "", "jet.replace(%t1, %t2, %t3, 1, -1, 0)"},
    {"replace", 4, "", "jet.replace(%t1, %t2, %t3, %w4, -1, 0)"},
    {"replace", 5, "", "jet.replace(%t1, %t2, %t3, %w4, %w5, 0)"},
    {"replace", 6, "", "jet.replace(%t1, %t2, %t3, %w4, %w5, %w6)"},
    {"asc", 1, "", "jet.asc(%t1)"},
    {"chr", 1, "", "jet.chr(%w1)"},
    {"abs", 1, "w1", "abs(%w1)"},
    {"abs", 1, "", "abs(%n1)"},
    {"int", 1, "w1", "%w1"},
    {"int", 1, "d1", "jet.from_serial(floor(%n1))"},
    {"int", 1, "", "floor(%n1)"},
    {"fix", 1, "w1", "%w1"},
    {"fix", 1, "d1", "jet.from_serial(trunc(%n1))"},
    {"fix", 1, "", "trunc(%n1)"},
    {"sgn", 1, "", "sign(%n1)::bigint"},
    {"round", 1, "w1", "%w1"},
    {"round", 1, "", "round(%n1)"},
    {"round", 2, "w1", "jet.round_whole(%w1, %w2)"},
    {"round", 2, "", "jet.round(%n1, %w2)"},
    {"sqr", 1, "", "jet.root(%n1)"},
    {"clng", 1, "", "jet.in_range(%w1, -2147483648, 2147483647)"},
    {"cint", 1, "", "jet.in_range(%w1, -32768, 32767)"},
    {"cdbl", 1, "", "%n1"},
    {"mask_number", 2, "", "jet.mask_number(%t1, %w2)"},
    {"mask_numbers", 2, "", "jet.mask_numbers(%t1, %w2)"},
    {"mask_forms", 2, "", "jet.mask_forms(%t1, %w2)"},
    {"mask_text", 2, "", "jet.mask_text(%t1, %w2)"},
    {"mask_name", 2, "", "jet.mask_name(%t1, %b2)"},
};

constexpr char kClock = 'c';

bool isOf(char form, Type type) {
  switch (form) {
    case 'w':
      return type == Type::Long || type == Type::Boolean;
    case 'd':
      return type == Type::DateTime;
    default:
      return type == Type::Text;
  }
}

std::size_t placeOf(char digit) {
  return static_cast<std::size_t>(digit - '1');
}

bool fits(const CallForm& form, const BoundExpression& call) {
  if (form.name != call.function->name || form.arguments != call.operands.size()) return false;
  return form.when.empty() || isOf(form.when[0], call.operands[placeOf(form.when[1])].type);
}

// Whether a value of the type may be none of what the form asks for, which is an error.
bool mayFail(char form, Type type) {
  switch (form) {
    case 'n':
      return type == Type::Text;
    case 'w':
      return type != Type::Long && type != Type::Boolean;
    case 'd':
      return type != Type::DateTime;
    default:
      return false;
  }
}

// Calls `take` with the letter and the digit of each mark, and with the text before it; gives the text after all.
template <typename Take>
std::string_view forEachMark(std::string_view sql, Take take) {
  for (std::size_t mark = sql.find('%'); mark != std::string_view::npos; mark = sql.find('%')) {
    take(sql[mark + 1], sql[mark + 2], sql.substr(0, mark));
    sql.remove_prefix(mark + 3);
  }
  return sql;
}

bool mayFail(const CallForm& form, const BoundExpression& call) {
  bool found = false;
  forEachMark(form.sql, [&](char letter, char digit, std::string_view) {
    found = found || (letter != kClock && mayFail(letter, call.operands[placeOf(digit)].type));
  });
  return found;
}

}  // namespace

std::string ExpressionEmitter::argument(char form, const BoundExpression& expression) {
  switch (form) {
    case 't':
      return asText(expression);
    case 'n':
      return asDouble(expression);
    case 'w':
      return asWhole(expression);
    case 'd':
      return asDate(expression);
    default:
      return condition(expression);
  }
}

std::string ExpressionEmitter::call(const BoundExpression& expression) {
  const auto* const form = std::ranges::find_if(kForms, [&](const CallForm& each) { return fits(each, expression); });
  if (form == std::end(kForms)) throw std::logic_error("no form of " + std::string(expression.function->name));
  std::string sql;
  const std::string_view rest = forEachMark(form->sql, [&](char letter, char digit, std::string_view before) {
    sql.append(before);
    sql += letter == kClock ? parameter({.kind = Parameter::Kind::Now, .type = Type::DateTime})
                            : argument(letter, expression.operands[placeOf(digit)]);
  });
  sql.append(rest);
  if (expression.operands.size() < 2 || !mayFail(*form, expression)) return sql;
  // An argument that is Null hides what is wrong with another.
  std::string nulls;
  for (const BoundExpression& operand : expression.operands) {
    if (!operand.isLiteral()) nulls += (nulls.empty() ? "" : " OR ") + emit(operand) + " IS NULL";
  }
  return nulls.empty() ? sql : "(CASE WHEN NOT (" + nulls + ") THEN " + sql + " END)";
}

}  // namespace jet::postgres
