#include "journal.h"

#include <fstream>
#include <iterator>
#include <thread>

namespace soak {

std::string journal(const Exchange& exchange) {
  std::ifstream in(exchange.folder() / "serve.out");
  return {std::istreambuf_iterator<char>(in), {}};
}

int said(const Exchange& exchange, const std::string& part) {
  const std::string text = journal(exchange);
  int times = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++times;
  return times;
}

bool waitForJournal(const Exchange& exchange, const std::string& part, int times, std::chrono::seconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < end) {
    if (said(exchange, part) >= times) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

}  // namespace soak
