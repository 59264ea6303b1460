#pragma once

#include <random>
#include <string>
#include <vector>

#include "database_fixture.h"
#include "jet/error.h"

namespace jet::test {

// For tests that answer each of many selects, put together by chance, in two ways: rows, their order and the types of
// their values must be the same.
class DifferentialTest : public DatabaseFixture {
 protected:
  const std::string& one(const std::vector<std::string>& choices) {
    return choices[std::uniform_int_distribution<std::size_t>(0, choices.size() - 1)(random_)];
  }

  static std::string shown(const Value& value) {
    return std::to_string(static_cast<int>(value.type())) + ":" + value.toText() + "|";
  }

  static std::string shown(const Snapshot& snapshot) {
    std::string text;
    for (std::size_t row = 0; row < snapshot.rowCount(); ++row) {
      for (std::size_t i = 0; i < snapshot.columns().size(); ++i) text += shown(snapshot.at(row, i));
      text += '\n';
    }
    return text;
  }

  // What `read` gives, or the number of its error.
  template <typename Read>
  static std::string answer(Read read) {
    try {
      return read();
    } catch (const Error& error) {
      return "error " + std::to_string(error.number());
    }
  }

  std::string streamed(const std::string& sql) {
    return answer([&] {
      std::string text;
      database_->forEachRow(sql, [&](const std::vector<Value>& row) {
        for (const Value& value : row) text += shown(value);
        text += '\n';
        return true;
      });
      return text;
    });
  }

  std::string snapshot(const std::string& sql) {
    return answer([&] { return shown(database_->openSnapshot(sql)); });
  }

  std::mt19937 random_{20250101};
};

}  // namespace jet::test
