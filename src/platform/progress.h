#pragma once

#include <cstdint>
#include <string_view>

#include "platform/operator.h"

namespace platform {

// Shows progress for as long as it lives. Inside the progress of other work it adds nothing.
class Progress {
 public:
  // A range of 0: no one knows how long it takes.
  Progress(Operator& person, std::string_view title, std::string_view text, std::int64_t range = 0)
      : person_(person.busy() ? nullptr : &person) {
    if (person_ != nullptr) person_->progressBegin(title, text, range);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (person_ != nullptr) person_->progressEnd();
  }

 private:
  Operator* person_;
};

}  // namespace platform
