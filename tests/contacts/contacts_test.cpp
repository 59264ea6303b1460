#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "contacts/contact_search.h"
#include "contacts/contacts_manager.h"
#include "contacts/vcard.h"
#include "schema/schema.h"
#include "support/database_folder.h"

namespace contacts {
namespace {

namespace fs = std::filesystem;
using foundation::StoreDatabase;
using foundation::StoreMachine;

class ScriptedOperator : public platform::NoOperator {
 public:
  void messageBox(std::string_view text) override { messages.emplace_back(text); }
  std::vector<std::string> messages;
};

// One copy of the program on a database; a second one on the same files stands for another workstation.
class Copy {
 public:
  explicit Copy(const support::DatabaseFolder& folder)
      : store(folder / "store.ini"),
        tags(person),
        config(store),
        log(config, clock, [] { return std::string(); }),
        contacts(config, tags, language, log, person) {
    database = jet::databaseExists(folder / schema::kMainFile)
                   ? jet::openDatabase(folder / schema::kMainFile, jet::OpenMode::ReadWrite)
                   : schema::createMainDatabase(folder / schema::kMainFile);
    tags.LoadTouch(*database);
    config.OpenConfig(*database, tags);
    log.OpenLog(*database);
    contacts.Open(*database);
  }

  ScriptedOperator person;
  platform::SystemClock clock;
  foundation::MachineStore store;
  foundation::ChangeTags tags;
  foundation::ConfigManager config;
  foundation::LanguageFile language;
  security::AuditLog log;
  std::unique_ptr<jet::Database> database;
  ContactsManager contacts;
};

class ContactsTest : public testing::Test {
 protected:
  CONTACTENTRYDESC person(const char* name, const char* organization, const char* tel) {
    CONTACTENTRYDESC contact;
    contact.name = name;
    contact.organization = organization;
    contact.contact = displayName(contact);
    contact.tel = contact.telView = contact.telString = tel;
    contact.recordId = copy->contacts.add(contact);
    return contact;
  }

  std::vector<std::string> found(const SearchInput& input) {
    std::vector<std::string> names;
    for (const auto& match : searchContacts(input, copy->contacts, copy->config).matches) {
      names.push_back(match.displayName);
    }
    return names;
  }

  support::DatabaseFolder folder;
  std::unique_ptr<Copy> copy = std::make_unique<Copy>(folder);
};

using Names = std::vector<std::string>;

TEST_F(ContactsTest, AddsFromACall) {
  std::int32_t edited = 0;
  const auto sheet = [&](std::int32_t id) {
    edited = id;
    return true;
  };
  const auto first = copy->contacts.AddFromCall("Ionescu", "Ștefan", "Str. Lungă 5", "0213456789", sheet);
  const auto second = copy->contacts.AddFromCall("SC Țesătura SRL", "", "", "0264111222", nullptr);
  EXPECT_EQ(edited, first);
  EXPECT_EQ(second, first + 1);
  const auto named = *copy->contacts.find(first);
  EXPECT_EQ(named.name, "Ionescu Ștefan");
  EXPECT_EQ(named.contact, "Ionescu Ștefan");
  EXPECT_EQ(named.organization, "");
  EXPECT_EQ(named.telString + named.telView + named.tel, "021345678902134567890213456789");
  const auto company = *copy->contacts.find(second);
  EXPECT_EQ(company.name, "");
  EXPECT_EQ(company.organization, "SC Țesătura SRL");
  EXPECT_EQ(company.contact, "SC Țesătura SRL");
  const auto log = copy->database->openSnapshot("select [Level], [Desc] from Log");
  ASSERT_EQ(log.rowCount(), 2u);
  EXPECT_EQ(log.at(0, 0).toLong(), security::LogAdd);
}

TEST_F(ContactsTest, RestartsAMissingCounterAndGivesZero) {
  copy->database->execute("delete from Config where Path = 'Contacts\\Next RecID'");
  EXPECT_EQ(copy->contacts.NextRecordNumber(), 0);
  EXPECT_EQ(copy->person.messages, (Names{"IDS_CANTGETNEXTRECID"}));
  EXPECT_EQ(copy->contacts.NextRecordNumber(), 1);
  EXPECT_EQ(copy->contacts.NextRecordNumber(), 2);
}

TEST_F(ContactsTest, NeverOverwritesWhatAnotherCopyChanged) {
  Copy other(folder);
  const CONTACTENTRYDESC original = person("Ana", "", "0721000111");
  CONTACTENTRYDESC theirs = *other.contacts.find(original.recordId);
  theirs.note = "cheamă după-amiaza";
  EXPECT_EQ(other.contacts.save(*other.contacts.find(original.recordId), theirs), SaveResult::Done);
  CONTACTENTRYDESC mine = original;
  mine.email = "ana@example.org";
  EXPECT_EQ(copy->contacts.save(original, mine), SaveResult::ChangedByOther);
  EXPECT_EQ(copy->contacts.find(original.recordId)->note, theirs.note);
  EXPECT_EQ(copy->contacts.save(original, mine, true), SaveResult::Done);
  EXPECT_EQ(copy->contacts.remove(original), SaveResult::Done);
  EXPECT_EQ(other.contacts.save(theirs, theirs), SaveResult::DeletedByOther);
  EXPECT_EQ(other.contacts.message(SaveResult::DeletedByOther), "IDS_LAN_RECORD_DELETED_NO");
}

TEST(ContactSearchCondition, IsBuiltToTheBlank) {
  struct Case {
    SearchInput input;
    bool prefix;
    const char* condition;
  };
  const Case cases[] = {
      {{"", "", ""}, false, ""},
      {{"ion", "", ""}, false, "(Name LIKE \"*ion*\" OR Organization LIKE \"*ion*\")"},
      {{" ion  pop", "", ""},
       true,
       "(Name LIKE \"ion*\" OR Organization LIKE \"ion*\") AND (Name LIKE \"pop*\" OR Organization LIKE \"pop*\")"},
      {{"", "0213", ""}, false, " Tel_String LIKE \"*0213*\""},
      {{"", "", "Lungă"}, false, " Address LIKE \"*Lungă*\""},
      {{"ion", "0213", "Lungă"},
       false,
       "(Name LIKE \"*ion*\" OR Organization LIKE \"*ion*\") AND Tel_String LIKE \"*0213*\" AND Address LIKE "
       "\"*Lungă*\""},
  };
  for (const Case& c : cases) EXPECT_EQ(buildSearchCondition(c.input, c.prefix), c.condition);
}

TEST_F(ContactsTest, FindsByWordsInNameOrOrganizationAndByNumber) {
  person("Popescu Ion", "SC Alfa", "0213456789");
  person("Ionescu Ana", "SC Beta", "0264999888");
  person("", "Ionel și fiii", "0722333444");
  EXPECT_EQ(found({"ion", "", ""}), (Names{"Ionel și fiii", "Ionescu Ana (SC Beta)", "Popescu Ion (SC Alfa)"}));
  EXPECT_EQ(found({"ion ALFA", "", ""}), (Names{"Popescu Ion (SC Alfa)"}));
  EXPECT_EQ(found({"ȘI", "", ""}), (Names{"Ionel și fiii"}));
  EXPECT_EQ(found({"", "999", ""}), (Names{"Ionescu Ana (SC Beta)"}));
  copy->config.WriteConfigInt(1, "PhonebookSearchMethod", "general", StoreMachine);
  EXPECT_EQ(found({"ion", "", ""}), (Names{"Ionel și fiii", "Ionescu Ana (SC Beta)"}));
  copy->config.WriteConfigInt(1, "iface_searchmaxresults", "general", StoreMachine);
  EXPECT_FALSE(searchable({"", "", "\" OR \"\"=\""}));
  const auto limited = searchContacts({"ion", "", ""}, copy->contacts, copy->config);
  EXPECT_EQ(limited.matches.size(), 1u);
  EXPECT_TRUE(limited.tooMany);
}

TEST_F(ContactsTest, WritesTheResultsPageEscapedAndNeverThroughALink) {
  SearchResult result;
  result.matches.push_back({"<b>Șerban & fiii</b>", "Str. É", "021", 1});
  std::ofstream(folder / "elsewhere.html") << "precious";
  fs::create_symlink(folder / "elsewhere.html", folder / "cautare.html");
  const auto page = writeSearchPage(result, copy->language, folder / "");
  ASSERT_TRUE(page);
  const auto content = [](const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  };
  EXPECT_EQ(content(folder / "elsewhere.html"), "precious");
  EXPECT_EQ(
      content(*page),
      "<html><head><meta http-equiv=Content-Type content=\"text/html; "
      "charset=windows-1252\"><title>IDS_SEARCH_RESULTS</title></head><body style='font-family: Verdana; "
      "border-bottom-style: solid; border-bottom-width: thin; border-bottom-color: Black;'><table width=100% "
      "cellspacing=0 cellpadding=3 style='font-size:9.0pt; font-family: Verdana;'><tr><th "
      "align=left>IDS_NAME</th><th align=left>IDS_ADDRESS</th><th "
      "align=left>IDS_PHONE_NUMBERS</th></tr><tr><td align=left>&lt;b&gt;&#536;erban &amp; fiii&lt;/b&gt;</td><td "
      "align=left>Str. \xC9</td><td align=left>021</td></tr></table></body></html>");
  EXPECT_FALSE(writeSearchPage(result, copy->language, folder / "missing"));
}

TEST_F(ContactsTest, SearchedNumbersHoldTheFormsThatCallsAndPeopleUse) {
  copy->config.WriteConfigString("40", "CountryCode", "general", StoreMachine);
  copy->config.WriteConfigString("21", "AreaCode", "general", StoreMachine);
  EXPECT_EQ(copy->contacts.searchedNumbers("021 345-67-89, +44 20 7946 0000"),
            "0213456789 0040213456789 0040210213456789 00442079460000");
  EXPECT_EQ(copy->contacts.searchedNumbers("fax"), "");
  EXPECT_EQ(copy->contacts.localPrefix(), "004021");
}

TEST(VCard, KeepsContactsThroughWritingAndReading) {
  CONTACTENTRYDESC contact;
  contact.name = "Ștefan cel Mare, domn; voievod";
  contact.organization = "Țara Moldovei";
  contact.contact = contact.name;
  contact.note = "rândul 1\nrândul 2 " + std::string(100, 'x');
  contact.tip = 3;
  contact.address = "Suceava; Cetate";
  contact.web = "https://example.org/?a=1;b";
  contact.email = "s@example.org";
  contact.telView = "0230 111 222, +40 722 333 444";
  const auto read = readVCards(writeVCards({contact}));
  ASSERT_TRUE(read.problems.empty());
  ASSERT_EQ(read.contacts.size(), 1u);
  EXPECT_EQ(read.contacts[0], contact);
}

TEST(VCard, TakesOtherProgramsCardsAndNamesTheBadOnes) {
  const auto read = readVCards(
      "BEGIN:VCARD\nVERSION:2.1\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Pop=C4=83;Ion;;Dr.\nTEL;CELL:0721\n"
      "item1.TEL;type=work:tel:+40211\nEND:VCARD\n"
      "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Doar nume\r\nADR:;;Str. Lun\r\n gă 1;Iași;;700000;România\r\nEND:VCARD\r\n"
      "BEGIN:VCARD\nTEL:1\nEND:VCARD\nBEGIN:VCARD\nFN:cut");
  ASSERT_EQ(read.contacts.size(), 2u);
  EXPECT_EQ(read.contacts[0].name, "Dr. Ion Popă");
  EXPECT_EQ(read.contacts[0].telView, "0721, +40211");
  EXPECT_EQ(read.contacts[1].name, "Doar nume");
  EXPECT_EQ(read.contacts[1].address, "Str. Lungă 1, Iași, 700000, România");
  ASSERT_EQ(read.problems.size(), 2u);
  EXPECT_NE(read.problems[0].find("line 13"), std::string::npos) << read.problems[0];
  EXPECT_NE(read.problems[1].find("line 16"), std::string::npos) << read.problems[1];
  // Old telephones: soft line breaks, blanks that stay where a line was folded, code pages said and unsaid.
  const auto old = readVCards(
      "\xEF\xBB\xBF"
      "BEGIN:VCARD\r\nVERSION:2.1\r\nN;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:=C8=98erb=\r\n=C4=83n=3B;Ana\r\n"
      "NOTE;ENCODING=QUOTED-PRINTABLE:rand 1=0D=0A=\r\nrand 2\r\nADR:;;Strada\r\n Mare;Cluj;;;\r\n"
      "ORG;CHARSET=ISO-8859-2:\xDE"
      "esut\r\nEMAIL:caf\xE9@example.org\r\nX-TALLYBOOK-RELATIONSHIP:77\r\nEND:VCARD\r\n"
      "BEGIN:VCARD\nVERSION:4.0\nFN:First\nFN:Second\nADR;GEO=\"geo:12.3,17.8\":;;Str. 1;Iași;;;\n"
      "TEL;VALUE=uri;TYPE=\"voice,home\":TEL:+40-21-555;ext=102\nNOTE:fol\n ded\nEND:VCARD\n");
  ASSERT_EQ(old.contacts.size(), 2u);
  EXPECT_EQ(old.contacts[0].name, "Ana Șerbăn;");
  EXPECT_EQ(old.contacts[0].note, "rand 1\nrand 2");
  EXPECT_EQ(old.contacts[0].address, "Strada Mare, Cluj");
  EXPECT_EQ(old.contacts[0].organization, "Ţesut");
  EXPECT_EQ(old.contacts[0].email, "café@example.org");
  EXPECT_EQ(old.contacts[0].tip, 0);
  EXPECT_EQ(old.contacts[1].contact, "First");
  EXPECT_EQ(old.contacts[1].address, "Str. 1, Iași");
  EXPECT_EQ(old.contacts[1].telView, "+40-21-555");
  EXPECT_EQ(old.contacts[1].note, "folded");
  EXPECT_TRUE(readVCards("\xFF\x00garbage:::;;;=\nEND:VCARD").contacts.empty());
}

}  // namespace
}  // namespace contacts
