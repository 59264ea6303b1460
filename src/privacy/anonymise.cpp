#include "privacy/anonymise.h"

#include "base/printf.h"

namespace privacy {

namespace {

namespace keys = foundation::keys::calls;

std::string cut(const std::string& number) {
  constexpr std::size_t kCut = Anonymisation::kDigitsCut;
  return number.size() > kCut ? number.substr(0, number.size() - kCut) : std::string();
}

}  // namespace

std::optional<base::DateTime> Anonymisation::doneBefore() {
  return base::DateTime::fromStored(config_.ReadConfigString(keys::AnonymisedBefore));
}

void Anonymisation::keepDoneBefore(std::string_view date) {
  config_.WriteConfigString(date, keys::AnonymisedBefore);
}

std::int64_t Anonymisation::waiting() {
  return main_.openSnapshot("select count(*) from CallsBefore").at(0, 0).toLong();
}

std::string Anonymisation::notDoneBefore(base::DateTime before) {
  const auto done = doneBefore();
  std::string period = base::format("[DateTime] < %s", before.format(jet::kDateLiteral));
  if (done) period += base::format(" and [DateTime] >= %s", done->format(jet::kDateLiteral));
  return period;
}

std::int64_t Anonymisation::wouldChange(base::DateTime before) {
  return main_.openSnapshot("select count(*) from Calls where " + notDoneBefore(before)).at(0, 0).toLong();
}

std::int64_t Anonymisation::apply(base::DateTime before) {
  jet::Transaction transaction(main_);
  const auto done = doneBefore();
  const auto kept = main_.openRecordset("SELECT * FROM CallsBefore");
  const auto calls = main_.openRecordset("SELECT * FROM Calls WHERE " + notDoneBefore(before));
  std::int64_t count = 0;
  for (; !calls->eof(); calls->moveNext(), ++count) {
    const jet::Value number = calls->get("DialNumber");
    kept->addNew();
    kept->set("CallID", calls->get("RecordID"));
    kept->set("DialNumber", number);
    kept->set("Name", calls->get("Name"));
    kept->update();
    calls->edit();
    calls->set("DialNumber", cut(number.toText()));
    calls->set("Name", "");
    calls->update();
  }
  if (!done || *done < before) keepDoneBefore(before.stored());
  transaction.commit();
  return count;
}

std::int64_t Anonymisation::undo() {
  jet::Transaction transaction(main_);
  const auto kept = main_.openRecordset("SELECT * FROM CallsBefore");
  std::int64_t count = 0;
  for (; !kept->eof(); kept->moveNext()) {
    const auto call =
        main_.openRecordset(base::format("SELECT * FROM Calls WHERE RecordID = %d", kept->get("CallID").toLong()));
    if (call->eof()) continue;  // deleted meanwhile
    call->edit();
    call->set("DialNumber", kept->get("DialNumber"));
    call->set("Name", kept->get("Name"));
    call->update();
    ++count;
  }
  main_.execute("delete from CallsBefore");
  keepDoneBefore(config_.ReadConfigString(keys::AnonymisedConfirmed));
  transaction.commit();
  return count;
}

std::int64_t Anonymisation::confirm() {
  jet::Transaction transaction(main_);
  const std::int64_t count = main_.execute("delete from CallsBefore");
  config_.WriteConfigString(config_.ReadConfigString(keys::AnonymisedBefore), keys::AnonymisedConfirmed);
  transaction.commit();
  return count;
}

}  // namespace privacy
