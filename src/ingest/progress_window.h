#pragma once

#include "ingest/exchange_parts.h"
#include "platform/progress.h"

namespace ingest {

// The progress of long work over the calls.
inline platform::Progress showUpdate(const ExchangeParts& parts, std::int64_t range) {
  return {parts.person, parts.language.Translate("IDS_UPDATE"), parts.language.Translate("IDS_UPDATING_DATABASE"),
          range};
}

}  // namespace ingest
