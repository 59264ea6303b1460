#pragma once

#include <libpq-fe.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database.h"
#include "jet/postgres/address.h"
#include "jet/postgres/connect.h"
#include "jet/postgres/parameters.h"

namespace jet::postgres {

struct ResultCloser {
  void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ResultCloser>;

// A row of a COPY from the server; none after the last one.
class CopiedRow {
 public:
  CopiedRow() = default;
  CopiedRow(char* bytes, int size) : bytes_(bytes), size_(static_cast<std::size_t>(size)) {}

  explicit operator bool() const { return bytes_ != nullptr; }
  [[nodiscard]] std::string_view bytes() const { return {bytes_.get(), size_}; }

 private:
  struct Closer {
    void operator()(char* bytes) const { PQfreemem(bytes); }
  };
  std::unique_ptr<char, Closer> bytes_;
  std::size_t size_ = 0;
};

// A statement that the server is told of once, when it is first run.
struct Prepared {
  std::string sql;
  std::string name = {};         // as long as it is not known to the server, empty
  std::uint64_t connection = 0;  // the number of the connection that knows it
};

// Who reads rows while they arrive. Only one can: before anything else is run, he takes what is left to himself.
class Reader {
 public:
  virtual ~Reader() = default;
  virtual void takeRest() = 0;
};

// Who has rows on their way into a table. They come before anything else that is run.
class Bulk {
 public:
  virtual ~Bulk() = default;
  virtual void finish() = 0;
  virtual void forget() noexcept = 0;
};

// The connection to the server: round trips, waiting, and the translation of faults into jet::Error.
class Connection {
 public:
  Connection(const Address& address, OpenMode mode);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() = default;

  [[nodiscard]] const Address& address() const { return address_; }
  [[nodiscard]] const std::string& describe() const { return place_; }
  [[nodiscard]] bool readOnly() const { return readOnly_; }
  [[nodiscard]] bool lost() const { return lost_; }
  // After it was lost: connects again. False while the server cannot be reached, or an attempt takes more than a
  // moment; the next call then asks for its end.
  bool reconnect();
  [[nodiscard]] PGconn* handle() const { return handle_.get(); }

  // Statements of one round trip, all or none of them outside of a transaction; the result is that of the last.
  Result run(std::initializer_list<std::string_view> statements) { return run(statements, {}); }
  Result run(std::initializer_list<std::string_view> statements, const Parameters& parametersOfLast,
             std::string_view text = {});

  // Within a transaction a fault of a statement undoes that statement alone.
  void setGuarded(bool guarded) { guarded_ = guarded; }

  // Runs `statement` after those of `first`, in one round trip. The results are then asked for with next() until there
  // is none, at once or as the rows arrive, or finish() lets go of the rest. `text` is what errors keep.
  void start(Prepared& statement, const Parameters& parameters, std::span<const std::string> first, bool rowByRow,
             Reader* reader, std::string_view text);
  Result next();
  // Of a statement of `first`, once the first result was there.
  [[nodiscard]] const PGresult* earlier(std::size_t index) const { return earlier_[index].get(); }
  // Nothing when something else is running by now.
  void finish(const Reader* reader) noexcept;
  // A COPY to us, whose rows are asked for with nextCopied(); finish() lets go of the rest.
  void startCopy(const std::string& statement, Reader* reader);
  CopiedRow nextCopied();
  // The server forgets the statement, when there is time for it.
  void drop(Prepared& statement) noexcept;

  // Ends what is on its way: rows that another reader left, rows that go into a table.
  void settle();
  // The rows of this one are not settled yet; those of another one are before.
  void setBulk(Bulk* bulk);
  [[nodiscard]] bool isBulk(const Bulk* bulk) const { return bulk_ == bulk; }
  // Rows of a bulk that did not arrive are forgotten: its transaction, or a part of it, is being undone.
  void forgetBulk() noexcept;
  void beginCopy(const std::string& statement);
  void putCopy(std::string_view bytes);
  void endCopy();
  void abandonCopy() noexcept;

  // Moves with everything that is run.
  [[nodiscard]] std::uint64_t runs() const { return runs_; }
  // Takes in what the server has said by itself; false when it has said nothing.
  [[nodiscard]] bool hasNotice();

  void watch(std::function<bool()> watcher) { watcher_ = std::move(watcher); }
  // What runs has had no answer for long.
  [[nodiscard]] bool silent() const;
  // With the result's own text after the sentence. Never returns.
  [[noreturn]] void fail(const PGresult* result, std::string_view text);
  [[noreturn]] void failLost(std::string_view text);

 private:
  using Clock = std::chrono::steady_clock;

  void configure();
  void forgetLost();
  void requireAlive(std::string_view text);
  void send(std::string_view sql, const Parameters& parameters);
  void sendPrepared(Prepared& statement, const Parameters& parameters);
  void sent(int answer);
  void beginPipeline();
  // The next thing that the server answers in the pipeline; null between the answers to two statements.
  Result answer();
  void waitForServer();
  void waitForInput();
  void waitToSend();
  bool takeInput(bool unsent);
  void callWatcher();
  [[nodiscard]] int patience() const;
  [[noreturn]] void giveUp();
  [[noreturn]] void lose(const std::string& reason, std::string_view text);
  void cancel() noexcept;
  void waitForCancel();
  void readToEnd();
  void finishRun() noexcept;
  void beginRun(std::string_view text);
  void finishCopied();
  void throwFault();
  // The last answers to a COPY.
  void readCopyEnd();

  Address address_;
  std::string place_;
  bool readOnly_;
  bool lost_ = false;
  bool guarded_ = false;
  Handle handle_;
  std::optional<Attempt> attempt_;  // to connect anew, under way

  // Of what is on its way:
  bool running_ = false;
  bool copying_ = false;    // rows to us, by COPY
  bool mayCancel_ = false;  // without breaking a transaction
  int answersBefore_ = 0;   // of statements before the one whose rows are read
  bool reached_ = false;    // those are read
  std::vector<Result> earlier_;
  bool rowByRow_ = false;
  bool guardSet_ = false;
  Reader* reader_ = nullptr;
  std::string text_;
  Prepared* statement_ = nullptr;
  bool told_ = false;  // the server is being told of statement_ in the same round trip
  Result fault_;       // the first error

  Bulk* bulk_ = nullptr;
  std::uint64_t runs_ = 0;
  std::uint64_t number_ = 1;  // of connections so far
  std::uint64_t lastName_ = 0;
  std::vector<std::string> dropped_;
  std::function<bool()> watcher_;
  Clock::time_point lastWatch_;
  Clock::time_point lastHeard_;
  bool canceled_ = false;
  Clock::time_point canceledAt_;
  std::shared_ptr<std::atomic<bool>> canceling_;  // true while the request is on its way
};

}  // namespace jet::postgres
