#pragma once

#include <filesystem>
#include <string>

namespace platform {

// What became of a document that was to be printed: somebody may have thought better of it.
enum class Printed { Done, Canceled, Refused };

// The desktop's handler for documents and addresses.
class DocumentHandler {
 public:
  virtual ~DocumentHandler() = default;
  // False when there is nothing that could open it.
  virtual bool open(const std::string& pathOrUrl) = 0;
  virtual Printed print(const std::filesystem::path& document) = 0;
};

}  // namespace platform
