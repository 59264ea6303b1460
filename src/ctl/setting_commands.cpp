#include <optional>
#include <stdexcept>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "foundation/settings_catalogue.h"

namespace ctl {

namespace setting_commands {

using foundation::Setting;
using foundation::SettingType;
using foundation::Store;

struct Address {
  std::string section;
  std::string key;
  Store store;
  const Setting* known;  // null: nothing is known of it, or it lives in the other store
};

std::string_view storeName(Store store) {
  return store == foundation::StoreDatabase ? "database" : "machine";
}

Store storeOf(std::string_view where) {
  if (where == "database") return foundation::StoreDatabase;
  if (where == "machine") return foundation::StoreMachine;
  throw WrongUsage(base::format("--where takes machine or database, not \"%s\".", where));
}

// Without --where a known setting is looked for where it lives. The database finds a setting by a criterion with its
// name between quotation marks, so a name holds none.
Address addressOf(const Arguments& arguments) {
  const std::string section = arguments.text("--section", "general");
  const std::string key = arguments.text("KEY");
  if ((section + key).find('"') != std::string::npos) {
    throw WrongUsage(
        base::format("The name of a setting or section holds no quotation mark: %s", section + "\\" + key));
  }
  const Setting* known = foundation::findSetting(section, key);
  const auto where = arguments.find("--where");
  if (!where && known == nullptr) {
    throw WrongUsage(
        base::format("%s is no known setting of section %s (see tallyctl setting list). Say where it is: --where "
                     "machine or --where database.",
                     key, section));
  }
  const Store store = where ? storeOf(*where) : known->store;
  return {section, key, store, known != nullptr && known->store == store ? known : nullptr};
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
  std::string text = base::format("%s is not set in section %s of the %s store.", address.key, address.section,
                                  storeName(address.store));
  const std::string holds = address.known != nullptr ? foundation::defaultText(*address.known) : std::string();
  if (!holds.empty()) text += base::format(" The default %s holds.", holds);
  return text;
}

std::string cannotWriteStore(Context& context) {
  return base::format("The machine store %s cannot be written. Check the rights to it and the room on its disk.",
                      context.machineStore().file().string());
}

// What a store holds under a name: a text, a number, or both side by side.
struct Stored {
  std::optional<std::string> text;
  std::optional<std::int32_t> number;

  [[nodiscard]] bool found() const { return text || number; }
  [[nodiscard]] std::string shown() const { return text ? *text : std::to_string(*number); }
};

Stored readMachine(const Address& address, Context& context) {
  const foundation::MachineStore& store = context.machineStore();
  return {store.readString(address.section, address.key), store.readInt(address.section, address.key)};
}

// A row for a number has no text or an empty one.
Stored readDatabase(const Address& address, Context& context) {
  const auto rows = context.main().openRecordset("SELECT * FROM Config");
  rows->findFirst(base::format("Path = \"%s\\%s\"", address.section, address.key));
  if (rows->noMatch()) return {};
  Stored stored;
  const jet::Value number = rows->get("Int_Value");
  if (!number.isNull()) stored.number = static_cast<std::int32_t>(number.toLong());
  std::string text = rows->get("String_Value").toText();
  if (!text.empty() || !stored.number) stored.text = std::move(text);
  return stored;
}

Stored read(const Address& address, Context& context) {
  return address.store == foundation::StoreDatabase ? readDatabase(address, context) : readMachine(address, context);
}

std::string commandToSet(const Address& address, const std::string& value) {
  return base::format("tallyctl setting set %s '%s' --section '%s'", address.key, value, address.section);
}

// The value that is in force; nothing when none is stored. Throws Failure for one of the wrong type, which readers of
// the setting do not see.
std::optional<std::string> valueOf(const Address& address, const Stored& stored) {
  if (!stored.found()) return std::nullopt;
  if (address.known == nullptr) return stored.shown();
  const bool integer = address.known->type == SettingType::Integer;
  if (integer && stored.number) return std::to_string(*stored.number);
  if (!integer && stored.text) return stored.text;
  throw Failure(
      base::format("%s of section %s is stored as a %s (%s), which is not in force: it must be a %s. Mend it "
                   "with: %s",
                   address.key, address.section, integer ? "text" : "number", stored.shown(),
                   integer ? "number" : "text", commandToSet(address, stored.shown())));
}

int get(const Invocation& call) {
  const Address address = addressOf(call.arguments);
  openFor(address, kViewSettings, call.context);
  const auto value = valueOf(address, read(address, call.context));
  if (!value) throw Failure(notSet(address));
  call.out << *value << '\n';
  if (address.known != nullptr && !value->empty() && *value == foundation::defaultText(*address.known)) {
    call.context.person().messageBox(base::format("%s is the default of %s.", *value, address.key));
  }
  return 0;
}

std::string typeText(const Setting& setting) {
  switch (setting.type) {
    case SettingType::Integer: {
      using Range = std::numeric_limits<std::int32_t>;
      if (setting.least == Range::min() && setting.most == Range::max()) return "number";
      return base::format("number, %d to %d", setting.least, setting.most);
    }
    case SettingType::Binary:
      return "binary";
    case SettingType::String:
      break;
  }
  if (setting.form == foundation::SettingForm::Folder) return "folder";
  if (setting.form == foundation::SettingForm::Secret) return "password";
  return setting.form == foundation::SettingForm::Decimal ? "decimal number" : "text";
}

std::string listedValue(const Address& address, Context& context) {
  const Stored stored = read(address, context);
  if (!stored.found()) return {};
  if (address.known->form == foundation::SettingForm::Secret) return "(set)";
  try {
    return *valueOf(address, stored);
  } catch (const Failure&) {
    return base::format("%s (of the wrong type)", stored.shown());
  }
}

int list(const Invocation& call) {
  Table table({"Section", "Key", "Store", "Type", "Value", "Default"});
  for (const Setting* each : foundation::knownSettings()) {
    const Setting& setting = *each;
    // A name with a placeholder stands for many settings.
    const bool single = setting.key.find("%d") == std::string_view::npos &&
                        setting.key.find("%s") == std::string_view::npos &&
                        setting.section.find('%') == std::string_view::npos;
    const Address address{std::string(setting.section), std::string(setting.key), setting.store, &setting};
    table.add({address.section, address.key, std::string(storeName(setting.store)), typeText(setting),
               single && setting.type != SettingType::Binary ? listedValue(address, call.context) : std::string(),
               foundation::defaultText(setting)});
  }
  call.print(table);
  return 0;
}

// What is to be stored, and whether as a number: the catalogue decides for settings that it knows.
struct NewValue {
  std::string text;
  bool integer;
};

NewValue newValue(const Address& address, const Arguments& arguments) {
  const std::string typed = arguments.text("VALUE");
  const bool asked = isInteger(arguments);
  if (address.known == nullptr) {
    if (asked && !foundation::wholeNumber(typed)) {
      throw WrongUsage(base::format("--type int needs a whole number of 32 bits, not \"%s\".", typed));
    }
    return {typed, asked};
  }
  const bool integer = address.known->type == SettingType::Integer;
  if (arguments.has("--type") && asked != integer) {
    throw WrongUsage(base::format("%s is kept as a %s; leave --type out.", address.key, integer ? "number" : "text"));
  }
  try {
    return {foundation::storableValue(*address.known, typed), integer};
  } catch (const std::invalid_argument& wrong) {
    throw WrongUsage(base::format("%s.", wrong.what()));
  }
}

void warnOfUnknown(const Address& address, Context& context) {
  if (address.known != nullptr) return;
  const Setting* elsewhere = foundation::findSetting(address.section, address.key);
  context.person().messageBox(
      elsewhere != nullptr
          ? base::format("%s is stored, but Tallybook reads it from the %s store.", address.key,
                         storeName(elsewhere->store))
          : base::format("%s is stored, but it is no known setting of section %s.", address.key, address.section));
}

int set(const Invocation& call) {
  const Address address = addressOf(call.arguments);
  const NewValue value = newValue(address, call.arguments);
  openFor(address, kChangeSettings, call.context);
  foundation::ConfigManager& config = call.context.config();
  const bool written =
      value.integer
          ? config.WriteConfigInt(*foundation::wholeNumber(value.text), address.key, address.section, address.store)
          : config.WriteConfigString(value.text, address.key, address.section, address.store);
  if (!written) throw Failure(cannotWriteStore(call.context));
  warnOfUnknown(address, call.context);
  return 0;
}

void removeFromDatabase(const Address& address, Context& context) {
  jet::Transaction transaction(context.main());
  const auto rows = context.main().openRecordset("SELECT * FROM Config");
  rows->findFirst(base::format("Path = \"%s\\%s\"", address.section, address.key));
  if (rows->noMatch()) throw Failure(notSet(address));
  rows->remove();
  context.document().tags().Touch("Config");
  transaction.commit();
}

int remove(const Invocation& call) {
  const Address address = addressOf(call.arguments);
  Context& context = call.context;
  openFor(address, kChangeSettings, context);
  if (address.store == foundation::StoreDatabase) {
    removeFromDatabase(address, context);
  } else if (!readMachine(address, context).found()) {
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
    {.name = "--type", .help = "Of a setting that is not known: string (the default) or int", .valueName = "TYPE"},
};

constexpr Command kCommands[] = {
    {"setting list",
     "List the known settings, their values and defaults",
     "tallyctl setting list",
     {},
     kViewSettings,
     list},
    {"setting get",
     "Print a setting",
     "tallyctl setting get PathMonitor --section general --where machine",
     kNamed,
     {},
     get},
    {"setting set",
     "Change a setting",
     "tallyctl setting set OrganizationTAXE 19\n"
     "tallyctl setting set Sterge 365 --section Calls",
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

}  // namespace setting_commands

std::span<const Command> settingCommands() {
  return setting_commands::kCommands;
}

}  // namespace ctl
