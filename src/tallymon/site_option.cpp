#include "tallymon/site_option.h"

#include <stdexcept>

namespace tallymon {

const capture::SourceSite& sourceOf(const capture::Site& site, const std::string& id) {
  std::string known;
  for (const capture::SourceSite& source : site.sources) {
    if (source.id == id) return source;
    known += (known.empty() ? "" : ", ") + source.id;
  }
  throw std::runtime_error("There is no source \"" + id + "\" in the site file; it has: " + known);
}

}  // namespace tallymon
