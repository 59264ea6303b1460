#pragma once

#include <string>
#include <string_view>

#include "jet/parser/ast.h"

namespace jet::test {

// A tree as a text: every operator in parentheses after its name, literals as "?n:type". For comparing trees.
std::string treeText(const Expression& expression);
std::string treeText(const Statement& statement);

}  // namespace jet::test
