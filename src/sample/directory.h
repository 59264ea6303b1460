#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sample {

// People and companies outside the exchange, made from pools of names; the same on every machine.

struct Contact {
  std::string name;
  std::string organization;
  std::string display;
  std::string address;
  std::string web;
  std::string email;
  int type;            // 0 none, 1 client, 2 special client, 3 competitor, 4 pirate, 5 collaborator
  std::string number;  // as dialled from the exchange
};

inline constexpr int kContacts = 150;
[[nodiscard]] Contact contact(int index);  // 0 .. kContacts-1
// The number alone, without building the rest.
[[nodiscard]] std::string contactNumber(int index);

struct Subscriber {
  std::string lastName;
  std::string firstName;
  std::string address;
  int number;  // after the prefix of its table
};

// A table of the phonebook. A number dialled from Bucharest reaches the search in one of three forms: abroad form, with
// the trunk prefix 0 after the own area code, or as a local number; each has its row in `map`.
struct PhonebookTable {
  std::string_view name;   // of the table
  std::string_view title;  // shown
  std::string_view areaCode;
};

inline constexpr int kSubscribersPerTable = 80;
[[nodiscard]] const std::vector<PhonebookTable>& phonebookTables();
[[nodiscard]] Subscriber subscriber(const PhonebookTable& table, int index);  // 0 .. kSubscribersPerTable-1

// The form that the searches use for a number dialled from this exchange: see the number normaliser.
[[nodiscard]] std::string normalised(std::string_view dialled);

}  // namespace sample
