#include <algorithm>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/directory_edit.h"
#include "ctl/list_words.h"
#include "security/rights.h"

namespace ctl {

namespace group_commands {

using security::GroupRecord;

std::string wordsOf(const std::string& objectAccess) {
  std::string text;
  for (const security::AccessRight& right : security::parseObjectAccess(objectAccess).rights) {
    text += (text.empty() ? "" : ",") + rightText(right);
  }
  return text;
}

// "6;1;9;2" as it is kept, or words with commas.
std::string objectAccessOf(const std::string& typed) {
  if (typed.find_first_not_of("0123456789;") == std::string::npos) {
    const security::ObjectAccess access = security::parseObjectAccess(typed);
    if (!access.wellFormed) throw WrongUsage("--rights takes pairs of object and right, such as \"6;1;9;2\".");
    return security::formatObjectAccess(access.rights);
  }
  std::vector<security::AccessRight> rights;
  for (const std::string& word : listWords(typed)) {
    bool found = false;
    for (const RightWord& each : kRightWords) {
      if (word != "all" && word != each.word) continue;
      found = true;
      if (std::find(rights.begin(), rights.end(), each.right) == rights.end()) rights.push_back(each.right);
    }
    if (!found) {
      throw WrongUsage(
          base::format("--rights takes view-calls, change-calls, view-administration, change-administration, all, "
                       "none or pairs such as \"6;1;9;2\", not \"%s\".",
                       word));
    }
  }
  return security::formatObjectAccess(rights);
}

std::string memberNames(security::UserDirectory& directory, std::int32_t group) {
  std::string text;
  for (const auto& user : directory.members(group)) text += (text.empty() ? "" : ",") + user.Name;
  return text;
}

int list(const Invocation& call) {
  security::UserDirectory& directory = call.context.document().users();
  Table table({"ID", "Name", "Description", "Rights", "Meaning", "Password validity", "Members", "Masked"});
  for (const GroupRecord& group : directory.groups()) {
    table.add({std::int64_t{group.RecordID}, group.Name, group.Desc, group.ObjectAccess, wordsOf(group.ObjectAccess),
               directory.validityText(group.PasswordExpire), memberNames(directory, group.RecordID),
               maskText(group.mask)});
  }
  call.print(table);
  return 0;
}

// What was typed goes into the record; the rest stays.
void takeOver(const Arguments& arguments, GroupRecord& group) {
  constexpr std::int64_t kLongestValidity = 36500;
  group.Desc = arguments.text("--description", group.Desc);
  group.PasswordExpire =
      static_cast<std::int32_t>(arguments.integer("--expire", group.PasswordExpire, 0, kLongestValidity));
  if (const auto rights = arguments.find("--rights")) group.ObjectAccess = objectAccessOf(*rights);
  group.mask = typedMask(arguments, group.mask);
}

int add(const Invocation& call) {
  call.context.requireWritable();
  GroupRecord group;
  group.Name = call.arguments.text("NAME");
  takeOver(call.arguments, group);
  requireSaved(call.context.document().users().saveGroup(group), "group", group.Name);
  return 0;
}

GroupRecord existing(const Invocation& call) {
  const std::string name = call.arguments.text("NAME");
  auto group = call.context.document().users().findGroup(name);
  if (!group) throw Failure(base::format("There is no group %s.", name));
  return *group;
}

int set(const Invocation& call) {
  call.context.requireWritable();
  GroupRecord group = existing(call);
  group.Name = call.arguments.text("--name", group.Name);
  takeOver(call.arguments, group);
  requireSaved(call.context.document().users().saveGroup(group), "group", group.Name);
  return 0;
}

int remove(const Invocation& call) {
  call.context.requireWritable();
  const GroupRecord group = existing(call);
  const auto& own = call.context.document().user().groups;
  if (std::find(own.begin(), own.end(), group.RecordID) != own.end()) {
    throw Failure(base::format("You are in the group %s; let another administrator delete it.", group.Name));
  }
  requireSaved(call.context.document().users().deleteGroup(group.RecordID), "group", group.Name);
  return 0;
}

constexpr OptionSpec kName = {.name = "NAME", .help = "Name of the group", .required = true};
constexpr OptionSpec kDescription = {.name = "--description", .help = "Description"};
constexpr OptionSpec kExpire = {
    .name = "--expire", .help = "Days that its members' passwords are valid; 0: for ever", .valueName = "DAYS"};
constexpr OptionSpec kRights = {.name = "--rights",
                                .help =
                                    "view-calls, change-calls, view-administration, change-administration with "
                                    "commas, all, none, or pairs such as \"6;1;9;2\"",
                                .valueName = "RIGHTS"};
constexpr OptionSpec kAdd[] = {kName, kDescription, kExpire, kRights, kMaskDigits, kMaskPrivateNames};
constexpr OptionSpec kSet[] = {kName,
                               {.name = "--name", .help = "New name"},
                               kDescription,
                               kExpire,
                               kRights,
                               kMaskDigits,
                               kMaskPrivateNames,
                               kShowPrivateNames};
constexpr OptionSpec kDelete[] = {kName};

constexpr Command kCommands[] = {
    {"group list", "List the groups, their rights and members", "tallyctl group list", {}, kViewSettings, list},
    {"group add", "Add a group", "tallyctl group add Managers --rights view-calls --expire 90", kAdd, kChangeSettings,
     add},
    {"group set", "Change a group",
     "tallyctl group set Managers --rights \"9;1;9;2\"\n"
     "tallyctl group set Managers --expire 0\n"
     "tallyctl group set Operators --mask-digits 3",
     kSet, kChangeSettings, set},
    {"group delete", "Delete a group; its members stay", "tallyctl group delete Managers", kDelete, kChangeSettings,
     remove},
};

}  // namespace group_commands

std::span<const Command> groupCommands() {
  return group_commands::kCommands;
}

}  // namespace ctl
