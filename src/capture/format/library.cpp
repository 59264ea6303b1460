#include <toml++/toml.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include "capture/format/format.h"
#include "capture/format/loader.h"
#include "capture/format/toml_table.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr int kDeepestExtends = 8;

toml::table parseFile(const fs::path& path) {
  std::error_code fault;
  std::ifstream in;
  if (fs::is_regular_file(path, fault)) in.open(path, std::ios::binary);
  if (!in.is_open()) throw FormatError("cannot open " + path.string());
  std::string text(kLargestFile + 1, '\0');
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(in.gcount()));
  if (text.size() > kLargestFile) throw FormatError(path.string() + " is too large for a format file");
  try {
    return toml::parse(text, path.string());
  } catch (const toml::parse_error& error) {
    const toml::source_position& place = error.source().begin;
    throw FormatError(path.string() + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                      std::string(error.description()));
  }
}

// Puts the keys of `over` into `under`: tables key by key, anything else in place of what was there. The values are
// moved, since a copy would not know its place in the file.
void overlay(toml::table& under, toml::table&& over) {
  for (auto&& [key, node] : over) {
    toml::node* there = under.get(key.str());
    if (there != nullptr && there->is_table() && node.is_table()) {
      overlay(*there->as_table(), std::move(*node.as_table()));
    } else {
      node.visit([&under, &name = key](auto& value) { under.insert_or_assign(name.str(), std::move(value)); });
    }
  }
}

// The folder of the program that runs; empty when the system does not tell.
fs::path programFolder() {
  std::error_code fault;
  return fs::read_symlink("/proc/self/exe", fault).parent_path();
}

fs::path inFolder(const fs::path& folder, std::string_view name) {
  return folder / (std::string(name) + ".toml");
}

class TableFinder {
 public:
  explicit TableFinder(const std::vector<fs::path>& folders) : folders_(folders) {}

  // The table of a file with what it extends beneath. A file that extends its own name means the next folder's.
  toml::table read(const fs::path& path, int depth) const {
    toml::table table = parseFile(path);
    const toml::node* extends = table.get("extends");
    if (extends == nullptr) return table;
    if (depth > kDeepestExtends) failAt(*extends, "too many formats extend each other");
    toml::table whole = read(find(textOf(*extends), path, extends), depth + 1);
    // The stock format's own tests speak of the stock format.
    whole.erase("test");
    if (table.get("name") == nullptr) whole.insert_or_assign("name", path.stem().string());
    overlay(whole, std::move(table));
    return whole;
  }

  // The first file of that name that is not `except`.
  fs::path find(std::string_view name, const fs::path& except, const toml::node* place) const {
    if (name.find('/') == std::string_view::npos) {
      for (const fs::path& folder : folders_) {
        std::error_code fault;
        const fs::path path = inFolder(folder, name);
        if (fs::is_regular_file(path, fault) && !(!except.empty() && fs::equivalent(path, except, fault))) return path;
      }
    }
    const std::string message = "there is no format '" + std::string(name) + "'; `tallymon formats` lists them";
    if (place != nullptr) failAt(*place, message);
    throw FormatError(message);
  }

 private:
  const std::vector<fs::path>& folders_;
};

}  // namespace

FormatLibrary FormatLibrary::standard() {
  std::vector<fs::path> folders = {"/etc/tallymon/formats"};
  const fs::path program = programFolder();
  std::error_code fault;
  folders.push_back(fs::is_directory(program / "formats", fault) ? program / "formats"
                                                                 : program.parent_path() / "share/tallymon/formats");
  return FormatLibrary(std::move(folders));
}

std::vector<std::string> FormatLibrary::names() const {
  std::set<std::string> names;
  for (const fs::path& folder : folders_) {
    std::error_code fault;
    for (const auto& entry : fs::directory_iterator(folder, fault)) {
      if (entry.path().extension() == ".toml") names.insert(entry.path().stem().string());
    }
  }
  return {names.begin(), names.end()};
}

std::shared_ptr<const Format> FormatLibrary::load(std::string_view name) const {
  const TableFinder finder(folders_);
  const bool isPath = name.find('/') != std::string_view::npos || name.ends_with(".toml");
  return loadFormat(finder.read(isPath ? fs::path(name) : finder.find(name, {}, nullptr), 0));
}

std::shared_ptr<const Format> FormatLibrary::parse(std::string_view text) {
  try {
    return loadFormat(toml::parse(text));
  } catch (const toml::parse_error& fault) {
    const toml::source_position& place = fault.source().begin;
    throw FormatError("format:" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                      std::string(fault.description()));
  }
}

}  // namespace capture
