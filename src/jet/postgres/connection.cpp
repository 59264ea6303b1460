#include "jet/postgres/connection.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include "jet/engine/faults.h"
#include "jet/postgres/names.h"
#include "jet/postgres/sql_states.h"

namespace jet::postgres {

namespace {

// How often the watcher is called.
constexpr std::chrono::milliseconds kWatchStep{4};
// A server that says nothing for so long is silent; one that was asked to end a statement is expected sooner.
constexpr std::chrono::seconds kSilence{15};
constexpr std::chrono::seconds kAfterCancel{5};
// Names of statements that are dropped in one go.
constexpr std::size_t kManyDropped = 50;

bool isLoss(std::string_view state) {
  return state.starts_with("08") || state == "57P01" || state == "57P02" || state == "57P03" || state == "57P05";
}

}  // namespace

Connection::Connection(const Address& address, OpenMode mode)
    : address_(address),
      place_(address.describe()),
      readOnly_(mode == OpenMode::ReadOnly),
      handle_(connectTo(address)) {
  configure();
}

bool Connection::reconnect() {
  constexpr std::chrono::milliseconds kMoment{100};
  if (!attempt_) attempt_.emplace(address_);
  try {
    Handle handle;
    if (!attempt_->endsWithin(kMoment, handle)) return false;
    attempt_.reset();
    forgetLost();
    handle_ = std::move(handle);
    configure();
    return true;
  } catch (const Error& error) {
    attempt_.reset();
    lost_ = true;
    if (error.connectionLost()) return false;
    throw;
  }
}

// What the lost connection knew, and what was on its way.
void Connection::forgetLost() {
  forgetBulk();
  lost_ = guarded_ = running_ = copying_ = canceled_ = false;
  canceling_.reset();
  reader_ = nullptr;
  statement_ = nullptr;
  fault_.reset();
  earlier_.clear();
  dropped_.clear();
  ++number_;
}

void Connection::configure() {
  PQsetNoticeProcessor(
      handle(), [](void*, const char*) {}, nullptr);
  PQsetnonblocking(handle(), 1);
  Parameters schema;
  schema.addText(quotedName(address_.schema()));
  // Compiling a statement pays for reports over hours only, and holds every list up. Memory for the sums of 100,000
  // numbers that were dialled.
  run({"SET lock_timeout = '10s'", "SET DateStyle = 'ISO, YMD'", "SET jit = off", "SET client_min_messages = 'error'",
       "SET statement_timeout = 0", "SET work_mem = '32MB'",
       readOnly_ ? "SET default_transaction_read_only = on" : "SET default_transaction_read_only = off",
       "SELECT set_config('search_path', $1, false)"},
      schema);
}

void Connection::requireAlive(std::string_view text) {
  if (lost_ || PQstatus(handle()) == CONNECTION_BAD) failLost(text);
}

void Connection::failLost(std::string_view text) {
  lose(oneLine(PQerrorMessage(handle())), text);
}

void Connection::giveUp() {
  lose("the server does not answer", text_);
}

void Connection::lose(const std::string& reason, std::string_view text) {
  lost_ = true;
  running_ = false;
  copying_ = false;
  reader_ = nullptr;
  fault_.reset();
  throw Error(
      Error::kConnectionLost,
      "Connection to the database " + place_ + " lost" + (reason.empty() ? std::string(".") : " (" + reason + ")."),
      std::string(text));
}

void Connection::fail(const PGresult* result, std::string_view text) {
  const std::string statement(text);
  const char* const field = PQresultErrorField(result, PG_DIAG_SQLSTATE);
  const std::string_view state = field != nullptr ? field : "";
  const std::string reason = oneLine(PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY));
  if (isLoss(state) || PQstatus(handle()) == CONNECTION_BAD) failLost(text);
  if (state == "23505") throw engine::duplicateKeyFault(place_, reason, statement);
  if (state == "55P03" || state == "40P01" || state == "40001") throw engine::lockedFault(place_, statement);
  if (state == "57014" && canceled_) throw engine::canceledFault(statement);
  if (state == "25006") throw engine::readOnlyFault(place_, statement);
  if (state == "42501") throw Error(3027, place_ + ": this user has no right to do that (" + reason + ").", statement);
  if (state == "25P02") {
    throw Error(3000, place_ + ": the changes begun were undone by an earlier fault. Begin them again.", statement);
  }
  if (state == "53100") throw engine::fullDiskFault(place_, statement);
  if (state == kConversionState) throw Error(3421, reason, statement);
  if (state == kTextTooLongState) throw Error(3163, reason, statement);
  if (state == kOutOfRangeState) throw Error(3421, "Overflow.", statement);
  throw Error(3000, place_ + ": " + reason, statement);
}

// PQsend...: 1 when the statement is on its way.
void Connection::sent(int answer) {
  if (answer == 1) return;
  if (PQstatus(handle()) == CONNECTION_BAD) failLost(text_);
  throw Error(3000, place_ + ": " + oneLine(PQerrorMessage(handle())), text_);
}

void Connection::send(std::string_view sql, const Parameters& parameters) {
  constexpr int kBinary = 1;
  sent(PQsendQueryParams(handle(), std::string(sql).c_str(), parameters.count(), nullptr, parameters.values(), nullptr,
                         nullptr, kBinary));
}

void Connection::sendPrepared(Prepared& statement, const Parameters& parameters) {
  constexpr int kBinary = 1;
  statement_ = &statement;
  told_ = statement.name.empty() || statement.connection != number_;
  if (told_) {
    statement.name = "s" + std::to_string(++lastName_);
    statement.connection = number_;
    sent(PQsendPrepare(handle(), statement.name.c_str(), statement.sql.c_str(), 0, nullptr));
    ++answersBefore_;
  }
  sent(PQsendQueryPrepared(handle(), statement.name.c_str(), parameters.count(), parameters.values(), nullptr, nullptr,
                           kBinary));
}

void Connection::beginRun(std::string_view text) {
  settle();
  waitForCancel();
  requireAlive(text);
  ++runs_;
  text_ = text;
  canceled_ = false;
  lastWatch_ = lastHeard_ = Clock::now();
  mayCancel_ = guarded_ || PQtransactionStatus(handle()) == PQTRANS_IDLE;
}

void Connection::beginPipeline() {
  running_ = true;
  answersBefore_ = 0;
  statement_ = nullptr;
  told_ = false;
  reached_ = false;
  earlier_.clear();
  guardSet_ = guarded_;
  PQenterPipelineMode(handle());
  if (guardSet_) {
    send("SAVEPOINT jet_guard", {});
    ++answersBefore_;
  }
}

Result Connection::run(std::initializer_list<std::string_view> statements, const Parameters& parametersOfLast,
                       std::string_view text) {
  beginRun(text);
  rowByRow_ = false;
  beginPipeline();
  for (const std::string_view& statement : statements) {
    const bool last = &statement == statements.end() - 1;
    send(statement, last ? parametersOfLast : Parameters());
    if (!last) ++answersBefore_;
  }
  if (guardSet_) send("RELEASE jet_guard", {});
  sent(PQpipelineSync(handle()));
  Result result = next();
  while (result && next()) {
  }
  return result;
}

void Connection::start(Prepared& statement, const Parameters& parameters, std::span<const std::string> first,
                       bool rowByRow, Reader* reader, std::string_view text) {
  beginRun(text);
  rowByRow_ = rowByRow;
  beginPipeline();
  for (const std::string& earlier : first) {
    send(earlier, {});
    ++answersBefore_;
  }
  sendPrepared(statement, parameters);
  if (guardSet_) send("RELEASE jet_guard", {});
  sent(PQpipelineSync(handle()));
  reader_ = reader;
}

Result Connection::next() {
  if (!running_) return {};
  for (; answersBefore_ > 0 && !fault_; --answersBefore_) {
    while (Result before = answer()) earlier_.push_back(std::move(before));
  }
  if (!fault_) {
    if (!reached_ && rowByRow_) PQsetSingleRowMode(handle());
    reached_ = true;
    Result result = answer();
    if (result && !fault_) return result;
  }
  readToEnd();
  throwFault();
  return {};
}

Result Connection::answer() {
  waitForServer();
  Result result(PQgetResult(handle()));
  const ExecStatusType status = result ? PQresultStatus(result.get()) : PGRES_EMPTY_QUERY;
  if (status == PGRES_FATAL_ERROR && !fault_) fault_ = std::move(result);
  if (!result && PQstatus(handle()) == CONNECTION_BAD) failLost(text_);
  return result;
}

// Up to the mark after the last statement.
void Connection::readToEnd() {
  for (bool atEnd = false; !atEnd;) {
    const Result result = answer();
    atEnd = result && PQresultStatus(result.get()) == PGRES_PIPELINE_SYNC;
  }
  const Result none(PQgetResult(handle()));
  PQexitPipelineMode(handle());
  running_ = false;
  reader_ = nullptr;
}

void Connection::throwFault() {
  if (!fault_) return;
  const Result fault = std::move(fault_);
  if (statement_ != nullptr && told_ && !reached_) statement_->name.clear();
  const bool undo = guardSet_ && PQtransactionStatus(handle()) == PQTRANS_INERROR;
  const bool canceled = canceled_;
  const std::string text = text_;
  if (undo) {
    guarded_ = false;
    try {
      run({"ROLLBACK TO jet_guard", "RELEASE jet_guard"});
    } catch (const Error& error) {
      if (error.connectionLost()) throw;
    }
    guarded_ = true;
  }
  canceled_ = canceled;
  fail(fault.get(), text);
}

void Connection::finish(const Reader* reader) noexcept {
  if (reader_ == reader) finishRun();
}

// Rows that are not wanted any more: a few are read, many are stopped.
void Connection::finishRun() noexcept {
  constexpr int kFew = 200;
  try {
    for (int i = 0; running_; ++i) {
      if (i == kFew && rowByRow_ && mayCancel_) cancel();
      next();
    }
    if (copying_) finishCopied();
  } catch (const Error&) {
    // The rest is not wanted; a lost connection is met by the next statement.
    running_ = false;
    copying_ = false;
  }
  reader_ = nullptr;
}

void Connection::startCopy(const std::string& statement, Reader* reader) {
  beginRun({});
  // A COPY has no guard that it could be undone to.
  mayCancel_ = mayCancel_ && !guarded_;
  sent(PQsendQuery(handle(), statement.c_str()));
  const Result result = answer();
  if (fault_) readCopyEnd();
  copying_ = true;
  reader_ = reader;
}

CopiedRow Connection::nextCopied() {
  while (copying_) {
    char* bytes = nullptr;
    const int size = PQgetCopyData(handle(), &bytes, 1);
    if (size > 0) {
      callWatcher();
      return {bytes, size};
    }
    if (size < 0) {
      copying_ = false;
      reader_ = nullptr;
      readCopyEnd();
    } else {
      waitForInput();
    }
  }
  return {};
}

void Connection::finishCopied() {
  if (mayCancel_) cancel();
  while (nextCopied()) {
  }
}

void Connection::setBulk(Bulk* bulk) {
  if (bulk_ == bulk) return;
  settle();
  bulk_ = bulk;
}

void Connection::forgetBulk() noexcept {
  if (Bulk* const bulk = std::exchange(bulk_, nullptr)) bulk->forget();
}

void Connection::beginCopy(const std::string& statement) {
  Bulk* const bulk = std::exchange(bulk_, nullptr);
  beginRun({});
  bulk_ = bulk;
  sent(PQsendQuery(handle(), statement.c_str()));
  const Result result = answer();
  if (fault_) readCopyEnd();
}

// The server may refuse rows long before their end; it is asked then.
void Connection::putCopy(std::string_view bytes) {
  constexpr std::size_t kMost = 1 << 20;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kMost))) {
    const int size = static_cast<int>(std::min(bytes.size(), kMost));
    int put = PQputCopyData(handle(), bytes.data(), size);
    for (; put == 0; put = PQputCopyData(handle(), bytes.data(), size)) waitToSend();
    if (put < 0) failLost({});
  }
  if (PQflush(handle()) < 0) failLost({});
}

void Connection::endCopy() {
  while (PQputCopyEnd(handle(), nullptr) == 0) waitToSend();
  readCopyEnd();
}

void Connection::abandonCopy() noexcept {
  try {
    while (PQputCopyEnd(handle(), "undone") == 0) waitToSend();
    readCopyEnd();
  } catch (const Error&) {
    // It was to fail.
  }
}

void Connection::readCopyEnd() {
  while (true) {
    const Result result = answer();
    if (!result && PQtransactionStatus(handle()) != PQTRANS_ACTIVE) break;
  }
  if (!fault_) return;
  const Result fault = std::move(fault_);
  fail(fault.get(), {});
}

void Connection::waitToSend() {
  if (PQflush(handle()) < 0) failLost({});
  callWatcher();
  pollfd socket{.fd = PQsocket(handle()), .events = POLLIN | POLLOUT, .revents = 0};
  if (poll(&socket, 1, patience()) > 0 && (socket.revents & POLLIN) != 0 && PQconsumeInput(handle()) == 0) failLost({});
}

void Connection::settle() {
  if (Bulk* const bulk = std::exchange(bulk_, nullptr)) bulk->finish();
  if (reader_ != nullptr) {
    Reader* const reader = reader_;
    reader->takeRest();
  } else if (running_ || copying_) {
    finishRun();
  }
  if (dropped_.size() < kManyDropped || guarded_ || PQtransactionStatus(handle()) != PQTRANS_IDLE) return;
  const std::vector<std::string> names = std::move(dropped_);
  dropped_.clear();
  for (const std::string& name : names) run({"DEALLOCATE " + name});
}

void Connection::drop(Prepared& statement) noexcept {
  if (statement_ == &statement) statement_ = nullptr;
  if (!statement.name.empty() && !lost_ && statement.connection == number_)
    dropped_.push_back(std::move(statement.name));
  statement.name.clear();
}

bool Connection::hasNotice() {
  if (running_ || copying_ || bulk_ != nullptr) return false;
  requireAlive({});
  if (PQconsumeInput(handle()) == 0) failLost({});
  bool any = false;
  while (PGnotify* const notice = PQnotifies(handle())) {
    any = any || notice->be_pid != PQbackendPID(handle());
    PQfreemem(notice);
  }
  return any;
}

void Connection::waitForServer() {
  while (true) {
    const int unsent = PQflush(handle());
    callWatcher();
    if (unsent < 0) return;  // the next result tells
    if (unsent == 0 && PQisBusy(handle()) == 0) return;
    if (!takeInput(unsent == 1)) return;
  }
}

void Connection::waitForInput() {
  callWatcher();
  if (!takeInput(false)) failLost(text_);
}

// False when there is nothing to wait for.
bool Connection::takeInput(bool unsent) {
  pollfd socket{.fd = PQsocket(handle()), .events = POLLIN, .revents = 0};
  if (unsent) socket.events |= POLLOUT;
  const int ready = poll(&socket, 1, patience());
  if (ready < 0) return errno == EINTR;
  if (ready > 0 && (socket.revents & POLLIN) != 0) lastHeard_ = Clock::now();
  return ready == 0 || (socket.revents & ~POLLOUT) == 0 || PQconsumeInput(handle()) != 0;
}

int Connection::patience() const {
  return watcher_ ? static_cast<int>(kWatchStep.count()) : -1;
}

// A statement that was canceled goes on being watched until it ends.
void Connection::callWatcher() {
  if (!watcher_) return;
  const Clock::time_point now = Clock::now();
  if (now - lastWatch_ < kWatchStep) return;
  lastWatch_ = now;
  const bool goOn = watcher_();
  if (canceled_ && now - std::max(canceledAt_, lastHeard_) > kAfterCancel) giveUp();
  if (goOn || canceled_) return;
  silent() ? giveUp() : cancel();
}

bool Connection::silent() const {
  return Clock::now() - lastHeard_ > kSilence;
}

// The request goes over a connection of its own, which takes as long as the network wants.
void Connection::cancel() noexcept {
  canceled_ = true;
  canceledAt_ = Clock::now();
  PGcancel* const request = PQgetCancel(handle());
  if (request == nullptr) return;
  try {
    canceling_ = std::make_shared<std::atomic<bool>>(true);
    std::thread([request, canceling = canceling_] {
      std::array<char, 256> reason{};
      PQcancel(request, reason.data(), static_cast<int>(reason.size()));
      PQfreeCancel(request);
      *canceling = false;
    }).detach();
  } catch (const std::system_error&) {
    *canceling_ = false;  // there is no thread to be had: the statement goes on
    PQfreeCancel(request);
  }
}

// A request that arrived late would end the next statement.
void Connection::waitForCancel() {
  constexpr std::chrono::milliseconds kLook{1};
  while (canceling_ && *canceling_) {
    callWatcher();
    if (Clock::now() - canceledAt_ > kAfterCancel) giveUp();
    std::this_thread::sleep_for(kLook);
  }
  canceling_.reset();
}

}  // namespace jet::postgres
