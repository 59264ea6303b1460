// Lines a second through columns and through a pattern, on one core, with the memory that it takes.

#include <sys/resource.h>

#include <cstdio>
#include <string>
#include <vector>

#include "base/printf.h"
#include "capture/format/format.h"
#include "capture/format/parser.h"
#include "processor_time.h"

namespace {

constexpr int kLines = 200000;

std::string columnsLine(int i) {
  return base::format("24.11.26%02d:%02d:%02d%3d%6d00:0900:00:%02d07550%05d               %11d 2", 8 + i % 10, i % 60,
                      i / 60 % 60, 1 + i % 8, 200 + i % 40, 1 + i % 59, i % 100000, i % 50);
}

std::string patternLine(int i) {
  return base::format("A%d  --> N%d 24/11/26 %02d:%02d 00:%02d:%02d %05d 07550%05d M", 200 + i % 40, 1 + i % 30,
                      8 + i % 10, i % 60, i % 60, 1 + i % 59, i % 50, i % 100000);
}

void measure(const char* format, std::string (*line)(int)) {
  capture::Parser parser(capture::FormatLibrary::standard().load(format), {});
  const auto arrived = std::chrono::sys_seconds(std::chrono::seconds(1795600000));
  std::size_t records = 0;
  const double before = bench::processorTime();
  for (int i = 0; i < kLines; ++i) {
    for (const auto& result : parser.line(static_cast<std::uint64_t>(i), line(i), arrived)) {
      records += result.records.size();
    }
  }
  const double seconds = (bench::processorTime() - before) / 1000;
  std::printf("%-10s %9.0f lines a second (%zu records of %d lines)\n", format, kLines / seconds, records, kLines);
}

}  // namespace

int main() {
  measure("hicom", columnsLine);
  measure("oxo", patternLine);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("largest memory %ld MiB\n", usage.ru_maxrss / 1024);
  return 0;
}
