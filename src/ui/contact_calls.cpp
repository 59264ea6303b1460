#include "ui/contact_calls.h"

#include "base/printf.h"
#include "base/text.h"

namespace ui {

namespace {

// Numbers of at most so many digits are extensions and services: they are parts of anybody's number.
constexpr int kLongestShortNumber = 3;

std::string textLiteral(std::string_view text) {
  return "'" + base::replaceAll(std::string(text), "'", "''") + "'";
}

}  // namespace

folders::Narrowing callsOf(const contacts::Contact& contact) {
  std::string criteria;
  if (!contact.contact.empty()) criteria = "Name = " + textLiteral(contact.contact);
  if (!contact.telString.empty()) {
    criteria += criteria.empty() ? "" : " Or ";
    criteria += base::format("(Len(DialNumber) > %d And InStr(%s, DialNumber) > 0)", kLongestShortNumber,
                             textLiteral(contact.telString));
  }
  return {criteria.empty() ? "1=0" : criteria, contacts::displayName(contact)};
}

std::optional<contacts::Contact> contactWithNumber(server::CServerDoc& document, const std::string& number) {
  std::string any;
  for (const std::string& form : base::split(document.contactBook().searchedNumbers(number), " ")) {
    if (form.size() <= static_cast<std::size_t>(kLongestShortNumber)) continue;
    any += (any.empty() ? "" : " Or ") + base::format("Tel_String LIKE '*%s*'", form);
  }
  if (any.empty()) return std::nullopt;
  const jet::Snapshot rows = document.database().openSnapshot("select RecordID from Contacts where " + any);
  if (rows.empty()) return std::nullopt;
  return document.contactBook().find(static_cast<std::int32_t>(rows.at(0, 0).toLong()));
}

}  // namespace ui
