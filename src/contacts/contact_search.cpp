#include "contacts/contact_search.h"

#include <array>
#include <fstream>

#include "base/codepage.h"
#include "base/printf.h"
#include "base/text.h"

namespace contacts {

namespace {

constexpr std::int32_t kDefaultLimit = 100;
constexpr std::size_t kNameLimit = 255;
constexpr int kPageCodepage = 1252;

std::string nameGroup(std::string_view word, bool prefixMode) {
  if (prefixMode) {
    return base::format("(%s LIKE \"%s*\"", "Name", word) + base::format(" OR %s LIKE \"%s*\"", "Organization", word) +
           ")";
  }
  return base::format("(%s LIKE \"*%s*\"", "Name", word) + base::format(" OR %s LIKE \"*%s*\"", "Organization", word) +
         ")";
}

struct PageColumn {
  const char* align;
  const char* captionKey;
  std::string SearchMatch::*text;
};
constexpr std::array<PageColumn, 3> kPageColumns = {{
    {"left", "IDS_NAME", &SearchMatch::displayName},
    {"left", "IDS_ADDRESS", &SearchMatch::address},
    {"right", "IDS_PHONE_NUMBERS", &SearchMatch::telView},
}};

std::string pageCell(std::string_view text) {
  return base::encodeHtml(base::escapeHtml(text), kPageCodepage);
}

}  // namespace

std::string buildSearchCondition(const SearchInput& input, bool prefixMode) {
  std::string condition;
  for (const std::string& word : base::split(input.name.substr(0, kNameLimit), " ")) {
    if (!condition.empty()) condition += " AND ";
    condition += nameGroup(word, prefixMode);
  }
  if (!input.telephone.empty()) {
    condition = condition.empty() ? base::format("%s Tel_String LIKE \"*%s*\"", condition, input.telephone)
                                  : base::format("%s AND Tel_String LIKE \"*%s*\"", condition, input.telephone);
  }
  if (!input.address.empty()) {
    condition = condition.empty() ? base::format("%s Address LIKE \"*%s*\"", condition, input.address)
                                  : base::format("%s AND Address LIKE \"*%s*\"", condition, input.address);
  }
  return condition;
}

SearchResult searchContacts(const SearchInput& input, ContactsManager& contacts, foundation::ConfigManager& config) {
  SearchResult result;
  const bool prefixMode = config.ReadConfigInt("PhonebookSearchMethod", "general", foundation::StoreMachine, 0) == 1;
  const std::string condition = buildSearchCondition(input, prefixMode);
  if (condition.empty()) return result;
  const auto limit = static_cast<std::size_t>(
      std::max(0, config.ReadConfigInt("iface_searchmaxresults", "general", foundation::StoreMachine, kDefaultLimit)));
  jet::Recordset& rows = contacts.recordset();
  for (rows.findFirst(condition); !rows.noMatch(); rows.findNext(condition)) {
    if (result.matches.size() == limit) {
      result.tooMany = true;
      break;
    }
    const Contact contact = readContact(rows);
    result.matches.push_back({displayName(contact), contact.address, contact.telView, contact.recordId});
  }
  return result;
}

std::optional<std::filesystem::path> writeSearchPage(const SearchResult& result,
                                                     const foundation::LanguageFile& language,
                                                     const std::filesystem::path& folder) {
  const std::filesystem::path file = folder / "cautare.html";
  // A link in this place would lead the page into somebody else's file.
  std::error_code ignored;
  if (std::filesystem::is_symlink(file, ignored)) return std::nullopt;
  std::ofstream page(file, std::ios::binary | std::ios::trunc);
  if (!page) return std::nullopt;
  page << base::format(
      "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"><title>%s</title></head>"
      "<body style='font-family: Verdana; border-bottom-style: solid; border-bottom-width: thin; "
      "border-bottom-color: Black;'>",
      pageCell(language.Translate("IDS_SEARCH_RESULTS")));
  page << "<table><tr>";
  for (const PageColumn& column : kPageColumns) {
    page << base::format("<th align=%s>%s</th>", column.align, pageCell(language.Translate(column.captionKey)));
  }
  page << "</tr>";
  for (const SearchMatch& match : result.matches) {
    page << "<tr>";
    for (const PageColumn& column : kPageColumns) {
      page << base::format("<td align=%s>%s</td>", column.align, pageCell(match.*column.text));
    }
    page << "</tr>";
  }
  page << "</table>"
       << "</body></html>";
  page.close();
  if (!page) return std::nullopt;
  return file;
}

}  // namespace contacts
