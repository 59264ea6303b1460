#include <stdlib.h>

#include <ostream>
#include <stdexcept>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "foundation/refusal_text.h"
#include "schedule/mail_settings.h"

namespace ctl {

namespace mail_commands {

using schedule::MailSettings;

MailSettings stored(const Invocation& call) {
  try {
    return schedule::readMailSettings(call.context.config());
  } catch (const mail::MailError& missing) {
    throw Failure(foundation::errorText(missing, call.context.language()));
  }
}

int show(const Invocation& call) {
  const MailSettings settings = stored(call);
  Table table({"Server", "Port", "Encryption", "User", "Password", "From", "Authorities"});
  table.add({settings.server.host, std::int64_t{settings.server.port},
             std::string(schedule::encryptionWord(settings.server.encryption)), settings.server.user,
             std::string(settings.server.password.empty() ? "none" : "kept"), settings.from,
             settings.server.authorities});
  call.print(table);
  return 0;
}

// From TALLYBOOK_MAIL_PASSWORD, else the terminal: a command line can be read by everybody on the machine.
std::string passwordFor(const std::string& user) {
  if (const char* given = ::getenv("TALLYBOOK_MAIL_PASSWORD")) return given;
  const auto typed = askPassword(base::format("Password of %s at the mail server: ", user));
  if (!typed) throw Failure("Without a terminal, give the mail server's password in TALLYBOOK_MAIL_PASSWORD.");
  return *typed;
}

int set(const Invocation& call) {
  MailSettings settings;
  settings.server.host = call.arguments.text("SERVER");
  settings.from = call.arguments.text("--from");
  const auto encryption = schedule::parseEncryption(call.arguments.text("--encryption", "starttls"));
  if (!encryption) throw WrongUsage("--encryption takes starttls, tls or none.");
  settings.server.encryption = *encryption;
  const std::int64_t usual = *encryption == mail::Encryption::Tls ? 465 : 587;
  settings.server.port = static_cast<int>(call.arguments.integer("--port", usual, 1, 65535));
  settings.server.authorities = call.arguments.text("--authorities");
  settings.server.user = call.arguments.text("--login");
  if (!settings.server.user.empty()) settings.server.password = passwordFor(settings.server.user);
  try {
    if (!schedule::writeMailSettings(call.context.config(), settings)) {
      throw Failure(
          base::format("The machine store %s cannot be written.", call.context.machineStore().file().string()));
    }
  } catch (const std::invalid_argument& wrong) {
    throw WrongUsage(foundation::errorText(wrong, call.context.language()));
  }
  return 0;
}

int test(const Invocation& call) {
  const MailSettings settings = stored(call);
  mail::Message message;
  message.from = settings.from;
  message.to = call.arguments.text("ADDRESS");
  message.subject = "Tallybook";
  message.text = "This machine can send mail.\n";
  try {
    mail::send(settings.server, message);
  } catch (const mail::MailError& fault) {
    throw Failure(fault.what());
  }
  call.out << base::format("%s:%d took the mail to %s.\n", settings.server.host, settings.server.port, message.to);
  return 0;
}

constexpr OptionSpec kSetOptions[] = {
    {.name = "SERVER", .help = "The mail server's name", .required = true, .valueName = "HOST"},
    {.name = "--from", .help = "Address that the mails come from", .required = true, .valueName = "ADDRESS"},
    {.name = "--encryption", .help = "starttls (the default), tls or none", .valueName = "WORD"},
    {.name = "--port", .help = "Port (default 587, with tls 465)", .valueName = "PORT"},
    {.name = "--login",
     .help = "User at the mail server; password from TALLYBOOK_MAIL_PASSWORD or a prompt",
     .valueName = "USER"},
    {.name = "--authorities", .help = "PEM file of the certificates to trust, not the system's", .valueName = "FILE"},
};
constexpr OptionSpec kTestOptions[] = {
    {.name = "ADDRESS", .help = "Where to send it", .required = true, .valueName = "ADDRESS"}};

constexpr Command kCommands[] = {
    {"mail show",
     "Show how this machine sends mail, without the password",
     "tallyctl mail show",
     {},
     kViewSettings,
     show},
    {"mail set", "Set how this machine sends mail; kept in its machine store, the password too",
     "tallyctl mail set smtp.example.com --from tallybook@example.com --login tallybook\n"
     "tallyctl mail set localhost --port 25 --encryption none --from tallybook@example.com",
     kSetOptions, kChangeSettings, set},
    {"mail test", "Send a mail, to see that it arrives", "tallyctl mail test ana@example.com", kTestOptions,
     kChangeSettings, test},
};

}  // namespace mail_commands

std::span<const Command> mailCommands() {
  return mail_commands::kCommands;
}

}  // namespace ctl
