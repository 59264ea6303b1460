#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "jet/table_rows.h"

namespace jet {

// One moment of databases on one server, with the numbers of their rows. Programs of the server's (pg_dump --snapshot)
// see the same moment while it lives. Errors are those of stored_database.h.
class ServerSnapshot {
 public:
  explicit ServerSnapshot(std::span<const std::filesystem::path> places);
  ServerSnapshot(const ServerSnapshot&) = delete;
  ServerSnapshot& operator=(const ServerSnapshot&) = delete;
  ~ServerSnapshot();

  [[nodiscard]] const std::string& name() const;
  [[nodiscard]] const std::string& server() const;  // as libpq takes it
  [[nodiscard]] const std::vector<std::string>& schemas() const;
  [[nodiscard]] const std::vector<TableRows>& rows() const;  // each table as "schema.table"

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace jet
