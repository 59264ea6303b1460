#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "alarms/alarm_list.h"
#include "exchange/party_definitions.h"
#include "foundation/change_tags.h"
#include "platform/clock.h"
#include "security/audit_log.h"
#include "tariff/currencies.h"

namespace alarms {

struct DeskServices {
  jet::Database& main;
  foundation::ConfigManager& config;
  const exchange::PartyDefinitions& definitions;
  const tariff::Currencies& currencies;
  const foundation::LanguageFile& texts;
  security::AuditLog& log;
  const platform::Clock& clock;
};

// Sends one mail; the text says why it could not go, empty when it went.
using SendMail = std::function<std::string(const std::string& to, const std::string& subject, const std::string& text)>;

// Judges calls as they are recorded, keeps the alarms in table `Alarms` with an audit entry each, and acts on them:
// mails and commands leave outside of the recording, at the next step; a mail that does not go is tried again for two
// days, by another copy too. Alarms of calls that are older than two days
// (an import of old files) are kept, but nothing is sent.
class AlarmDesk : public ingest::CallListener, public AlarmSink {
 public:
  // All must outlive the desk.
  explicit AlarmDesk(const DeskServices& services) : services_(services) {}

  [[nodiscard]] bool listens() noexcept override;
  void recorded(const ingest::RecordedCall& call) noexcept override;

  // To be called every minute, outside of transactions: what time alone brings about, and what alarms ask to be done.
  // Throws jet::Error.
  void step(const SendMail& mail);

  void raise(const Alarm& alarm) override;
  std::optional<std::unordered_map<std::string, Amounts>> sums(Subject subject, base::DateTime from,
                                                               base::DateTime to) override;

 private:
  void refresh();
  void deleteOld(base::DateTime now);
  // The addresses that a mail is still to go to.
  [[nodiscard]] std::vector<std::string> recipientsOf(const ListedAlarm& alarm, const Rule& rule) const;
  [[nodiscard]] bool mayMail(const std::string& address, base::DateTime now) const;
  void tell(const ListedAlarm& alarm, const std::vector<std::string>& recipients, const SendMail& mail,
            base::DateTime now);
  void command(const ListedAlarm& alarm, const Rule& rule);
  void note(std::string_view what) noexcept;

  DeskServices services_;
  std::unique_ptr<Judge> judge_;
  std::uint64_t rulesVersion_ = 0;
  bool loaded_ = false;
  // No mail is tried before its end.
  struct MailPause {
    base::DateTime end;
    std::int64_t seconds;
  };
  std::map<std::string, MailPause> pauses_;                  // by the address that the last mail did not go to
  std::map<std::int64_t, std::vector<std::string>> unsent_;  // by the alarm: who did not get its mail
  std::optional<base::DateTime> cleared_;                    // the day on which old alarms were last looked for
};

// What a rule would have told of the calls of [from, to), had it been there. Throws jet::Error.
[[nodiscard]] std::vector<ListedAlarm> replay(const DeskServices& services, const Rule& rule, base::DateTime from,
                                              base::DateTime to);

}  // namespace alarms
