#pragma once

#include <stdexcept>
#include <string>

namespace jet {

// A fault of the database layer. `number` is the engine's documented number:
//   3020 update without addNew or edit        3021 no current record          3022 duplicate key
//   3024 file not found                       3027 read-only                   3051 file cannot be opened
//   3059 stopped by the operator              3061 unknown column in a statement
//   3075 syntax error                         3078 unknown table               3085 undefined function
//   3163 text longer than column              3167 record is deleted           3183 disk full
//   3260 locked by another copy               3265 unknown field               3343 unrecognised file format
//   3421 value cannot be converted            3151 connection to the server lost, or none
//   3000 any other fault
class Error : public std::runtime_error {
 public:
  Error(int number, const std::string& description, std::string statement = {})
      : std::runtime_error(description), number_(number), statement_(std::move(statement)) {}

  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] std::string description() const { return what(); }
  [[nodiscard]] const std::string& statement() const { return statement_; }  // may be empty
  // True when the operator stopped the work: nothing to complain about.
  [[nodiscard]] bool canceled() const { return number_ == kCanceled; }

  // True when the server cannot be reached (any more): the database has to be opened again.
  [[nodiscard]] bool connectionLost() const { return number_ == kConnectionLost; }

  static constexpr int kCanceled = 3059;
  static constexpr int kConnectionLost = 3151;

 private:
  int number_;
  std::string statement_;
};

}  // namespace jet
