#include "privacy/person_data.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"

namespace privacy {

namespace {

// Shorter numbers would be found in dates and amounts.
constexpr std::size_t kShortestMention = 5;
constexpr std::string_view kErased = "***";

bool isNumber(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789";
  return text.find_first_of(kDigits) != std::string_view::npos &&
         text.find_first_not_of("0123456789+*# -/().") == std::string_view::npos;
}

std::string literal(std::string_view text) {
  return "\"" + base::replaceAll(std::string(text), "\"", "\"\"") + "\"";
}

// Who called whom, in no language: the sheet is handed to the person.
std::string callText(const std::vector<jet::Value>& row) {
  std::string caller = row[4].toText();
  std::string called = row[2].toText();
  if (row[5].toLong() != 0) std::swap(caller, called);
  return base::format("%s > %s, %s, %d s, %.4f, %s %s", caller, called, row[3].toText(), row[6].toLong(),
                      row[7].toDouble(), row[8].toText(), row[9].toText());
}

}  // namespace

PersonData::PersonData(jet::Database& main, jet::Database* phonebook, const analysis::SubscriberNumbers& numbers,
                       std::string_view person)
    : main_(main), phonebook_(phonebook), numbers_(numbers) {
  if (isNumber(person)) {
    key_ = numbers_.key(person);
    spellings_.insert(std::string(base::trim(person)));
  } else {
    name_ = base::trim(person);
  }
}

bool PersonData::isMeant(std::string_view number) const {
  return !key_.empty() && numbers_.key(number) == key_;
}

bool PersonData::isNamed(std::string_view name) const {
  return !name_.empty() && base::equalFold(name_, base::trim(name));
}

bool PersonData::isMentioned(const std::string& text) const {
  if (!name_.empty()) return base::fold(text).find(base::fold(name_)) != std::string::npos;
  return std::ranges::any_of(spellings_, [&](const std::string& spelling) {
    return spelling.size() >= kShortestMention && text.find(spelling) != std::string::npos;
  });
}

std::vector<StoredItem> PersonData::find() {
  std::vector<StoredItem> items;
  findCalls(items);
  findContacts(items);
  findHiddenNumbers(items);
  findTexts(items, "log", "select RecordID, [DateTime], [Desc] from Log");
  findTexts(items, "alarms", "select AlarmID, [DateTime], [Desc] from Alarms");
  findInPhonebook(items);
  return items;
}

void PersonData::findCalls(std::vector<StoredItem>& items) {
  const std::string where = name_.empty() ? std::string() : base::format(" where Name = %s", literal(name_));
  main_.forEachRow(
      "select RecordID, [DateTime], DialNumber, Name, Extension, Incoming, TotalTime, Price_Ref, Area, "
      "Country from Calls" +
          where,
      [&](const std::vector<jet::Value>& row) {
        if (name_.empty() && !isMeant(row[2].toText())) return true;
        if (name_.empty()) spellings_.insert(row[2].toText());
        items.push_back({"calls", row[0].toLong(), row[1].toDateTime(), callText(row)});
        return true;
      });
}

void PersonData::findContacts(std::vector<StoredItem>& items) {
  main_.forEachRow(
      "select RecordID, Name, Organization, Contact, Address, Email, Tel_View, Tel_String, Tel, [Note] from Contacts",
      [&](const std::vector<jet::Value>& row) {
        bool meant = isNamed(row[1].toText()) || isNamed(row[2].toText()) || isNamed(row[3].toText());
        for (const std::size_t field : {6U, 7U, 8U}) {
          for (const std::string& number : base::split(row[field].toText(), ",;/\r\n"))
            meant = meant || isMeant(number);
        }
        for (const std::string& number : base::split(row[7].toText(), " ")) meant = meant || isMeant(number);
        if (!meant) return true;
        std::string text;
        for (const std::size_t field : {1U, 2U, 3U, 4U, 5U, 6U, 9U}) {
          const std::string value = row[field].toText();
          if (!value.empty()) text += (text.empty() ? "" : ", ") + value;
        }
        items.push_back({"contacts", row[0].toLong(), std::nullopt, text});
        return true;
      });
}

void PersonData::findHiddenNumbers(std::vector<StoredItem>& items) {
  main_.forEachRow("select [number] from FilteredNumbers", [&](const std::vector<jet::Value>& row) {
    if (isMeant(row[0].toText())) items.push_back({"hidden numbers", 0, std::nullopt, row[0].toText()});
    return true;
  });
}

void PersonData::findTexts(std::vector<StoredItem>& items, const char* place, const char* sql) {
  main_.forEachRow(sql, [&](const std::vector<jet::Value>& row) {
    const std::string text = row[2].toText();
    if (isMentioned(text)) items.push_back({place, row[0].toLong(), row[1].toDateTime(), text});
    return true;
  });
}

std::vector<std::string> PersonData::phonebookConditions() {
  std::vector<std::string> conditions;
  if (phonebook_ == nullptr) return conditions;
  phonebook_->forEachRow("select Prefix, [Table] from map", [&](const std::vector<jet::Value>& row) {
    const std::string prefix = row[0].toText();
    const std::size_t blank = name_.find(' ');
    constexpr std::size_t kMostDigits = 9;  // of a subscriber's number, which is a Long
    if (name_.empty() && key_.starts_with(prefix) && key_.size() > prefix.size() &&
        key_.size() - prefix.size() <= kMostDigits) {
      conditions.push_back(base::format("[%s] where Tel = %s", row[1].toText(), key_.substr(prefix.size())));
    } else if (blank != std::string::npos) {
      conditions.push_back(base::format("[%s] where Lastname = %s and Firstname = %s", row[1].toText(),
                                        literal(name_.substr(0, blank)), literal(name_.substr(blank + 1))));
    }
    return true;
  });
  return conditions;
}

void PersonData::findInPhonebook(std::vector<StoredItem>& items) {
  for (const std::string& condition : phonebookConditions()) {
    phonebook_->forEachRow(
        "select Lastname, Firstname, Address, Tel from " + condition, [&](const std::vector<jet::Value>& row) {
          items.push_back(
              {"phonebook", 0, std::nullopt,
               base::format("%s %s, %s, %s", row[0].toText(), row[1].toText(), row[2].toText(), row[3].toText())});
          return true;
        });
  }
}

// Rewrites what is mentioned. Names are found without regard to case and then replaced as a whole text.
void PersonData::eraseTexts(const char* table) {
  const auto rows = main_.openRecordset(base::format("SELECT * FROM %s", table));
  for (; !rows->eof(); rows->moveNext()) {
    std::string text = rows->get("Desc").toText();
    if (!isMentioned(text)) continue;
    if (!name_.empty()) text = kErased;
    for (const std::string& spelling : spellings_) {
      if (spelling.size() >= kShortestMention) text = base::replaceAll(std::move(text), spelling, kErased);
    }
    rows->edit();
    rows->set("Desc", text);
    rows->update();
  }
}

std::int64_t PersonData::erase() {
  const std::vector<StoredItem> items = find();
  jet::Transaction transaction(main_);
  if (!name_.empty()) {
    main_.execute(base::format("update Calls set DialNumber = '', Name = '' where Name = %s", literal(name_)));
  }
  if (!key_.empty()) {
    for (const std::string& spelling : spellings_) {
      main_.execute(
          base::format("update Calls set DialNumber = '', Name = '' where DialNumber = %s", literal(spelling)));
    }
  }
  for (const StoredItem& item : items) {
    if (item.place == "contacts") main_.execute(base::format("delete from Contacts where RecordID = %d", item.id));
    if (item.place == "hidden numbers") {
      main_.execute(base::format("delete from FilteredNumbers where [number] = %s", literal(item.text)));
    }
  }
  eraseTexts("Log");
  eraseTexts("Alarms");
  if (phonebook_ != nullptr && !phonebook_->readOnly()) {
    jet::Transaction book(*phonebook_);
    for (const std::string& condition : phonebookConditions()) phonebook_->execute("delete from " + condition);
    book.commit();
  }
  transaction.commit();
  return static_cast<std::int64_t>(items.size());
}

}  // namespace privacy
