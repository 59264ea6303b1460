#include "jet/engine/key_query.h"

#include "jet/quoted_name.h"

namespace jet::engine {

KeyQuery keyQuery(Role role) {
  using Rows = KeyQuery::Rows;
  using Order = KeyQuery::Order;
  switch (role) {
    case Role::Count:
      return {.rows = Rows::Count};
    case Role::CountBefore:
      return {.rows = Rows::Count, .keyCondition = " < "};
    case Role::Operands:
      return {.rows = Rows::Fields};
    case Role::NextKeys:
      return {.order = Order::Key, .keyCondition = " > ", .limitExtra = 1};
    case Role::PreviousKeys:
      return {.order = Order::KeyBack, .keyCondition = " < ", .limitExtra = 1};
    case Role::OrderedKeys:
      return {.order = Order::Select};
    case Role::KeysPage:
      return {.order = Order::Select, .limitExtra = 0, .offsetExtra = 1};
    case Role::KeysPageBack:
      return {.order = Order::SelectBack, .limitExtra = 0, .offsetExtra = 1};
    case Role::KeysFrom:
      return {.order = Order::Select, .anchored = true, .limitExtra = 1, .offsetExtra = 2};
    case Role::KeysBefore:
      return {.order = Order::SelectBack, .anchored = true, .limitExtra = 1, .offsetExtra = 2};
    case Role::FindFirst:
      return {.rows = Rows::Items, .order = Order::Select, .criteria = true, .one = true};
    case Role::FindNext:
      return {.rows = Rows::Items, .order = Order::Key, .keyCondition = " > ", .criteria = true, .one = true};
    case Role::Matches:
      return {.order = Order::Select, .criteria = true};
    case Role::ReadMatching:
      return {.rows = Rows::Items, .keyCondition = " = ", .criteria = true};
    case Role::ReadEach:
      return {.rows = Rows::Items, .where = false};
    default:
      return {.rows = Rows::Items, .keyCondition = " = ", .where = false};
  }
}

std::vector<std::string> qualifiersOf(const bind::BoundStatement& statement) {
  std::vector<std::string> qualifiers;
  for (const bind::BoundTable& table : statement.tables) {
    const bool plain = statement.kind != Statement::Kind::Select;
    qualifiers.push_back(plain ? std::string() : quotedName(table.alias) + ".");
  }
  return qualifiers;
}

}  // namespace jet::engine
