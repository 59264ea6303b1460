#pragma once

#include "jet/table_def.h"
#include "jet/value.h"

namespace jet {

// The value as the column keeps it: any non-zero number is True in a Yes/No column and Null is False, doubles round
// half to even in a Long one, numbers that are not finite become Null, texts end before a NUL character. Errors 3421
// naming the column when it cannot be converted, 3163 when a text is longer than the column.
Value storedValue(Value value, const FieldDef& field);

}  // namespace jet
