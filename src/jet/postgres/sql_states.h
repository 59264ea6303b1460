#pragma once

namespace jet::postgres {

// What the functions of the schema "jet" raise; the message is the engine's own sentence.
inline constexpr const char* kConversionState = "TB421";   // Error 3421
inline constexpr const char* kTextTooLongState = "TB163";  // Error 3163

// PostgreSQL's own for a number that its type cannot hold: a sum or product of whole numbers beyond 64 bits, a sum of
// others beyond the greatest Double. Error 3421, "Overflow.".
inline constexpr const char* kOutOfRangeState = "22003";

}  // namespace jet::postgres
