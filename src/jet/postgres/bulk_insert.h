#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "jet/postgres/connection.h"
#include "jet/value.h"

namespace jet::postgres {

// Rows of one table on their way to the server within a transaction, by COPY: they are sent while the caller goes on,
// and are in the table before anything else is run. A fault of theirs breaks the transaction.
class BulkInsert final : private Bulk {
 public:
  // The key comes first among the columns of `copyStatement`; `numberingStatement` moves the numbering of the table to
  // $1. `types` are those of the values.
  BulkInsert(Connection& connection, std::string copyStatement, std::string numberingStatement,
             std::vector<Type> types);
  BulkInsert(const BulkInsert&) = delete;
  BulkInsert& operator=(const BulkInsert&) = delete;
  ~BulkInsert() override;

  void add(std::int64_t key, std::span<const Value* const> values);

 private:
  void finish() override;
  void forget() noexcept override;
  void append(const Value& value, Type type);

  Connection& connection_;
  std::string copyStatement_;
  std::string numberingStatement_;
  std::vector<Type> types_;
  std::string rows_;  // not sent yet, in the server's binary form
  bool sending_ = false;
  std::int64_t lastKey_ = 0;
};

}  // namespace jet::postgres
