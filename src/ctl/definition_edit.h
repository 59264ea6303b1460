#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "base/printf.h"
#include "ctl/context.h"
#include "foundation/definition_change.h"

namespace ctl {

// Help for the commands that edit the lists of definitions.

// Definitions are kept as texts with ";" between their fields, and in statements between apostrophes.
inline void requirePlain(std::string_view what, std::string_view value) {
  if (value.find_first_of(";'\"") != std::string_view::npos) {
    throw WrongUsage(base::format("%s may not hold a semicolon or a quotation mark: %s", what, value));
  }
}

// A code that entries are found by. An entry without one would be lost, or its next field taken for it, when the
// definitions are read again.
inline void requireCode(std::string_view what, std::string_view code) {
  if (code.empty()) throw WrongUsage(base::format("%s may not be empty.", what));
  requirePlain(what, code);
}

// A field of an entry: what was typed for the option, else what it was.
inline void takeOver(const Arguments& arguments, std::string_view option, std::string& field) {
  if (const auto typed = arguments.find(option)) {
    requirePlain(option, *typed);
    field = *typed;
  }
}

// The entry whose `field` is the code; added at the end when there is none.
template <typename Entry>
Entry& findOrAdd(std::vector<Entry>& entries, std::string Entry::*field, const std::string& code) {
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return e.*field == code; });
  if (found != entries.end()) return *found;
  Entry& entry = entries.emplace_back();
  entry.*field = code;
  return entry;
}

// Throws Failure when there is no such entry.
template <typename Entry>
void removeEntries(std::vector<Entry>& entries, std::string Entry::*field, const std::string& code,
                   std::string_view what) {
  if (std::erase_if(entries, [&](const Entry& e) { return e.*field == code; }) == 0) {
    throw Failure(base::format("There is no %s %s.", what, code));
  }
}

// The definitions as they are stored now, for a command to change and save. Throws Failure while the database can only
// be read.
class DefinitionEdit : public foundation::DefinitionChange<exchange::PartyDefinitions> {
 public:
  explicit DefinitionEdit(Context& context)
      : DefinitionChange(writable(context).parties(), context.main(), tariffsOf(context)) {}

 private:
  static Context& writable(Context& context) {
    context.requireWritable();
    return context;
  }
  static jet::Database* tariffsOf(Context& context) {
    tariff::TariffDatabase* const tariffs = context.document().smdr().tariffs();
    return tariffs == nullptr ? nullptr : &tariffs->database();
  }
};

}  // namespace ctl
