#pragma once

#include <libpq-fe.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "base/datetime.h"

namespace jet::postgres {

// Values in the server's binary form: whole numbers in the order of bytes of the network, dates as microseconds since
// 2000-01-01.

std::int64_t wholeNumber(std::string_view bytes);  // of 2, 4 or 8 bytes
double realNumber(std::string_view bytes);
// Without fractions of a second. Infinity lies outside of the years that the dialect has.
base::DateTime moment(std::string_view bytes);

// A bigint of a result.
std::int64_t integerAt(const PGresult* result, int row, int column);

void appendWhole(std::string& out, std::int64_t value, std::size_t size);
void appendReal(std::string& out, double value);
void appendMoment(std::string& out, base::DateTime value);

}  // namespace jet::postgres
