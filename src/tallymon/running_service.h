#pragma once

#include <sys/types.h>

#include "capture/site/site.h"

namespace tallymon {

// The process that delivers into the site's folder; 0 when none does.
[[nodiscard]] pid_t runningService(const capture::Site& site);

}  // namespace tallymon
