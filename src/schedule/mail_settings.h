#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/refusal.h"
#include "foundation/config_manager.h"
#include "mail/smtp.h"

namespace schedule {

// How this workstation sends mail: section "Mail" of the machine store, which only its owner can read.
struct MailSettings {
  mail::Server server;
  std::string from = {};
};

// Throws mail::MailError that says which setting is missing or wrong.
[[nodiscard]] MailSettings readMailSettings(foundation::ConfigManager& config);
// What is stored, whether mails could be sent with it or not.
[[nodiscard]] MailSettings storedMailSettings(foundation::ConfigManager& config);
// What is missing or wrong.
[[nodiscard]] std::optional<base::Refusal> mailFault(const MailSettings& settings);
// False when the machine store cannot be written. Throws std::invalid_argument for what readMailSettings would refuse.
bool writeMailSettings(foundation::ConfigManager& config, const MailSettings& settings);

[[nodiscard]] std::optional<mail::Encryption> parseEncryption(std::string_view word);  // none, starttls, tls
[[nodiscard]] std::string_view encryptionWord(mail::Encryption encryption);

}  // namespace schedule
