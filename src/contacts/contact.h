#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "jet/recordset.h"

namespace contacts {

inline constexpr const char* kContactsTable = "Contacts";
inline constexpr std::int32_t kLastRelationship = 5;

// One row of table `Contacts`: a person or company of the organization's address book.
struct CONTACTENTRYDESC {
  std::int32_t recordId = 0;
  std::string name;          // the person
  std::string organization;  // the company
  std::string contact;       // display name, shown as the name of calls
  std::string note;
  std::int32_t tip = 0;  // relationship: 0 none, 1 client, 2 special client, 3 competitor, 4 pirate, 5 collaborator
  std::string address;
  std::string web;
  std::string email;
  std::string telView;    // numbers as shown
  std::string telString;  // numbers as searched
  std::string tel;        // the first number

  bool operator==(const CONTACTENTRYDESC&) const = default;
};

// The text columns and where they are in a CONTACTENTRYDESC: one table for reading, writing, the command line and the
// sheet.
struct ContactTextField {
  std::string_view column;
  std::string CONTACTENTRYDESC::*member;
};
inline constexpr std::array<ContactTextField, 10> kContactTextFields = {{
    {"Name", &CONTACTENTRYDESC::name},
    {"Organization", &CONTACTENTRYDESC::organization},
    {"Contact", &CONTACTENTRYDESC::contact},
    {"Note", &CONTACTENTRYDESC::note},
    {"Address", &CONTACTENTRYDESC::address},
    {"Web", &CONTACTENTRYDESC::web},
    {"Email", &CONTACTENTRYDESC::email},
    {"Tel_View", &CONTACTENTRYDESC::telView},
    {"Tel_String", &CONTACTENTRYDESC::telString},
    {"Tel", &CONTACTENTRYDESC::tel},
}};

// The current row of a recordset over the table.
CONTACTENTRYDESC readContact(jet::Recordset& row);

// "%s (%s)" of name and organization when both are there, otherwise whichever is.
std::string displayName(const CONTACTENTRYDESC& contact);

}  // namespace contacts
