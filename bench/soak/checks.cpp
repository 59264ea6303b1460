#include "checks.h"

#include <algorithm>
#include <iostream>

#include "base/printf.h"

namespace soak {

bool check(bool good, const std::string& what) {
  if (!good) std::cout << "WRONG: " << what << std::endl;
  return good;
}

bool logIsClean(const Exchange& exchange) {
  const std::vector<std::string> errors = exchange.loggedErrors();
  for (std::size_t i = 0; i < std::min<std::size_t>(errors.size(), 5); ++i) {
    std::cout << "WRONG: in the audit log: " << errors[i] << std::endl;
  }
  return errors.empty();
}

std::int64_t percentile(const std::vector<std::int64_t>& sorted, double share) {
  if (sorted.empty()) return 0;
  return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

void printLatencies(const std::vector<std::int64_t>& sorted) {
  std::cout << base::format("a live call: median %d us, 99th percentile %d us, longest %d us (%d calls)\n",
                            percentile(sorted, 0.5), percentile(sorted, 0.99), percentile(sorted, 1), sorted.size());
}

}  // namespace soak
