#include "convert/unfinished_place.h"

#include "base/printf.h"
#include "convert/conversion_error.h"

namespace convert {

UnfinishedPlace::UnfinishedPlace(const std::filesystem::path& target)
    : target_(schema::DatabasePlace::ofTyped(target)) {
  if (!target_.onServer()) {
    folder_ = std::make_unique<PartialFolder>(target);
    place_ = schema::DatabasePlace::ofFolder(folder_->path());
    return;
  }
  try {
    target_.askServer();
  } catch (const jet::Error& error) {
    throw ConversionError(error.description());
  }
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    if (!target_.exists(kind.which)) continue;
    throw ConversionError(
        base::format("%s exists already. Name another database of the server.", target_.describe(kind.which)));
  }
  place_ = target_.unfinished();
  removeAll();
}

UnfinishedPlace::~UnfinishedPlace() {
  if (folder_ == nullptr && !published_) removeAll();
}

void UnfinishedPlace::removeAll() const noexcept {
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) place_->remove(kind.which);
}

void UnfinishedPlace::publish() {
  if (folder_ != nullptr) {
    folder_->publish();
  } else {
    place_->rename(target_);
  }
  published_ = true;
}

}  // namespace convert
