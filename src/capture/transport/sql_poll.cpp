#include <asio/thread_pool.hpp>
#include <ctime>

#include "capture/time_units.h"
#include "capture/transport/kinds.h"
#include "capture/transport/seen_rows.h"
#include "capture/transport/session_transport.h"
#include "capture/transport/sql_query.h"
#include "capture/transport/worker.h"

namespace capture {

namespace {

constexpr std::size_t kRowsAStep = 500;  // rows a step

// Asks an exchange's database for new rows. A row appears when its call ends but is found by when it began, so every
// query reaches back longer than the longest call, and the rows' keys tell which are new.
class SqlPoll : public SessionTransport {
 public:
  SqlPoll(SqlSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)), pool_(1) {}

 protected:
  asio::awaitable<void> session() override {
    if (!newest_) co_await learn();
    while (!stopping()) {
      const base::DateTime since = newest_->plusSeconds(-std::int64_t{settings_.overlap});
      // The coroutine waits meanwhile, so that the thread may look at what has been seen.
      std::vector<SqlRow> rows = co_await onWorker<std::vector<SqlRow>>(pool_, [this, since] {
        return queryRows(settings_, since, [this](const SqlRow& row) { return seen_.contains(originOf(row)); });
      });
      established("database " + settings_.database);
      co_await take(std::move(rows));
      co_await pause(std::chrono::seconds(settings_.every));
    }
  }

  void interrupt() override {}

 private:
  // "20261124091424:" and the sum of the key.
  static std::string originOf(const SqlRow& row) {
    return row.time.format("%Y%m%d%H%M%S:") + SeenRows::originOf(row.key);
  }
  static std::optional<base::DateTime> timeOf(const std::string& origin) {
    if (origin.size() < 15 || origin[14] != ':') return std::nullopt;
    return base::DateTime::fromStored(origin.substr(0, 4) + '-' + origin.substr(4, 2) + '-' + origin.substr(6, 2) +
                                      ' ' + origin.substr(8, 2) + ':' + origin.substr(10, 2) + ':' +
                                      origin.substr(12, 2));
  }

  // The newest row in the journal; the first time the newest in the database.
  asio::awaitable<void> learn() {
    std::optional<base::DateTime> newest;
    sink().forEachOrigin(0, [&](const std::string& origin, std::int64_t arrival) {
      const auto time = timeOf(origin);
      if (time && (!newest || *time > *newest)) newest = time;
      seen_.add(origin, arrival);
    });
    if (!newest) {
      newest = co_await onWorker<base::DateTime>(pool_, [this] { return newestRow(settings_); });
    }
    newest_ = newest;
  }

  asio::awaitable<void> take(std::vector<SqlRow> rows) {
    const std::int64_t now = std::time(nullptr) * kMillisecondsPerSecond;
    for (std::size_t begin = 0; begin < rows.size() && !stopping(); begin += kRowsAStep) {
      std::vector<TakenLine> lines;
      for (std::size_t i = begin; i < std::min(rows.size(), begin + kRowsAStep); ++i) {
        newest_ = std::max(*newest_, rows[i].time);
        const std::string origin = originOf(rows[i]);
        seen_.add(origin, now);
        lines.push_back({std::move(rows[i].line), origin});
      }
      co_await sink().take(std::move(lines), Durability::AtOnce);
    }
    // A row can come again while its time is inside of the window, which lasts as long as no newer row comes; what has
    // arrived two windows before the newest row's time is out of it.
    if (seen_.size() > kManyRows) {
      seen_.forgetIf([this](const std::string& origin) {
        const auto time = timeOf(origin);
        return time && *time < newest_->plusSeconds(-2 * std::int64_t{settings_.overlap});
      });
    }
  }

  static constexpr std::size_t kManyRows = 20'000;

  SqlSettings settings_;
  asio::thread_pool pool_;
  SeenRows seen_;
  std::optional<base::DateTime> newest_;
};

}  // namespace

TransportPointer makeSqlPoll(const SqlSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<SqlPoll>(settings, context, std::move(sink));
}

}  // namespace capture
