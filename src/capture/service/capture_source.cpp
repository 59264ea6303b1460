#include "capture/service/capture_source.h"

#include <algorithm>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <chrono>

#include "capture/format/format.h"
#include "capture/journal/journal_keeping.h"
#include "capture/journal/journal_reader.h"
#include "capture/watch/times.h"

namespace capture {

namespace {

constexpr std::chrono::seconds kTryAgain{1};

std::filesystem::path journalOf(const SourceSurroundings& around, const std::string& id) {
  return around.dataFolder / "journal" / id;
}

Converter makeConverter(const SourceSite& site, const SourceSurroundings& around, const SourceState& known) {
  Parser parser(FormatLibrary::standard().load(site.format), site.settings);
  const int codepage = parser.codepage();
  return Converter(journalOf(around, site.id), std::move(parser), RecordEncoder(site.rules, around.state, codepage),
                   known);
}

}  // namespace

CaptureSource::CaptureSource(SourceSite site, const SourceSurroundings& surroundings)
    : site_(std::move(site)),
      around_(surroundings),
      journal_(journalOf(around_, site_.id)),
      delivery_(site_.id, around_.state, around_.spool),
      converter_(makeConverter(site_, around_, delivery_.recovered())),
      watch_(site_.id, site_.quiet, around_.alarms),
      lastOrigin_(delivery_.recovered().origin) {
  const SourceState& known = delivery_.recovered();
  // What was delivered keeps its positions even when the journal was lost.
  journal_.continueAfter(known.converted);
  JournalReader fresh(journal_.folder(), known.converted + 1);
  while (const auto entry = fresh.next()) {
    if (!entry->origin.empty()) lastOrigin_ = entry->origin;
  }
}

void CaptureSource::start() {
  transport_ = makeTransport(site_.transport, around_.context, shared_from_this());
  transport_->start();
  watch_.started(nowMilliseconds());
}

void CaptureSource::stop() {
  if (transport_) transport_->stop();
}

bool CaptureSource::append(std::vector<JournalEntry> entries) {
  if (closed_) return false;
  const std::int64_t now = nowMilliseconds();
  for (JournalEntry& entry : entries) entry.time = now;
  try {
    journal_.append(entries);
  } catch (const JournalFault& fault) {
    watch_.diskRefused(fault.what());
    return false;
  }
  for (JournalEntry& entry : entries) {
    if (!entry.origin.empty()) lastOrigin_ = entry.origin;
    converter_->offer(std::move(entry));
  }
  around_.wake();
  return true;
}

bool CaptureSource::sync() {
  try {
    journal_.sync();
  } catch (const JournalFault& fault) {
    watch_.diskRefused(fault.what());
    return false;
  }
  watch_.diskTook();
  return true;
}

bool CaptureSource::takeNow(const std::vector<TakenLine>& lines, Durability durability) {
  if (lines.empty()) return true;
  std::vector<JournalEntry> entries;
  entries.reserve(lines.size());
  for (const TakenLine& line : lines) entries.push_back({0, 0, EntryKind::Line, line.origin, line.text});
  return append(std::move(entries)) && (durability == Durability::Soon || sync());
}

asio::awaitable<void> CaptureSource::tryAgainSoon() {
  asio::steady_timer timer(around_.context, kTryAgain);
  asio::error_code ignored;
  co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
}

asio::awaitable<void> CaptureSource::take(std::vector<TakenLine> lines, Durability durability) {
  while (!takeNow(lines, Durability::Soon)) {
    if (closed_) co_return;
    co_await tryAgainSoon();
  }
  while (durability == Durability::AtOnce && !sync() && !closed_) co_await tryAgainSoon();
}

// A break that cannot be noted costs at worst a call that is counted twice, which the next line's note mends.
void CaptureSource::breakCame() {
  append({{0, 0, EntryKind::Break, {}, {}}});
  watch_.reconnected();
}

void CaptureSource::connected(bool yes, const std::string& what) {
  if (connected_ != yes || connection_ != what) around_.wake();
  connected_ = yes;
  connection_ = what;
}

void CaptureSource::lost(std::uint64_t bytes) {
  watch_.lost(bytes);
}

std::string CaptureSource::lastOrigin() const {
  return lastOrigin_;
}

void CaptureSource::forEachOrigin(std::int64_t time,
                                  const std::function<void(const std::string&, std::int64_t)>& use) const {
  JournalReader reader = JournalReader::since(journal_.folder(), time);
  while (const auto entry = reader.next()) {
    if (!entry->origin.empty()) use(entry->origin, entry->time);
  }
}

bool CaptureSource::isFileTaken(const std::string& name) const {
  return around_.state.isTaken(site_.id, name);
}

void CaptureSource::setFileTaken(const std::string& name) {
  around_.state.setTaken(site_.id, name, nowMilliseconds());
}

// The time at which a waiting line is settled is noted in the journal, so that a restart settles it at the same place.
// It is measured by the steady clock: one that was set back must not hold calls for hours.
void CaptureSource::addTickWhenDue() {
  const auto due = converter_->due();
  const auto now = std::chrono::steady_clock::now();
  if (due != tickFor_) {
    tickFor_ = due;
    if (due) tickAt_ = now + std::chrono::milliseconds(std::max<std::int64_t>(0, *due * 1000 - nowMilliseconds()));
  }
  if (!tickFor_ || now < tickAt_ || closed_) return;
  JournalEntry tick{0, std::max(nowMilliseconds(), *tickFor_ * 1000), EntryKind::Tick, {}, {}};
  journal_.append(std::span(&tick, 1));
  converter_->offer(std::move(tick));
  tickFor_.reset();
}

bool CaptureSource::syncAll() {
  sync();
  return false;
}

bool CaptureSource::work() {
  bool more = false;
  try {
    addTickWhenDue();
    journal_.sync();
    more = converter_->convert(journal_.lastPosition(),
                               [this](const LineResult& result, std::int64_t arrival) { observe(result, arrival); });
    watch_.diskTook();
  } catch (const std::exception& fault) {
    watch_.diskRefused(fault.what());
    return false;
  }
  if (converter_->batch().first == 0) return more;
  delivery_.handOver(converter_->batch());
  converter_->handedOver();
  return more;
}

void CaptureSource::observe(const LineResult& result, std::int64_t arrival) {
  watch_.line(result, arrival);
}

void CaptureSource::watch() {
  watch_.look(nowMilliseconds());
}

std::function<void()> CaptureSource::keepingJob(int keepDays) const {
  const KeepingRules rules{nowMilliseconds(), keepDays, delivery_.recovered().converted};
  return [folder = journal_.folder(), rules] { keepJournal(folder, rules); };
}

void CaptureSource::forgetOldPositions() const {
  const auto files = listJournalFiles(journal_.folder());
  const auto oldest = files.empty() ? std::nullopt : firstPosition(files.front());
  if (oldest) around_.state.forgetRecorded(site_.id, *oldest);
}

void CaptureSource::readFormatAgain() {
  converter_.emplace(makeConverter(site_, around_, delivery_.recovered()));
}

}  // namespace capture
