#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/engine/driver.h"

namespace jet::engine {

// What a query over the keys of one table reads, in which order, and between which keys.
struct KeyQuery {
  enum class Rows : std::uint8_t { Key, Items, Fields, Count };
  enum class Order : std::uint8_t { None, Key, KeyBack, Select, SelectBack };
  Rows rows = Rows::Key;
  Order order = Order::None;
  const char* keyCondition = nullptr;  // operator between the key and extra 0
  bool where = true;
  bool criteria = false;
  bool anchored = false;  // from the row whose key is extra 0
  int limitExtra = -1;
  int offsetExtra = -1;
  bool one = false;
};

// Of the roles that give keys.
KeyQuery keyQuery(Role role);

// What comes before the columns of each table of a statement: its alias, quoted, with a dot; nothing in a change.
std::vector<std::string> qualifiersOf(const bind::BoundStatement& statement);

}  // namespace jet::engine
