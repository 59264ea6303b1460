#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "capture/site/site.h"

namespace tallymon {

// "--config FILE" of a command.
inline std::shared_ptr<std::string> addSiteOption(CLI::App& command) {
  auto file = std::make_shared<std::string>(capture::kStandardSiteFile);
  command.add_option("--config", *file, "The site file")->type_name("FILE")->capture_default_str();
  return file;
}

// The source of that id. Throws std::runtime_error naming those that there are.
const capture::SourceSite& sourceOf(const capture::Site& site, const std::string& id);

}  // namespace tallymon
