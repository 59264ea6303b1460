#include "convert/partial_folder.h"

#include <fstream>
#include <system_error>

#include "base/printf.h"
#include "convert/conversion_error.h"
#include "platform/durable_files.h"
#include "platform/group_sharing.h"

namespace convert {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMarker = ".tallybook-conversion";

// "new/" names the same folder as "new"; what is beside it needs the name without the separator.
fs::path withoutSeparator(const fs::path& folder) {
  const fs::path whole = fs::absolute(folder).lexically_normal();
  return whole.has_filename() ? whole : whole.parent_path();
}

void require(const fs::path& path, std::error_code fault) {
  if (fault) throw fs::filesystem_error("cannot be written to the disk", path, fault);
}

}  // namespace

PartialFolder::PartialFolder(const fs::path& target)
    : target_(withoutSeparator(target)), path_(target_.string() + ".partial") {
  std::error_code error;
  if (fs::exists(target_) && !(fs::is_directory(target_) && fs::is_empty(target_, error))) {
    throw ConversionError(base::format("%s exists already and is not empty. Name another folder.", target_.string()));
  }
  if (fs::exists(path_)) {
    if (!fs::exists(path_ / kMarker)) {
      throw ConversionError(
          base::format("%s is in the way and was not made by a conversion. Move it away.", path_.string()));
    }
    fs::remove_all(path_);
  }
  platform::shareWithGroupOfParent(path_);
  fs::create_directories(path_, error);
  std::ofstream marker(path_ / kMarker);
  if (error || !marker) {
    throw ConversionError(
        base::format("The folder %s cannot be made. Check the rights and the space there.", path_.string()));
  }
}

PartialFolder::~PartialFolder() {
  std::error_code ignored;
  if (!kept_) fs::remove_all(path_, ignored);
}

void PartialFolder::publish() {
  fs::remove(path_ / kMarker);
  for (const auto& entry : fs::directory_iterator(path_)) require(entry.path(), platform::syncFile(entry.path()));
  require(path_, platform::syncFolder(path_));
  if (fs::exists(target_)) fs::remove(target_);
  fs::rename(path_, target_);
  kept_ = true;
  require(target_.parent_path(), platform::syncFolder(target_.parent_path()));
}

}  // namespace convert
