#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/engine/driver.h"
#include "jet/postgres/connection.h"

namespace jet::postgres {

// The rows of one run of a select, as they arrive or, as soon as the connection is needed for something else, from
// memory.
class Rows final : private Reader {
 public:
  explicit Rows(Connection& connection) : connection_(connection) {}
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows() override { end(); }

  // With `many`, rows are handed on as they arrive.
  void start(Prepared& statement, const Parameters& parameters, bool many, std::string_view text);
  // Of a COPY in binary form, whose columns have these types.
  void startCopy(const std::string& statement, const std::vector<Type>& types);
  bool next();
  // Of the current row, until the next one.
  [[nodiscard]] engine::Cell cell(std::size_t column) const;
  [[nodiscard]] std::int64_t integer(std::size_t column) const { return cell(column).integer; }
  [[nodiscard]] std::int64_t count() const { return count_; }
  void end() noexcept;

 private:
  struct Field {
    bool null = true;
    std::string_view bytes;
  };

  void takeRest() override;
  void keepRest();
  void learnTypes(const PGresult* result);
  void keep(const PGresult* result);
  bool nextKept();
  bool nextArrived();
  static Field fieldOf(const PGresult* result, int row, int column);
  void keepField(const Field& field);
  void readRow(const PGresult* result, int row);
  bool nextCopied();
  bool readCopied();

  Connection& connection_;
  bool arriving_ = false;
  bool copying_ = false;  // arriving by COPY
  CopiedRow copied_;
  bool head_ = false;  // before the first row of a COPY
  Result result_;
  int row_ = 0;
  std::string kept_;  // rows: for each field its length (-1: Null) and its bytes
  std::size_t place_ = 0;
  std::optional<Error> fault_;  // after the rows that are kept
  std::vector<Oid> types_;
  std::vector<Field> fields_;
  mutable std::vector<std::string> texts_;  // of cells whose form is another than the server's
  std::int64_t count_ = 0;
};

}  // namespace jet::postgres
