#pragma once

#include "jet/value.h"

namespace jet {

// A literal as the type of the column that it is compared with. A value that cannot be converted stays as it is, which
// makes it unequal to all of the column's values; under an ordering it is Null, which makes no row match.
Value comparedAs(const Value& value, Type type, bool ordering);

}  // namespace jet
