#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "convert/partial_folder.h"
#include "schema/database_place.h"

namespace convert {

// New databases that get their names only when all of them are whole: those of a new folder (PartialFolder), or on a
// server, where they are schemas with other names until then. What a killed run left there is cleared away by the next.
class UnfinishedPlace {
 public:
  // `target`: a folder, or the address of a server. Throws ConversionError when there are databases already, or the
  // server does not answer.
  explicit UnfinishedPlace(const std::filesystem::path& target);
  UnfinishedPlace(const UnfinishedPlace&) = delete;
  UnfinishedPlace& operator=(const UnfinishedPlace&) = delete;
  ~UnfinishedPlace();

  // Where they are being made.
  [[nodiscard]] const schema::DatabasePlace& place() const { return *place_; }
  // For files beside them; null on a server.
  [[nodiscard]] const PartialFolder* folder() const { return folder_.get(); }

  // No process may have the databases open. Throws filesystem_error, jet::Error.
  void publish();

 private:
  void removeAll() const noexcept;

  schema::DatabasePlace target_;
  std::unique_ptr<PartialFolder> folder_;
  std::optional<schema::DatabasePlace> place_;
  bool published_ = false;
};

}  // namespace convert
