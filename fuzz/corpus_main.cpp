// Runs one fuzz target over every file of a folder: fuzz_corpus TARGET FOLDER. Ends with 0 when it came through all.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string_view>

#include "platform/regular_file.h"
#include "targets.h"

int main(int count, char** words) {
  if (count != 3) {
    std::cerr << "fuzz_corpus TARGET FOLDER\n";
    return 2;
  }
  const std::string_view name = words[1];
  const auto* target = std::find_if(std::begin(kFuzzTargets), std::end(kFuzzTargets),
                                    [&](const FuzzTarget& each) { return each.name == name; });
  if (target == std::end(kFuzzTargets)) {
    std::cerr << "there is no target " << name << '\n';
    return 2;
  }
  int inputs = 0;
  std::error_code fault;
  for (const auto& entry : std::filesystem::directory_iterator(words[2], fault)) {
    const auto bytes = platform::readRegularFile(entry.path());
    if (!bytes) continue;
    std::cout << entry.path().filename().string() << std::endl;  // flushed: the last one named is the one that fails
    target->run(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size());
    ++inputs;
  }
  std::cout << inputs << " inputs\n";
  return inputs > 0 ? 0 : 1;
}
