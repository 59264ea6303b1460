#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <set>
#include <system_error>
#include <tuple>

#include "base/printf.h"
#include "base/text.h"
#include "contacts/contact_search.h"
#include "contacts/vcard.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "folders/report_file.h"
#include "folders/report_page.h"
#include "security/masks.h"

namespace ctl {

namespace contact_commands {

namespace fs = std::filesystem;
using contacts::CONTACTENTRYDESC;
using contacts::ContactsManager;

constexpr std::int64_t kMostId = std::numeric_limits<std::int32_t>::max();

std::vector<CONTACTENTRYDESC> allContacts(ContactsManager& book) {
  std::vector<CONTACTENTRYDESC> all;
  jet::Recordset& rows = book.recordset();
  for (rows.moveFirst(); !rows.eof(); rows.moveNext()) all.push_back(contacts::readContact(rows));
  return all;
}

// Who sees numbers in part only would write them so.
void requireChangeable(const Invocation& call) {
  call.context.requireWritable();
  security::requireUnmasked(call.context.document().user(), call.context.language());
}

int list(const Invocation& call) {
  const folders::ValueFormatter& formatter = call.context.document().valueFormatter();
  Table table({"ID", "Name", "Organization", "Contact", "Relationship", "Web", "Email", "Numbers"});
  for (const CONTACTENTRYDESC& contact : allContacts(call.context.document().contactBook())) {
    table.add({std::int64_t{contact.recordId}, contact.name, contact.organization, contact.contact,
               formatter.contactTypeName(contact.tip), contact.web, contact.email, contact.telView});
  }
  call.print(table);
  return 0;
}

// Where the options of add and edit go.
struct FieldOption {
  std::string_view option;
  std::string CONTACTENTRYDESC::*member;
};
constexpr FieldOption kFieldOptions[] = {
    {"--name", &CONTACTENTRYDESC::name},       {"--organization", &CONTACTENTRYDESC::organization},
    {"--contact", &CONTACTENTRYDESC::contact}, {"--note", &CONTACTENTRYDESC::note},
    {"--address", &CONTACTENTRYDESC::address}, {"--web", &CONTACTENTRYDESC::web},
    {"--email", &CONTACTENTRYDESC::email},     {"--phones", &CONTACTENTRYDESC::telView},
};

const std::string& usualDisplayName(const CONTACTENTRYDESC& contact) {
  return contact.name.empty() ? contact.organization : contact.name;
}

void fillNumbers(CONTACTENTRYDESC& contact, ContactsManager& book) {
  contact.telString = book.searchedNumbers(contact.telView);
  const std::vector<std::string> numbers = base::split(contact.telView, ",;/\r\n");
  contact.tel = numbers.empty() ? std::string() : std::string(base::trim(numbers.front()));
}

// Takes over what was typed. Calls show the display name, so it follows a name that it repeated.
void takeOver(CONTACTENTRYDESC& contact, const Arguments& arguments, ContactsManager& book) {
  const bool repeatsName = contact.contact == usualDisplayName(contact);
  for (const FieldOption& field : kFieldOptions) {
    if (const auto typed = arguments.find(field.option)) contact.*field.member = *typed;
  }
  contact.tip =
      static_cast<std::int32_t>(arguments.integer("--relationship", contact.tip, 0, contacts::kLastRelationship));
  if (repeatsName && !arguments.has("--contact")) contact.contact = usualDisplayName(contact);
  if (usualDisplayName(contact).empty()) throw WrongUsage("A contact needs a name or an organization.");
  if (arguments.has("--phones")) fillNumbers(contact, book);
}

int add(const Invocation& call) {
  requireChangeable(call);
  ContactsManager& book = call.context.document().contactBook();
  CONTACTENTRYDESC contact;
  takeOver(contact, call.arguments, book);
  call.out << base::format("added contact %d\n", book.add(contact));
  return 0;
}

CONTACTENTRYDESC contactOf(const Invocation& call) {
  const auto id = static_cast<std::int32_t>(call.arguments.integer("ID", 0, 0, kMostId));
  const auto found = call.context.document().contactBook().find(id);
  if (!found) throw Failure(base::format("There is no contact %d.", id));
  return *found;
}

int done(ContactsManager& book, contacts::SaveResult result) {
  if (result == contacts::SaveResult::Done) return 0;
  throw Failure(book.message(result));
}

int edit(const Invocation& call) {
  requireChangeable(call);
  ContactsManager& book = call.context.document().contactBook();
  const CONTACTENTRYDESC original = contactOf(call);
  CONTACTENTRYDESC edited = original;
  takeOver(edited, call.arguments, book);
  return done(book, book.save(original, edited));
}

int remove(const Invocation& call) {
  requireChangeable(call);
  ContactsManager& book = call.context.document().contactBook();
  return done(book, book.remove(contactOf(call)));
}

// Writes the page of the matches and opens it.
void showPage(const Invocation& call, const contacts::SearchResult& result) {
  const foundation::LanguageFile& texts = call.context.language();
  const fs::path folder = folders::listReportFile(call.context.config(), fs::current_path()).parent_path();
  const auto page = contacts::writeSearchPage(result, texts, folder);
  if (!page) throw Failure(texts.Translate("IDS_TARIF_CANTCREATETEMPFILE"));
  if (!call.context.app().surroundings().documents.open(fs::absolute(*page).string())) {
    throw Failure(base::format("%s was written, but no program opened it (xdg-open).", page->string()));
  }
}

int search(const Invocation& call) {
  const contacts::SearchInput input{call.arguments.text("--name"), call.arguments.text("--phone"),
                                    call.arguments.text("--address")};
  if (input.name.empty() && input.telephone.empty() && input.address.empty()) {
    throw WrongUsage("Give --name, --phone or --address.");
  }
  if (!searchable(input)) throw Failure(call.context.language().Translate("IDS_SEARCH_UNUSABLE"));
  server::CServerDoc& document = call.context.document();
  const contacts::SearchResult result = searchContacts(input, document.contactBook(), call.context.config());
  Table table({"ID", "Name", "Address", "Numbers"});
  for (const contacts::SearchMatch& match : result.matches) {
    table.add({std::int64_t{match.recordId}, match.displayName, match.address, match.telView});
  }
  call.print(table);
  // Beside a table for programs the count would be in the way.
  std::ostream& count = call.global.format == TableFormat::Text ? call.out : std::cerr;
  count << base::format(call.context.language().Translate("IDS_CONTACTSRECORDSFOUND"), result.matches.size()) << '\n';
  if (result.tooMany) call.context.person().messageBox(call.context.language().Translate("IDS_TOO_MANY_RESULTS"));
  if (call.arguments.has("--open")) showPage(call, result);
  return 0;
}

int exportCards(const Invocation& call) {
  const std::string cards = writeVCards(allContacts(call.context.document().contactBook()));
  const std::string file = call.arguments.text("FILE");
  if (file.empty()) {
    call.out << cards;
    return 0;
  }
  try {
    folders::ReportFile out(file);
    out.write(cards);
    out.commit();
  } catch (const std::system_error&) {
    throw Failure(base::format("%s cannot be written.", file));
  }
  return 0;
}

contacts::VCardImport readCards(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw Failure(base::format("%s cannot be read.", file));
  contacts::VCardImport cards = contacts::readVCards(std::string(std::istreambuf_iterator<char>(in), {}));
  if (cards.contacts.empty() && cards.problems.empty()) throw Failure(base::format("%s holds no vCard.", file));
  return cards;
}

// A card of somebody with the same names and numbers as a contact is that contact.
std::tuple<std::string, std::string, std::string> identity(const CONTACTENTRYDESC& contact) {
  return {contact.name, contact.organization, contact.telView};
}

int importCards(const Invocation& call) {
  requireChangeable(call);
  contacts::VCardImport cards = readCards(call.arguments.text("FILE"));
  ContactsManager& book = call.context.document().contactBook();
  std::set<std::tuple<std::string, std::string, std::string>> known;
  for (const CONTACTENTRYDESC& contact : allContacts(book)) known.insert(identity(contact));
  std::int64_t added = 0;
  jet::Transaction transaction(call.context.main());
  for (CONTACTENTRYDESC& contact : cards.contacts) {
    if (!known.insert(identity(contact)).second) continue;
    if (contact.contact.empty()) contact.contact = usualDisplayName(contact);
    fillNumbers(contact, book);
    book.add(contact);
    ++added;
  }
  transaction.commit();
  call.out << base::format("added %d contacts, %d were there already\n", added,
                           static_cast<std::int64_t>(cards.contacts.size()) - added);
  for (const std::string& problem : cards.problems) std::cerr << problem << '\n';
  if (!cards.problems.empty()) throw Failure(base::format("%d cards could not be taken.", cards.problems.size()));
  return 0;
}

constexpr OptionSpec kId = {.name = "ID", .help = "Number of the contact", .required = true, .valueName = "ID"};
constexpr OptionSpec kName = {.name = "--name", .help = "Person"};
constexpr OptionSpec kOrganization = {.name = "--organization", .help = "Company"};
constexpr OptionSpec kContact = {.name = "--contact", .help = "Name that calls show (default: person, else company)"};
constexpr OptionSpec kNote = {.name = "--note", .help = "Free text"};
constexpr OptionSpec kRelationship = {
    .name = "--relationship",
    .help = "0 none, 1 client, 2 special client, 3 competitor, 4 pirate, 5 collaborator",
    .valueName = "0-5"};
constexpr OptionSpec kAddress = {.name = "--address", .help = "Postal address"};
constexpr OptionSpec kWeb = {.name = "--web", .help = "Web address"};
constexpr OptionSpec kEmail = {.name = "--email", .help = "E-mail address"};
constexpr OptionSpec kPhones = {.name = "--phones", .help = "Telephone numbers, with commas between them"};

constexpr OptionSpec kAddOptions[] = {kName,    kOrganization, kContact, kNote,  kRelationship,
                                      kAddress, kWeb,          kEmail,   kPhones};
constexpr OptionSpec kEditOptions[] = {kId,           kName,    kOrganization, kContact, kNote,
                                       kRelationship, kAddress, kWeb,          kEmail,   kPhones};
constexpr OptionSpec kIdOption[] = {kId};
constexpr OptionSpec kSearchOptions[] = {
    {.name = "--name", .help = "Words that the person's or the company's name holds"},
    {.name = "--phone", .help = "Digits of a number"},
    {.name = "--address", .help = "Part of the address"},
    {.name = "--open", .takes = Takes::Nothing, .help = "Write the matches to cautare.html, too, and open it"},
};
constexpr OptionSpec kExportOptions[] = {
    {.name = "FILE", .help = "File to write (default: standard output)", .valueName = "FILE"}};
constexpr OptionSpec kImportOptions[] = {
    {.name = "FILE", .help = "File with vCards", .required = true, .valueName = "FILE"}};

constexpr Command kCommands[] = {
    {"contact list", "List the contacts", "tallyctl contact list --format csv", {}, kViewCalls, list},
    {"contact add", "Add a contact; prints its number",
     "tallyctl contact add --name \"Ana Pop\" --organization \"Northern Mills\" --phones \"0264 123 456, 0744 111222\"",
     kAddOptions, kChangeCalls, add},
    {"contact edit", "Change a contact", "tallyctl contact edit 17 --relationship 1 --note \"calls back on Mondays\"",
     kEditOptions, kChangeCalls, edit},
    {"contact delete", "Delete a contact", "tallyctl contact delete 17", kIdOption, kChangeCalls, remove},
    {"contact search", "Search the contacts",
     "tallyctl contact search --name \"pop mills\"\ntallyctl contact search --phone 0264 --json", kSearchOptions,
     kViewCalls, search},
    {"contact export", "Write the contacts as vCards", "tallyctl contact export contacts.vcf", kExportOptions,
     kViewCalls, exportCards},
    {"contact import", "Add the contacts of a file of vCards", "tallyctl contact import contacts.vcf", kImportOptions,
     kChangeCalls, importCards},
};

}  // namespace contact_commands

std::span<const Command> contactCommands() {
  return contact_commands::kCommands;
}

}  // namespace ctl
