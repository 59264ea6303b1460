#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact.h"

namespace contacts {

// vCard 3.0 text (UTF-8, CRLF, folded lines) of the contacts. Several telephone numbers become several TEL lines.
std::string writeVCards(const std::vector<CONTACTENTRYDESC>& contacts);

struct VCardImport {
  std::vector<CONTACTENTRYDESC> contacts;  // recordId and telString are left for the store to fill
  std::vector<std::string> problems;       // one sentence for each card that could not be taken, with its line number
};

// Reads vCard 2.1, 3.0 and 4.0: N, FN, ORG, TEL, EMAIL, ADR, URL, NOTE and the relationship that writeVCards keeps;
// other properties are passed over. A card without a name and an organization is a problem. Any bytes are survived.
VCardImport readVCards(std::string_view text);

}  // namespace contacts
