#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/table.h"

namespace ctl {

class Context;

// The command could not be done; the text says what happened and what to do. Exit status 1.
class Failure : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The command line makes no sense. Exit status 2.
class WrongUsage : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class Takes {
  Nothing,  // a switch
  One,
  Maybe,  // an option that may come without a value
  Many,   // one or more words, positional only
};

// An option ("--limit") or, without dashes, a positional argument ("NUMBER").
struct OptionSpec {
  std::string_view name;
  Takes takes = Takes::One;
  std::string_view help;
  bool required = false;
  std::string_view valueName = {};  // shown in the help; "TEXT" when empty
};

// What the user typed for the options of one command.
class Arguments {
 public:
  void set(std::string_view name, std::vector<std::string> values) {
    values_.insert_or_assign(std::string(name), values);
  }

  [[nodiscard]] bool has(std::string_view name) const { return values_.find(name) != values_.end(); }
  [[nodiscard]] std::optional<std::string> find(std::string_view name) const;
  [[nodiscard]] std::string text(std::string_view name, std::string_view fallback = {}) const;
  [[nodiscard]] const std::vector<std::string>& all(std::string_view name) const;
  // A whole number within [least, most]; throws WrongUsage otherwise.
  [[nodiscard]] std::int64_t integer(std::string_view name, std::int64_t fallback, std::int64_t least,
                                     std::int64_t most) const;
  [[nodiscard]] double number(std::string_view name, double fallback) const;
  // "YYYY-MM-DD" or "YYYY-MM-DD HH:MM[:SS]"; throws WrongUsage otherwise.
  [[nodiscard]] std::optional<base::DateTime> date(std::string_view name) const;

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

// Options before or after any command.
struct GlobalOptions {
  std::optional<std::string> store;
  std::optional<std::string> profile;
  std::optional<std::string> user;
  TableFormat format = TableFormat::Text;
};

// What a command runs with.
struct Invocation {
  const GlobalOptions& global;
  const Arguments& arguments;
  Context& context;
  std::ostream& out;

  void print(const Table& table) const { table.print(out, global.format); }
};

enum class Duty {
  Administer,  // reads or changes settings and lists, beside a running copy
  Import,      // the machine's one copy: maintenance and the output port too
  Serve,       // the same, with the first import of the start; no one is asked anything
};

// The right that a command needs; object 0: none, and the databases stay closed unless the command opens them.
struct Access {
  int object = 0;
  int right = 0;
  Duty duty = Duty::Administer;
};

struct Command {
  std::string_view name;  // its words: "currency set"
  std::string_view summary;
  std::string_view examples;  // whole command lines, one a line
  std::span<const OptionSpec> options;
  Access access;
  int (*run)(const Invocation&);  // the exit status
};

// A first word that several commands share.
struct CommandGroup {
  std::string_view name;
  std::string_view summary;
};

}  // namespace ctl
