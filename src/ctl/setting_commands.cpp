#include <charconv>
#include <optional>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "foundation/settings_catalogue.h"

namespace ctl {

namespace {

using foundation::Store;

struct Address {
  std::string section;
  std::string key;
  Store store;
};

// Without --where a known setting is looked for where it lives.
Address addressOf(const Arguments& arguments) {
  Address address{arguments.text("--section", "general"), arguments.text("KEY"), foundation::StoreMachine};
  const std::string where = arguments.text("--where");
  if (where.empty()) {
    const auto known = foundation::storeOf(address.section, address.key);
    if (!known) {
      throw WrongUsage(
          base::format("%s is no known setting of section %s. Say where it is: --where machine or --where "
                       "database.",
                       address.key, address.section));
    }
    address.store = *known;
  } else if (where == "database") {
    address.store = foundation::StoreDatabase;
  } else if (where != "machine") {
    throw WrongUsage(base::format("--where takes machine or database, not \"%s\".", where));
  }
  return address;
}

bool isInteger(const Arguments& arguments) {
  const std::string type = arguments.text("--type", "string");
  if (type != "int" && type != "string")
    throw WrongUsage(base::format("--type takes int or string, not \"%s\".", type));
  return type == "int";
}

// The machine store is guarded by its file's mode and can be mended while the database cannot be opened.
void openFor(const Address& address, const Access& access, Context& context) {
  if (address.store != foundation::StoreDatabase) return;
  context.require(access);
  if (access.right == security::RightChange) context.requireWritable();
}

std::string notSet(const Address& address) {
  return base::format("%s is not set in section %s of the %s store.", address.key, address.section,
                      address.store == foundation::StoreDatabase ? "database" : "machine");
}

std::string cannotWriteStore(Context& context) {
  return base::format("The machine store %s cannot be written. Check the rights to it and the room on its disk.",
                      context.machineStore().file().string());
}

std::optional<std::string> readMachine(const Address& address, Context& context) {
  const foundation::MachineStore& store = context.machineStore();
  if (auto text = store.readString(address.section, address.key)) return text;
  if (const auto number = store.readInt(address.section, address.key)) return std::to_string(*number);
  return std::nullopt;
}

std::optional<std::string> readDatabase(const Address& address, Context& context) {
  const auto rows = context.main().openRecordset("SELECT * FROM Config");
  rows->findFirst(base::format("Path = \"%s\\%s\"", address.section, address.key));
  if (rows->noMatch()) return std::nullopt;
  const jet::Value number = rows->get("Int_Value");
  const std::string text = rows->get("String_Value").toText();
  return text.empty() && !number.isNull() ? number.toText() : text;
}

int get(const Invocation& call) {
  const Address address = addressOf(call.arguments);
  openFor(address, kViewSettings, call.context);
  const auto value = address.store == foundation::StoreDatabase ? readDatabase(address, call.context)
                                                                : readMachine(address, call.context);
  if (!value) throw Failure(notSet(address));
  call.out << *value << '\n';
  return 0;
}

int set(const Invocation& call) {
  const Address address = addressOf(call.arguments);
  const std::string value = call.arguments.text("VALUE");
  const bool integer = isInteger(call.arguments);
  std::int32_t number = 0;
  if (integer) {
    const auto [end, fault] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (fault != std::errc() || end != value.data() + value.size()) {
      throw WrongUsage(base::format("--type int needs a whole number of 32 bits, not \"%s\".", value));
    }
  }
  openFor(address, kChangeSettings, call.context);
  foundation::ConfigManager& config = call.context.config();
  const bool written = integer ? config.WriteConfigInt(number, address.key, address.section, address.store)
                               : config.WriteConfigString(value, address.key, address.section, address.store);
  if (!written) throw Failure(cannotWriteStore(call.context));
  return 0;
}

void removeFromDatabase(const Address& address, Context& context) {
  jet::Transaction transaction(context.main());
  const std::int64_t removed =
      context.main().execute(base::format("delete from Config where Path = \"%s\\%s\"", address.section, address.key));
  if (removed == 0) throw Failure(notSet(address));
  context.document().tags().Touch("Config");
  transaction.commit();
}

int remove(const Invocation& call) {
  const Address address = addressOf(call.arguments);
  Context& context = call.context;
  openFor(address, kChangeSettings, context);
  if (address.store == foundation::StoreDatabase) {
    removeFromDatabase(address, context);
  } else if (!readMachine(address, context)) {
    throw Failure(notSet(address));
  } else if (!context.machineStore().erase(address.section, address.key)) {
    throw Failure(cannotWriteStore(context));
  }
  return 0;
}

constexpr OptionSpec kKey = {.name = "KEY", .help = "Name of the setting", .required = true};
constexpr OptionSpec kSection = {.name = "--section", .help = "Section (default general)", .valueName = "S"};
constexpr OptionSpec kWhere = {
    .name = "--where", .help = "Store: machine or database (default: where the setting lives)", .valueName = "STORE"};
constexpr OptionSpec kNamed[] = {kKey, kSection, kWhere};
constexpr OptionSpec kValued[] = {
    kKey,
    {.name = "VALUE", .help = "New value", .required = true},
    kSection,
    kWhere,
    {.name = "--type", .help = "string (the default) or int", .valueName = "TYPE"},
};

constexpr Command kCommands[] = {
    {"setting get",
     "Print a setting",
     "tallyctl setting get PathMonitor --section general --where machine",
     kNamed,
     {},
     get},
    {"setting set",
     "Change a setting",
     "tallyctl setting set OrganizationTAXE 19 --where database\n"
     "tallyctl setting set Sterge 365 --section Calls --where database --type int",
     kValued,
     {},
     set},
    {"setting delete",
     "Delete a setting, so that its default holds",
     "tallyctl setting delete OutFile --where machine",
     kNamed,
     {},
     remove},
};

}  // namespace

std::span<const Command> settingCommands() {
  return kCommands;
}

}  // namespace ctl
