#pragma once

#include <filesystem>
#include <string>

namespace platform {

// The desktop's handler for documents and addresses.
class DocumentHandler {
 public:
  virtual ~DocumentHandler() = default;
  // False when there is nothing that could open (print) it.
  virtual bool open(const std::string& pathOrUrl) = 0;
  virtual bool print(const std::filesystem::path& document) = 0;
};

}  // namespace platform
