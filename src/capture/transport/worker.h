#pragma once

#include <asio/awaitable.hpp>
#include <asio/co_spawn.hpp>
#include <asio/thread_pool.hpp>
#include <asio/use_awaitable.hpp>
#include <utility>

namespace capture {

// Runs a function that blocks (a database, a download) on a thread of its own and continues here with its result or
// exception. What the function touches must belong to it until then.
template <typename Result, typename Function>
asio::awaitable<Result> onWorker(asio::thread_pool& pool, Function function) {
  co_return co_await asio::co_spawn(
      pool, [function = std::move(function)]() mutable -> asio::awaitable<Result> { co_return function(); },
      asio::use_awaitable);
}

}  // namespace capture
