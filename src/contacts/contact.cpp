#include "contacts/contact.h"

#include "base/printf.h"

namespace contacts {

Contact readContact(jet::Recordset& row) {
  Contact contact;
  contact.recordId = static_cast<std::int32_t>(row.get("RecordID").toLong());
  contact.tip = static_cast<std::int32_t>(row.get("Tip").toLong());
  for (const ContactTextField& field : kContactTextFields) contact.*field.member = row.get(field.column).toText();
  return contact;
}

std::string displayName(const Contact& contact) {
  if (contact.organization.empty()) return contact.name;
  if (contact.name.empty()) return contact.organization;
  return base::format("%s (%s)", contact.name, contact.organization);
}

}  // namespace contacts
