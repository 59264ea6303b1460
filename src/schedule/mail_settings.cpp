#include "schedule/mail_settings.h"

#include <algorithm>
#include <stdexcept>

#include "mail/address.h"

namespace schedule {

namespace {

namespace keys = foundation::keys::mail;

struct EncryptionWord {
  mail::Encryption encryption;
  std::string_view word;
};
constexpr EncryptionWord kWords[] = {
    {mail::Encryption::None, "none"}, {mail::Encryption::StartTls, "starttls"}, {mail::Encryption::Tls, "tls"}};

struct TextSetting {
  const foundation::TextKey& key;
  std::string mail::Server::*member;
};
constexpr TextSetting kTexts[] = {{keys::Server, &mail::Server::host},
                                  {keys::User, &mail::Server::user},
                                  {keys::Password, &mail::Server::password},
                                  {keys::Authorities, &mail::Server::authorities}};

// Letters of a host's name or number: whatever else is typed would become another part of an address.
bool isHost(std::string_view host) {
  return !host.empty() && host.size() <= 253 && std::ranges::all_of(host, [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == '-' ||
           c == ':' || c == '[' || c == ']';
  });
}

}  // namespace

std::optional<mail::Encryption> parseEncryption(std::string_view word) {
  for (const EncryptionWord& known : kWords) {
    if (known.word == word) return known.encryption;
  }
  return std::nullopt;
}

std::string_view encryptionWord(mail::Encryption encryption) {
  return std::ranges::find(kWords, encryption, &EncryptionWord::encryption)->word;
}

std::optional<base::Refusal> mailFault(const MailSettings& settings) {
  if (!isHost(settings.server.host)) {
    return base::Refusal("IDS_REFUSED_MAIL_SERVER", "\"%s\" is no mail server's name.", settings.server.host);
  }
  if (settings.server.port < 1 || settings.server.port > 65535) {
    return base::Refusal("IDS_REFUSED_MAIL_PORT", "The mail server's port is from 1 to 65535.");
  }
  if (!mail::isAddress(settings.from)) {
    return base::Refusal("IDS_REFUSED_MAIL_FROM", "\"%s\" is no mail address to send from.", settings.from);
  }
  if (settings.server.encryption == mail::Encryption::None && !settings.server.password.empty()) {
    return base::Refusal("IDS_MAIL_PLAIN_PASSWORD", "A password is not sent without encryption: give starttls or tls.");
  }
  return std::nullopt;
}

MailSettings storedMailSettings(foundation::ConfigManager& config) {
  MailSettings settings;
  for (const TextSetting& setting : kTexts) settings.server.*setting.member = config.ReadConfigString(setting.key);
  settings.server.port = config.ReadConfigInt(keys::Port);
  settings.server.encryption =
      parseEncryption(config.ReadConfigString(keys::Encryption)).value_or(mail::Encryption::StartTls);
  settings.from = config.ReadConfigString(keys::From);
  return settings;
}

MailSettings readMailSettings(foundation::ConfigManager& config) {
  MailSettings settings = storedMailSettings(config);
  if (settings.server.host.empty()) {
    throw base::Refused<mail::MailError>(
        base::Refusal("IDS_MAIL_NOT_SET", "No mail server is set on this machine: see tallyctl mail set --help."));
  }
  if (const auto fault = mailFault(settings)) throw base::Refused<mail::MailError>(*fault);
  return settings;
}

bool writeMailSettings(foundation::ConfigManager& config, const MailSettings& settings) {
  if (const auto fault = mailFault(settings)) throw base::Refused<std::invalid_argument>(*fault);
  bool written = true;
  for (const TextSetting& setting : kTexts) {
    written = config.WriteConfigString(settings.server.*setting.member, setting.key) && written;
  }
  written = config.WriteConfigInt(settings.server.port, keys::Port) && written;
  written = config.WriteConfigString(encryptionWord(settings.server.encryption), keys::Encryption) && written;
  return config.WriteConfigString(settings.from, keys::From) && written;
}

}  // namespace schedule
