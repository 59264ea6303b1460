#pragma once

#include <filesystem>

// The real files of the old program in tests/data.
inline std::filesystem::path jetFiles() {
  return std::filesystem::path(TALLYBOOK_SOURCE_DIR) / "tests" / "data" / "jet-files";
}

// Makes the folder of an old installation; `main` is "text-extension" or "long-extension".
inline void makeOldFolder(const std::filesystem::path& folder, const char* main) {
  std::filesystem::create_directories(folder);
  std::filesystem::copy_file(jetFiles() / main / "tallybook.mdb", folder / "Tallybook.MDB");
  std::filesystem::copy_file(jetFiles() / "tariffs.mdb", folder / "tariffs.mdb");
  std::filesystem::copy_file(jetFiles() / "phonebook.mdb", folder / "phonebook.mdb");
}
