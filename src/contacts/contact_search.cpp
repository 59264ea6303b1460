#include "contacts/contact_search.h"

#include <array>
#include <system_error>

#include "base/characters.h"
#include "base/printf.h"
#include "base/text.h"
#include "folders/report_file.h"

namespace contacts {

namespace {

constexpr std::size_t kNameLimit = 255;

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
    {"left", "IDS_PHONE_NUMBERS", &SearchMatch::telView},
}};

}  // namespace

bool searchable(const SearchInput& input) {
  return (input.name + input.telephone + input.address).find('"') == std::string::npos;
}

std::string buildSearchCondition(const SearchInput& input, bool prefixMode) {
  std::string condition;
  for (const std::string& word : base::split(base::firstCharacters(input.name, kNameLimit), " ")) {
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
  const bool prefixMode = config.ReadConfigInt(foundation::keys::PhonebookSearchMethod) == 1;
  const std::string condition = buildSearchCondition(input, prefixMode);
  if (condition.empty()) return result;
  const auto limit =
      static_cast<std::size_t>(std::max(0, config.ReadConfigInt(foundation::keys::iface_searchmaxresults)));
  jet::Recordset& rows = contacts.recordset();
  for (rows.findFirst(condition); !rows.noMatch(); rows.findNext(condition)) {
    if (result.matches.size() == limit) {
      result.tooMany = true;
      break;
    }
    const CONTACTENTRYDESC contact = readContact(rows);
    result.matches.push_back({displayName(contact), contact.address, contact.telView, contact.recordId});
  }
  return result;
}

std::optional<std::filesystem::path> writeSearchPage(const SearchResult& result,
                                                     const foundation::LanguageFile& language,
                                                     const std::filesystem::path& folder) try {
  const std::filesystem::path file = folder / "cautare.html";
  folders::ReportFile page(file);
  page.writePage(base::format(
      "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"><title>%s</title></head>"
      "<body style='font-family: Verdana; border-bottom-style: solid; border-bottom-width: thin; "
      "border-bottom-color: Black;'>",
      base::escapeHtml(language.Translate("IDS_SEARCH_RESULTS"))));
  page.write("<table width=100% cellspacing=0 cellpadding=3 style='font-size:9.0pt; font-family: Verdana;'><tr>");
  for (const PageColumn& column : kPageColumns) {
    page.writePage(
        base::format("<th align=%s>%s</th>", column.align, base::escapeHtml(language.Translate(column.captionKey))));
  }
  page.write("</tr>");
  for (const SearchMatch& match : result.matches) {
    page.write("<tr>");
    for (const PageColumn& column : kPageColumns) {
      page.writePage(base::format("<td align=%s>%s</td>", column.align, base::escapeHtml(match.*column.text)));
    }
    page.write("</tr>");
  }
  page.write("</table></body></html>");
  page.commit();
  return file;
} catch (const std::system_error&) {
  return std::nullopt;
}

}  // namespace contacts
