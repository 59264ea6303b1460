#include "server/alarm_mail.h"

#include "alarms/mail_text.h"
#include "alarms/run_command.h"
#include "base/path.h"
#include "mail/smtp.h"
#include "schedule/mail_settings.h"

namespace server {

namespace {

std::string throughServer(foundation::ConfigManager& config, const std::string& to, const std::string& subject,
                          const std::string& text) {
  try {
    const schedule::MailSettings settings = schedule::readMailSettings(config);
    mail::send(settings.server, {.from = settings.from, .to = to, .subject = subject, .text = text});
    return {};
  } catch (const mail::MailError& error) {
    return error.what();
  }
}

std::string throughProgram(foundation::ConfigManager& config, const std::string& to, const std::string& subject,
                           const std::string& text) {
  const std::string program = config.ReadConfigString(foundation::keys::MailProgram);
  const std::string from = config.ReadConfigString(foundation::keys::OrganizationEmail);
  const std::string fault =
      alarms::runProgram({base::systemPath(program).string(), "-oi", "-t"}, alarms::mailText(from, to, subject, text));
  return fault.empty() ? fault : program + " " + fault;
}

}  // namespace

alarms::SendMail alarmMailer(foundation::ConfigManager& config) {
  return [&config](const std::string& to, const std::string& subject, const std::string& text) {
    const bool hasServer = !config.ReadConfigString(foundation::keys::mail::Server).empty();
    return hasServer ? throughServer(config, to, subject, text) : throughProgram(config, to, subject, text);
  };
}

}  // namespace server
