#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace jet::postgres::detail {

// A function in PL/pgSQL that is Null as soon as an argument is. `body` is what is between its outer BEGIN and END,
// after declarations if it has some (then with its own DECLARE ... BEGIN).
std::string strictFunction(std::string_view signature, std::string_view returns, std::string_view body);

// An expression that is inlined where its arguments are columns or parameters, as NAME, and for every other argument a
// function NAME_of, which works each argument out once. Both are Null when an argument is.
std::vector<std::string> inlinedFunction(std::string_view name, std::string_view arguments, std::string_view returns,
                                         std::string_view expression);

// The groups, each in its own file.
std::vector<std::string> letterFunctions();
std::vector<std::string> numberFunctions();
std::vector<std::string> dateFunctions();
std::vector<std::string> textFunctions();
std::vector<std::string> storeFunctions();

}  // namespace jet::postgres::detail
