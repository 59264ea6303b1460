#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "contacts/contacts_manager.h"
#include "platform/document_handler.h"

namespace contacts {

struct SearchInput {
  std::string name;  // words separated by blanks, 255 characters at most
  std::string telephone;
  std::string address;
};

struct SearchMatch {
  std::string displayName;
  std::string address;
  std::string telView;
  std::int32_t recordId = 0;
};

struct SearchResult {
  std::vector<SearchMatch> matches;  // at most "iface_searchmaxresults"
  bool tooMany = false;              // there were more
};

// False for inputs with a quotation mark, which would end the texts of the condition.
bool searchable(const SearchInput& input);

// The condition over table `Contacts`; empty when all three inputs are empty. In prefix mode a word must begin the
// field.
std::string buildSearchCondition(const SearchInput& input, bool prefixMode);

// Runs the search; mode and limit come from the settings "PhonebookSearchMethod" (1 = prefix mode) and
// "iface_searchmaxresults" (100 when not stored). Throws jet::Error when the inputs are not searchable.
SearchResult searchContacts(const SearchInput& input, ContactsManager& contacts, foundation::ConfigManager& config);

// Writes the matches as "cautare.html" into `folder`; the file written, or nothing when it cannot be made. What is
// in its place, a link too, is replaced.
std::optional<std::filesystem::path> writeSearchPage(const SearchResult& result,
                                                     const foundation::LanguageFile& language,
                                                     const std::filesystem::path& folder);

}  // namespace contacts
