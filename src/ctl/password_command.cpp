#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"

namespace ctl {

namespace password_command {

int passwd(const Invocation& call) {
  Context& context = call.context;
  // Everybody may change the own password, whatever the rights.
  context.prompt().changeFromEnvironment();
  context.open(Duty::Administer);
  context.requireWritable();
  server::CServerDoc& document = context.document();
  // An expired password was changed on the way in.
  if (!document.login().passwordChanged() && !document.login().ChangePassword(false)) {
    throw Failure(
        base::format("The password of %s was not changed. Without a terminal, give the current one in "
                     "TALLYBOOK_PASSWORD and the new one in TALLYBOOK_NEW_PASSWORD.",
                     document.user().CurrentUserName));
  }
  // A user who logs in automatically stays able to.
  foundation::ConfigManager& config = context.config();
  const std::string automatic = config.ReadConfigString(foundation::keys::AutoLoginUser);
  if (!automatic.empty() && automatic == document.user().CurrentUserName) {
    config.WriteConfigString(document.user().password, foundation::keys::AutoLoginPassword);
  }
  call.out << base::format("The password of %s is changed.\n", document.user().CurrentUserName);
  return 0;
}

constexpr Command kCommands[] = {
    {"passwd",
     "Change your own password",
     "tallyctl passwd\n"
     "TALLYBOOK_PASSWORD=old TALLYBOOK_NEW_PASSWORD=new tallyctl --user ana passwd",
     {},
     {},
     passwd},
};

}  // namespace password_command

std::span<const Command> passwordCommands() {
  return password_command::kCommands;
}

}  // namespace ctl
