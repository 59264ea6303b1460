#pragma once

#include "capture/site/section.h"
#include "capture/transport/settings.h"

namespace capture {

// Reads the one table of a source that says how its lines arrive (serial, listen, ...). Throws SiteError when there is
// none, more than one, or a fault in it.
[[nodiscard]] TransportSettings readTransport(Section& source);

}  // namespace capture
