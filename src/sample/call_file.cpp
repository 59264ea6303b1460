#include "sample/call_file.h"

#include <fstream>
#include <system_error>

#include "platform/progress.h"

namespace sample {

bool writeCalls(const std::filesystem::path& file, const CallPlan& plan, bool append, platform::Operator& person) {
  std::filesystem::path partial = file;
  partial += ".part";
  if (append && std::filesystem::exists(file)) {
    std::filesystem::copy_file(file, partial, std::filesystem::copy_options::overwrite_existing);
  } else {
    std::filesystem::remove(partial);
  }
  std::ofstream out(partial, std::ios::binary | std::ios::app);
  CallGenerator generator(plan);
  const platform::Progress progress(person, "", "Making calls", plan.count);
  for (std::int64_t i = 0; i < plan.count && out; ++i) {
    const std::string record = generator.next();
    out.write(record.data(), static_cast<std::streamsize>(record.size()));
    person.progressStep(i);
  }
  out.close();
  if (!out) {
    std::error_code ignored;
    std::filesystem::remove(partial, ignored);
    return false;
  }
  std::filesystem::rename(partial, file);
  return true;
}

}  // namespace sample
