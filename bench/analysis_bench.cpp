// Missed calls and trunk load of very many calls, in milliseconds of processor time: the first time, as in a program
// just started, and at the best of three more. Usage: analysis_bench [CALLS] [FOLDER]; with a folder, the calls made
// there are kept and used again.

#include <cstdlib>
#include <iostream>

#include "analysis/answer_statistic.h"
#include "analysis/missed_calls.h"
#include "analysis/trunk_load.h"
#include "office.h"

namespace {

void measure(const char* what, const std::function<void()>& work) {
  const double first = bench::millisecondsOf(work);
  std::cout << base::format("%-40s %9.0f %9.0f\n", what, first, bench::milliseconds(work)) << std::flush;
}

void run(const std::filesystem::path& folder, std::int64_t calls) {
  if (!std::filesystem::exists(folder / schema::kMainFile)) {
    std::filesystem::create_directories(folder);
    bench::makeCalls(folder / schema::kMainFile, calls);
    // One of seven callers got no answer.
    bench::Bare(folder / schema::kMainFile)
        .execute("update Calls set TotalTime = 0 where Incoming <> 0 and RecordID % 7 = 0");
  }
  bench::Office office(folder);
  const folders::FolderServices& services = office.services();
  const analysis::CallScope scope = analysis::activeScope(services.filter);
  std::size_t missed = 0;
  measure("missed calls", [&] {
    missed = analysis::findMissedCalls(services.main, scope, analysis::SubscriberNumbers("40", "21")).rows.size();
  });
  measure("answers by hour", [&] { (void)analysis::answerStatistic(services.main, scope, analysis::AnswersBy::Hour); });
  measure("trunk load", [&] { (void)analysis::trunkLoad(services.main, scope, services.definitions); });
  std::cout << missed << " missed calls\n";
}

}  // namespace

int main(int count, char** words) {
  const std::int64_t calls = count > 1 ? std::atoll(words[1]) : 1'000'000;
  if (count > 2) {
    run(words[2], calls);
  } else {
    const bench::DataFolder folder("analysis-bench");
    run(folder.path(), calls);
  }
  return 0;
}
