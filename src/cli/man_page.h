#pragma once

#include <CLI/CLI.hpp>
#include <iosfwd>
#include <span>
#include <string_view>

namespace cli {

// An entry of a list in the page: a file, a variable, an exit status.
struct ManItem {
  std::string_view name;
  std::string_view text;
};

// What a program's page says beyond its commands. Texts are plain; the writer takes care of troff.
struct ManPage {
  std::string_view summary;  // after the dash of NAME
  std::string_view description;
  std::span<const ManItem> exitStatus;
  std::span<const ManItem> environment;
  std::span<const ManItem> files;
  std::span<const std::string_view> seeAlso;  // names of section 1
};

// The page (section 1) of a program, with all its commands, options and examples: `program` is the very tree that
// parses the command line, so that they cannot differ.
void writeManPage(const CLI::App& program, const ManPage& page, std::ostream& out);

}  // namespace cli
