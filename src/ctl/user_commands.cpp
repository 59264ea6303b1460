#include <algorithm>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/directory_edit.h"
#include "ctl/list_words.h"
#include "ctl/terminal_prompt.h"
#include "filter/restriction_choice.h"
#include "security/rights.h"

namespace ctl {

namespace user_commands {

using security::UserRecord;

struct FlagWord {
  std::int32_t flag;
  std::string_view word;
};
constexpr FlagWord kFlagWords[] = {
    {security::UserMustChangePassword, "must-change"},
    {security::UserDisabled, "disabled"},
};

std::string flagText(std::int32_t flags) {
  std::string text;
  for (const FlagWord& each : kFlagWords) {
    if ((flags & each.flag) != 0) text += (text.empty() ? "" : ",") + std::string(each.word);
  }
  return text;
}

std::int32_t flagsOf(std::string_view text) {
  std::int32_t flags = 0;
  for (const std::string& word : listWords(text)) {
    std::int32_t found = 0;
    for (const FlagWord& each : kFlagWords) {
      if (each.word == word) found = each.flag;
    }
    if (found == 0) throw WrongUsage(base::format("--flags takes must-change, disabled or none, not \"%s\".", word));
    flags |= found;
  }
  return flags;
}

std::string groupNames(security::UserDirectory& directory, const std::string& membership) {
  std::string text;
  for (const std::int32_t id : security::groupIds(membership)) {
    const auto group = directory.findGroup(id);
    text += (text.empty() ? "" : ",") + (group ? group->Name : std::to_string(id));
  }
  return text;
}

// The membership text edited so that it names these groups and no other.
std::string membershipOf(security::UserDirectory& directory, std::string membership, std::string_view names) {
  std::vector<std::int32_t> wanted;
  for (const std::string& name : listWords(names)) {
    const auto group = directory.findGroup(name);
    if (!group) throw Failure(base::format("There is no group %s. See: tallyctl group list", name));
    wanted.push_back(group->RecordID);
  }
  for (const std::int32_t id : security::groupIds(membership)) {
    if (std::ranges::find(wanted, id) == wanted.end()) membership = security::RemoveFromGroupList(membership, id);
  }
  for (const std::int32_t id : wanted) membership = security::AddToGroupList(membership, id);
  return membership;
}

std::string timeText(const std::optional<base::DateTime>& time) {
  return time ? time->format("%d.%m.%Y %H:%M:%S") : std::string();
}

int list(const Invocation& call) {
  security::UserDirectory& directory = call.context.document().users();
  Table table({"ID", "Name", "Full name", "Groups", "Flags", "Restriction", "Password set", "Last access", "Masked"});
  for (const UserRecord& user : directory.users()) {
    table.add({std::int64_t{user.RecordID}, user.Name, user.Fullname, groupNames(directory, user.Groups),
               flagText(user.Flags), user.SQLSubquery, timeText(user.PasswordDate), timeText(user.LastAccessDate),
               maskText(user.mask)});
  }
  call.print(table);
  return 0;
}

// An option that chooses what a user sees, and the names that there are.
struct AllowOption {
  std::string_view name;
  std::vector<std::string> filter::RestrictionChoice::*chosen;
  std::vector<std::string> (*known)(const exchange::PartyDefinitions&);
};

template <typename Definitions, typename Member>
std::vector<std::string> namesIn(const Definitions& definitions, Member member) {
  std::vector<std::string> names;
  for (const auto& each : definitions) {
    if (!(each.*member).empty()) names.push_back(each.*member);
  }
  return names;
}

std::vector<std::string> departmentsOf(const exchange::PartyDefinitions& parties) {
  std::vector<std::string> names = namesIn(parties.extensions, &exchange::tagEXTINFO::department);
  for (const std::string& name : namesIn(parties.accounts, &exchange::tagCONTINFO::department)) names.push_back(name);
  return names;
}

constexpr AllowOption kAllowOptions[] = {
    {"--allow-departments", &filter::RestrictionChoice::departments, departmentsOf},
    {"--allow-extensions", &filter::RestrictionChoice::extensions,
     [](const exchange::PartyDefinitions& parties) {
       return namesIn(parties.extensions, &exchange::tagEXTINFO::extension);
     }},
    {"--allow-clients", &filter::RestrictionChoice::clients,
     [](const exchange::PartyDefinitions& parties) {
       return namesIn(parties.clients, &exchange::ClientDefinition::name);
     }},
    {"--allow-trunks", &filter::RestrictionChoice::trunks,
     [](const exchange::PartyDefinitions& parties) { return namesIn(parties.trunks, &exchange::tagTRUNKINFO::trunk); }},
};

// The names typed for one option; a name that holds a comma can be given by itself. Who is defined later may be
// allowed before.
std::vector<std::string> allowedNames(const Invocation& call, const AllowOption& option, const std::string& typed) {
  const std::vector<std::string> known = option.known(call.context.parties());
  const auto isKnown = [&](const std::string& name) { return std::ranges::find(known, name) != known.end(); };
  if (isKnown(typed)) return {typed};
  std::vector<std::string> names = listWords(typed);
  std::string unknown;
  for (const std::string& name : names) {
    if (!isKnown(name)) unknown += (unknown.empty() ? "" : ", ") + name;
  }
  if (!unknown.empty()) call.out << base::format("Note: not defined yet, for %s: %s\n", option.name, unknown);
  return names;
}

// The restriction after the options that choose; the lists that were not typed stay.
std::string chosenRestriction(const Invocation& call, const UserRecord& user) {
  std::optional<filter::RestrictionChoice> choice = filter::choiceOf(user.SQLSubquery);
  bool chosen = false;
  for (const AllowOption& option : kAllowOptions) {
    const auto typed = call.arguments.find(option.name);
    if (!typed) continue;
    if (call.arguments.has("--restriction")) {
      throw WrongUsage(base::format("%s makes the restriction: leave out --restriction.", option.name));
    }
    if (!choice) {
      throw Failure(
          base::format("The restriction of %s is a condition that was typed (%s). Take it away first: "
                       "tallyctl user set %s --restriction \"\"",
                       user.Name, user.SQLSubquery, user.Name));
    }
    chosen = true;
    (*choice).*option.chosen = allowedNames(call, option, *typed);
  }
  if (!chosen) return call.arguments.text("--restriction", user.SQLSubquery);
  const exchange::PartyDefinitions& parties = call.context.parties();
  const std::string limit = filter::limitText(*choice, parties, call.context.language());
  if (!limit.empty()) throw Failure(limit + " Nothing was saved.");
  return filter::restrictionFor(*choice, parties.extensionIsText);
}

// What was typed goes into the record; the rest stays.
void takeOver(const Invocation& call, UserRecord& user) {
  const Arguments& arguments = call.arguments;
  user.Fullname = arguments.text("--fullname", user.Fullname);
  if (const auto flags = arguments.find("--flags")) user.Flags = flagsOf(*flags);
  if (const auto groups = arguments.find("--groups")) {
    user.Groups = membershipOf(call.context.document().users(), user.Groups, *groups);
  }
  user.SQLSubquery = chosenRestriction(call, user);
  user.mask = typedMask(arguments, user.mask);
}

std::optional<std::string> askNewPassword(const std::string& name) {
  auto typed = askPassword(base::format("Password of the new user %s (empty: none)", name));
  if (typed && !typed->empty() && askPassword("Again") != typed) {
    throw Failure("The two passwords differ. Nothing was made.");
  }
  return typed;
}

int add(const Invocation& call) {
  call.context.requireWritable();
  UserRecord user;
  user.Name = call.arguments.text("NAME");
  takeOver(call, user);
  std::optional<std::string> password = call.arguments.find("--password");
  if (!password) password = newPasswordFromEnvironment();
  if (!password) password = askNewPassword(user.Name);
  if (password.value_or("").empty()) user.Flags |= security::UserMustChangePassword;
  requireSaved(call.context.document().users().SaveUser(user, password.value_or("")), "user", user.Name);
  if (user.Groups.empty()) {
    call.out << base::format("%s cannot log in before it is in a group: tallyctl user set %s --groups Operators\n",
                             user.Name, user.Name);
  }
  return 0;
}

UserRecord existing(const Invocation& call) {
  const std::string name = call.arguments.text("NAME");
  auto user = call.context.document().users().findUser(name);
  if (!user) throw Failure(base::format("There is no user %s.", name));
  return *user;
}

int set(const Invocation& call) {
  call.context.requireWritable();
  UserRecord user = existing(call);
  user.Name = call.arguments.text("--name", user.Name);
  takeOver(call, user);
  requireSaved(call.context.document().users().SaveUser(user, call.arguments.find("--password")), "user", user.Name);
  return 0;
}

int remove(const Invocation& call) {
  call.context.requireWritable();
  const UserRecord user = existing(call);
  if (user.RecordID == call.context.document().user().RecordID) {
    throw Failure(base::format("%s is logged in here; let another administrator delete it.", user.Name));
  }
  requireSaved(call.context.document().users().deleteUser(user.RecordID), "user", user.Name);
  return 0;
}

constexpr OptionSpec kName = {.name = "NAME", .help = "Name that the user logs in with", .required = true};
constexpr OptionSpec kFullname = {.name = "--fullname", .help = "Full name"};
constexpr OptionSpec kPassword = {.name = "--password",
                                  .help = "New password; other users of the machine can see it while the command runs"};
constexpr OptionSpec kFlags = {
    .name = "--flags", .help = "must-change, disabled, both with a comma, or none", .valueName = "FLAGS"};
constexpr OptionSpec kGroups = {.name = "--groups", .help = "Names of all its groups, with commas", .valueName = "G,G"};
constexpr OptionSpec kRestriction = {.name = "--restriction",
                                     .help = "Condition on the calls it may see, below 128 characters; empty: all",
                                     .valueName = "CONDITION"};
constexpr OptionSpec kDepartments = {
    .name = "--allow-departments",
    .help = "Departments whose calls it may see, with commas; each --allow option adds to the others, none takes away",
    .valueName = "D,D"};
constexpr OptionSpec kExtensions = {
    .name = "--allow-extensions", .help = "Extensions whose calls it may see, or none", .valueName = "E,E"};
constexpr OptionSpec kClients = {
    .name = "--allow-clients", .help = "Clients whose calls it may see, or none", .valueName = "C,C"};
constexpr OptionSpec kTrunks = {
    .name = "--allow-trunks", .help = "Trunks whose calls it may see, or none", .valueName = "T,T"};
constexpr OptionSpec kAdd[] = {kName,        kFullname,   kPassword, kFlags,  kGroups,     kRestriction,
                               kDepartments, kExtensions, kClients,  kTrunks, kMaskDigits, kMaskPrivateNames};
constexpr OptionSpec kSet[] = {kName,
                               {.name = "--name", .help = "New name"},
                               kFullname,
                               kPassword,
                               kFlags,
                               kGroups,
                               kRestriction,
                               kDepartments,
                               kExtensions,
                               kClients,
                               kTrunks,
                               kMaskDigits,
                               kMaskPrivateNames,
                               kShowPrivateNames};
constexpr OptionSpec kDelete[] = {kName};

constexpr Command kCommands[] = {
    {"user list", "List the users", "tallyctl user list --json", {}, kViewSettings, list},
    {"user add", "Add a user; the password comes from TALLYBOOK_NEW_PASSWORD or a prompt",
     "tallyctl user add ana --fullname \"Ana Turcan\" --groups Operators", kAdd, kChangeSettings, add},
    {"user set", "Change a user",
     "tallyctl user set ana --allow-departments Sales,Service --allow-extensions 201\n"
     "tallyctl user set ana --restriction \"TotalTime > 60\"\n"
     "tallyctl user set ana --mask-digits 3 --mask-private-names\n"
     "tallyctl user set ana --flags disabled",
     kSet, kChangeSettings, set},
    {"user delete", "Delete a user", "tallyctl user delete ana", kDelete, kChangeSettings, remove},
};

}  // namespace user_commands

std::span<const Command> userCommands() {
  return user_commands::kCommands;
}

}  // namespace ctl
