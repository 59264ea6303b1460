#pragma once

#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "base/journal_line.h"
#include "foundation/config_manager.h"
#include "schedule/report_maker.h"
#include "schedule/schedule_table.h"

namespace schedule {

// Sends the reports that are due. Several copies may run on one database: each report goes once. A time that was missed
// is made up once. A mail that did not go is tried again, after longer and longer waits, for the recipients who lack
// it; after a day it is given up. Mails travel on a thread of their own, all else happens in step().
class Runner {
 public:
  // `say` takes a line for the journal.
  Runner(const ReportMaker::Parts& parts, foundation::ConfigManager& config, base::Say say);
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;
  ~Runner();  // waits for a mail that is on its way

  // Does what can be done now: takes note of a mail that went or failed, begins with the next one that is due. Returns
  // at once while a mail is on its way. Throws jet::Error.
  void step();
  // True while a mail is on its way.
  [[nodiscard]] bool sending() const { return job_.has_value(); }
  // Makes the schedule due now, whatever its days say, and sends it before it returns. False when it did not go to
  // everybody; the reason was said and is kept with it. `meanwhile` is called every tenth of a second while mails
  // travel.
  bool runNow(Schedule schedule, const std::function<void()>& meanwhile = {});

 private:
  struct Job {
    Schedule schedule;
    MadeReport report;
    mail::Server server;
    std::vector<std::string> left;      // recipients, the one whose mail is on its way first
    std::vector<std::string> refused;   // whose mail did not go
    std::string fault;                  // of the last of these
    std::future<std::string> transfer;  // what went wrong; empty: sent
  };

  std::optional<Schedule> claimDue();
  void begin(Schedule schedule);
  void sendNext();
  void noteTransfer();
  void leaveRest();
  void finish();
  void fail(Schedule& schedule, const std::string& fault);
  void release(Schedule& schedule);

  ReportMaker maker_;
  ScheduleTable table_;
  security::AuditLog& log_;
  const platform::Clock& clock_;
  foundation::ConfigManager& config_;
  base::Say say_;
  std::optional<Job> job_;
  bool closing_ = false;
};

}  // namespace schedule
