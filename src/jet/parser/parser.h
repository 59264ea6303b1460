#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/parser/ast.h"

namespace jet {

// Texts that differ only in the values of their literals have one shape: the key under which a parsed tree, a prepared
// statement or a plan is kept. `literals` are the values taken out, in the order of the text.
struct Shape {
  std::string key;
  std::vector<Value> literals;
};

// Splits a text into its shape and its literals without parsing it (one pass over the characters). Type marks of the
// literals are part of the key; the number after TOP and the positions of ORDER BY stay in it. Error 3075 for
// characters that belong to no token and for texts or dates that do not end. Shape-cached callers reuse `out`'s
// storage.
void shapeOf(std::string_view sql, Shape& out);

// Parses one statement. Expression::parameter indexes the literals that shapeOf gives for the same text.
// Error 3075 names the place; 3085 an unknown function.
std::unique_ptr<const Statement> parseStatement(std::string_view sql);

// Parses a condition alone (find criteria, a user's restriction, the text after WHERE).
ExpressionPtr parseCondition(std::string_view condition);

}  // namespace jet
