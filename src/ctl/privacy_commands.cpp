#include <ostream>

#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/json_text.h"
#include "privacy/anonymise.h"
#include "privacy/person_data.h"
#include "security/restriction.h"
#include "server/phonebook_file.h"

namespace ctl {

namespace privacy_commands {

using privacy::StoredItem;

void printItems(const Invocation& call, const std::vector<StoredItem>& items, bool erased) {
  if (call.global.format == TableFormat::Json) {
    auto rows = nlohmann::ordered_json::array();
    for (const StoredItem& item : items) {
      rows.push_back({{"place", item.place}, {"id", item.id}, {"at", jsonDate(item.at)}, {"text", item.text}});
    }
    call.out << jsonText({{"rows", rows}, {"erased", erased}}) << '\n';
    return;
  }
  Table table({"Place", "At", "Stored"});
  for (const StoredItem& item : items) {
    table.add({item.place, item.at ? item.at->format(folders::kDateTimeFormat) : std::string(), item.text});
  }
  call.print(table);
}

int forget(const Invocation& call) {
  Context& context = call.context;
  security::requireAllCalls(context.document().user(), context.language());
  const exchange::PartyDefinitions& parties = context.parties();
  const analysis::SubscriberNumbers numbers(parties.countryCode, parties.areaCode);
  const auto phonebook = server::openPhonebookFile(context.document().databases());
  privacy::PersonData person(context.main(), phonebook.get(), numbers, call.arguments.text("PERSON"));
  const std::vector<StoredItem> items = person.find();
  const bool erase = call.arguments.has("--erase") && !items.empty();
  if (erase) {
    context.requireWritable();
    if (!call.arguments.has("--yes") &&
        !context.person().askYesNo(base::format("Erase %d items for good?", items.size()),
                                   platform::Operator::Unattended::No)) {
      throw Failure("Nothing was erased. Without a terminal, give --yes.");
    }
    person.erase();
    context.document().tags().TouchCalls();
    context.document().tags().Touch("Contacts");
  }
  printItems(call, items, erase);
  // Whose data they were is not written down again.
  context.log().WriteLog(erase ? security::LogDelete : security::LogPrint,
                         context.language().Translate(erase ? "IDS_LOG_PERSON_ERASED" : "IDS_LOG_PERSON_PRINTED"),
                         items.size());
  return 0;
}

int anonymise(const Invocation& call) {
  Context& context = call.context;
  security::requireAllCalls(context.document().user(), context.language());
  context.requireWritable();
  privacy::Anonymisation work(context.main(), context.config());
  const auto days = call.arguments.find("--older-than");
  const bool undo = call.arguments.has("--undo");
  const bool confirm = call.arguments.has("--confirm");
  if ((days ? 1 : 0) + (undo ? 1 : 0) + (confirm ? 1 : 0) != 1) {
    throw WrongUsage("Give one of --older-than DAYS, --undo and --confirm.");
  }
  std::int64_t count = 0;
  const char* entry = "IDS_LOG_ANONYMISED";
  if (!undo && call.global.format == TableFormat::Text) call.out << context.document().lastBackupText() << '\n';
  if (undo) {
    count = work.undo();
    entry = "IDS_LOG_ANONYMISED_UNDONE";
    call.out << base::format("%d calls are as they were.\n", count);
  } else if (confirm) {
    count = work.confirm();
    entry = "IDS_LOG_ANONYMISED_CONFIRMED";
    call.out << base::format("%d calls are anonymous for good.\n", count);
  } else {
    constexpr std::int64_t kMostDays = 36'500;
    const std::int64_t age = call.arguments.integer("--older-than", 0, 1, kMostDays);
    count = work.apply(context.clock().now().midnight().plusDays(-age));
    call.out << base::format(
        "%d calls were made anonymous. Take it back with tallyctl anonymise --undo, or make it final with tallyctl "
        "anonymise --confirm.\n",
        count);
  }
  context.document().tags().TouchCalls();
  context.log().WriteLog(security::LogEdit, context.language().Translate(entry), count);
  return 0;
}

constexpr OptionSpec kForget[] = {
    {.name = "PERSON",
     .help = "Number in any form, or name as calls show it",
     .required = true,
     .valueName = "NUMBER|NAME"},
    {.name = "--erase", .takes = Takes::Nothing, .help = "Take it away; sums and areas of calls stay"},
    {.name = "--yes", .takes = Takes::Nothing, .help = "Do not ask"},
};
constexpr OptionSpec kAnonymise[] = {
    {.name = "--older-than",
     .help = "Calls before so many days: number cut by 4 digits, name gone",
     .valueName = "DAYS"},
    {.name = "--undo", .takes = Takes::Nothing, .help = "Give back what was not confirmed"},
    {.name = "--confirm", .takes = Takes::Nothing, .help = "Forget what the calls were"},
};

constexpr Command kCommands[] = {
    {"forget", "Print what is stored about a person, and erase it on request",
     "tallyctl forget 0722123456 > person.txt\ntallyctl forget \"Ana Pop\" --json\n"
     "tallyctl forget +40722123456 --erase --yes",
     kForget, kChangeSettings, forget},
    {"anonymise", "Cut numbers and names of old calls",
     "tallyctl anonymise --older-than 180\ntallyctl anonymise --confirm", kAnonymise, kChangeSettings, anonymise},
};

}  // namespace privacy_commands

std::span<const Command> privacyCommands() {
  return privacy_commands::kCommands;
}

}  // namespace ctl
