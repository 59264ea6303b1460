#include "contacts/contact.h"

#include "base/printf.h"

namespace contacts {

CONTACTENTRYDESC readContact(jet::Recordset& row) {
  CONTACTENTRYDESC contact;
  contact.recordId = static_cast<std::int32_t>(row.get("RecordID").toLong());
  contact.tip = static_cast<std::int32_t>(row.get("Tip").toLong());
  for (const ContactTextField& field : kContactTextFields) contact.*field.member = row.get(field.column).toText();
  return contact;
}

std::string displayName(const CONTACTENTRYDESC& contact) {
  if (contact.organization.empty()) return contact.name;
  if (contact.name.empty()) return contact.organization;
  return base::format("%s (%s)", contact.name, contact.organization);
}

}  // namespace contacts
