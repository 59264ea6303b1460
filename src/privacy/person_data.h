#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/subscriber.h"
#include "jet/database.h"

namespace privacy {

// Something that is stored about a person.
struct StoredItem {
  std::string place;  // "calls", "contacts", "log", "alarms", "hidden numbers" or "phonebook"
  std::int64_t id = 0;
  std::optional<base::DateTime> at;
  std::string text;
};

// Everything that is stored about one telephone number, in any form of it, or about one name. Files of the monitor and
// what imports left beside them are not looked at. All calls throw jet::Error.
class PersonData {
 public:
  // `person`: a number when it has digits and no letters, else a name as calls and contacts show it. `phonebook` may be
  // null. All must outlive this.
  PersonData(jet::Database& main, jet::Database* phonebook, const analysis::SubscriberNumbers& numbers,
             std::string_view person);

  // Calls first, each place in its own order.
  [[nodiscard]] std::vector<StoredItem> find();

  // Takes it away, in one transaction a database: numbers and names of calls, whose sums and areas stay; the contact,
  // the hidden number and the phonebook's entry; the words in log and alarms. The number of items. A phonebook that is
  // open read-only keeps its entry.
  std::int64_t erase();

 private:
  [[nodiscard]] bool isMeant(std::string_view number) const;
  [[nodiscard]] bool isNamed(std::string_view name) const;
  [[nodiscard]] bool isMentioned(const std::string& text) const;
  void findCalls(std::vector<StoredItem>& items);
  void findContacts(std::vector<StoredItem>& items);
  void findTexts(std::vector<StoredItem>& items, const char* place, const char* sql);
  void findHiddenNumbers(std::vector<StoredItem>& items);
  void findInPhonebook(std::vector<StoredItem>& items);
  void eraseTexts(const char* table);
  [[nodiscard]] std::vector<std::string> phonebookConditions();  // "[table] where ..."

  jet::Database& main_;
  jet::Database* phonebook_;
  const analysis::SubscriberNumbers& numbers_;
  std::string name_;                 // empty: a number is meant
  std::string key_;                  // of the number, in international form
  std::set<std::string> spellings_;  // of the number, as calls hold it
};

}  // namespace privacy
