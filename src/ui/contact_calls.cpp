#include "ui/contact_calls.h"

#include "analysis/call_scope.h"
#include "analysis/subscriber.h"
#include "base/printf.h"
#include "base/text.h"

namespace ui {

namespace {

// Numbers of at most so many digits are extensions and services: they are parts of anybody's number.
constexpr int kLongestShortNumber = 3;

}  // namespace

std::string textLiteral(std::string_view text) {
  return "'" + base::replaceAll(std::string(text), "'", "''") + "'";
}

folders::Narrowing callsOf(const contacts::CONTACTENTRYDESC& contact) {
  std::string criteria;
  if (!contact.contact.empty()) criteria = "Name = " + textLiteral(contact.contact);
  if (!contact.telString.empty()) {
    criteria += criteria.empty() ? "" : " Or ";
    criteria += base::format("(Len(DialNumber) > %d And InStr(%s, DialNumber) > 0)", kLongestShortNumber,
                             textLiteral(contact.telString));
  }
  return {criteria.empty() ? "1=0" : criteria, contacts::displayName(contact)};
}

std::optional<contacts::CONTACTENTRYDESC> contactWithNumber(server::CServerDoc& document, const std::string& number) {
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

folders::Narrowing callsWithNumberOf(server::CServerDoc& document, std::int64_t recordId, const std::string& shown) {
  jet::Database& main = document.database();
  const std::string itself = base::format("RecordID = %d", recordId);
  const jet::Snapshot call = main.openSnapshot("select DialNumber from Calls where " + itself);
  const exchange::PartyDefinitions& parties = document.smdr().parties();
  const analysis::SubscriberNumbers subscribers(parties.countryCode, parties.areaCode);
  const std::string key = call.empty() ? std::string() : subscribers.key(call.at(0, 0).toText());
  if (key.empty()) return {itself, shown};
  std::string spellings;
  main.forEachRow(
      "select distinct(DialNumber) from Calls where " + analysis::activeScope(document.callFilter()).visible,
      [&](const std::vector<jet::Value>& row) {
        const std::string number = row[0].toText();
        if (subscribers.key(number) == key) {
          spellings += (spellings.empty() ? "" : " Or ") + ("DialNumber = " + textLiteral(number));
        }
        return true;
      });
  return {spellings.empty() ? itself : spellings, shown};
}

}  // namespace ui
