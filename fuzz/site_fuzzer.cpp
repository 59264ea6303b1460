// Any text as a site file: a site, or a SiteError. What a program changes in it is there afterwards, the rest is as it
// was, and a source that is taken away is gone.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "capture/site/section.h"
#include "capture/site/site.h"
#include "capture/site/site_json.h"
#include "capture/site/site_text.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void readAll(std::string_view text) {
  try {
    const capture::Site site = capture::readSiteText(text, "site.toml");
    require(!site.sources.empty() && site.keepDays > 0);
  } catch (const capture::SiteError&) {
  }
}

// False when there is no such source.
bool holdsSource(const capture::SiteText& text, const toml::table& wanted) {
  const toml::array* sources = text.tables()["source"].as_array();
  if (sources == nullptr) return false;
  for (const toml::node& element : *sources) {
    if (capture::tomlText(element) == capture::tomlText(wanted)) return true;
  }
  return false;
}

void change(const std::string& text) {
  try {
    capture::SiteText site(text, "site.toml");
    // Every table can be told to another program and taken back.
    static_cast<void>(capture::jsonOf(site.tables()));
    const toml::table alarms{{"free_mb", 300}, {"mail", "it@example.org"}};
    site.setTable("alarms", alarms);
    require(capture::tomlText(*site.tables().get("alarms")) == capture::tomlText(alarms));
    const toml::table source{{"id", "main"}, {"format", "hicom"}, {"listen", toml::table{{"port", 5001}}}};
    site.setSource(source);
    require(holdsSource(site, source));
    require(capture::tomlText(capture::parseSite(site.text(), "again")) == capture::tomlText(site.tables()));
    require(site.removeSource("main"));
  } catch (const capture::SiteError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  readAll(text);
  change(text);
  return 0;
}
