#include <curl/curl.h>

#include <asio/thread_pool.hpp>
#include <atomic>
#include <ctime>
#include <map>
#include <nlohmann/json.hpp>

#include "capture/transport/http_body.h"
#include "capture/transport/kinds.h"
#include "capture/transport/seen_rows.h"
#include "capture/transport/session_transport.h"
#include "capture/transport/worker.h"

namespace capture {

namespace {

constexpr long kConnectSeconds = 15;
constexpr long kWholeSeconds = 120;
constexpr std::size_t kLargestAnswer = 64 * 1024 * 1024;

struct CurlCloser {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Curl = std::unique_ptr<CURL, CurlCloser>;

std::size_t keep(const char* bytes, std::size_t size, std::size_t count, void* to) {
  auto& body = *static_cast<std::string*>(to);
  if (body.size() + size * count > kLargestAnswer) return 0;
  body.append(bytes, size * count);
  return size * count;
}

// Another value than 0 ends the download.
int giveUp(void* asked, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const std::atomic<bool>*>(asked)->load() ? 1 : 0;
}

std::string timeText(const std::string& format, std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  char text[128];
  return {text, std::strftime(text, sizeof text, format.c_str(), &local)};
}

void replace(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// The whole answer. Throws ConnectionFault when there is none or its status is an error.
std::string fetch(const GetSettings& settings, std::time_t from, std::time_t to, const std::atomic<bool>& stop) {
  const Curl curl(curl_easy_init());
  if (!curl) throw ConnectionFault("no memory for a download");
  const auto escaped = [&](std::time_t time) {
    const std::string text = timeText(settings.timeFormat, time);
    char* bytes = curl_easy_escape(curl.get(), text.c_str(), static_cast<int>(text.size()));
    std::string result = bytes == nullptr ? std::string() : bytes;
    curl_free(bytes);
    return result;
  };
  std::string url = settings.url;
  replace(url, "{from}", escaped(from));
  replace(url, "{to}", escaped(to));
  std::string body;
  char reason[CURL_ERROR_SIZE] = "";
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_FAILONERROR, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, kWholeSeconds);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, &keep);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &body);
  curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, reason);
  curl_easy_setopt(curl.get(), CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_XFERINFOFUNCTION, &giveUp);
  curl_easy_setopt(curl.get(), CURLOPT_XFERINFODATA, const_cast<std::atomic<bool>*>(&stop));
  if (!settings.user.empty()) {
    curl_easy_setopt(curl.get(), CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
    curl_easy_setopt(curl.get(), CURLOPT_USERNAME, settings.user.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PASSWORD, settings.password.c_str());
  }
  if (!settings.authority.empty()) curl_easy_setopt(curl.get(), CURLOPT_CAINFO, settings.authority.c_str());
  if (settings.acceptAnyCertificate) {
    curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
  }
  const CURLcode code = curl_easy_perform(curl.get());
  if (code != CURLE_OK) {
    throw ConnectionFault("the call list could not be fetched: " +
                          std::string(reason[0] != '\0' ? reason : curl_easy_strerror(code)));
  }
  return body;
}

// Asks the exchange for its call list in windows that overlap, and takes each record once.
class HttpGet : public SessionTransport {
 public:
  HttpGet(GetSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)), pool_(1) {}

 protected:
  asio::awaitable<void> session() override {
    learn();
    while (!stopping()) {
      const std::time_t to = std::time(nullptr);
      const std::time_t from = reached_ - static_cast<std::time_t>(settings_.overlap);
      const std::string body =
          co_await onWorker<std::string>(pool_, [this, from, to] { return fetch(settings_, from, to, stop_); });
      established("fetched");
      co_await take(body, to);
      reached_ = to;
      seen_.forgetBefore((static_cast<std::int64_t>(to) - 2 * keepSeconds()) * 1000);
      co_await pause(std::chrono::seconds(settings_.every));
    }
  }

  void interrupt() override { stop_ = true; }

 private:
  [[nodiscard]] std::int64_t keepSeconds() const { return std::int64_t{settings_.overlap} + 86400; }

  // The window begins where the lines in the journal end.
  void learn() {
    const std::int64_t now = std::time(nullptr);
    seen_ = {};
    reached_ = static_cast<std::time_t>(now);
    sink().forEachOrigin(0, [this](const std::string& origin, std::int64_t arrival) {
      seen_.add(origin, arrival);
      reached_ = static_cast<std::time_t>(arrival / 1000);
    });
  }

  // The record's own key; for a text that is none of JSON the whole of it.
  [[nodiscard]] std::string keyOf(const std::string& line) const {
    if (settings_.id.empty()) return line;
    const nlohmann::json record = nlohmann::json::parse(line, nullptr, false);
    if (!record.is_object()) return line;
    std::string key;
    for (const std::string& name : settings_.id) {
      const auto field = record.find(name);
      if (field == record.end()) return line;
      key += field->dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '|';
    }
    return key;
  }

  asio::awaitable<void> take(const std::string& body, std::time_t now) {
    std::vector<TakenLine> lines;
    std::map<std::string, int> count;  // two equal lines in one answer are two calls
    for (std::string& line : linesOfBody(body)) {
      const std::string key = keyOf(line);
      const std::string origin = SeenRows::originOf(key == line ? key + std::to_string(++count[key]) : key);
      if (seen_.contains(origin)) continue;
      seen_.add(origin, std::int64_t{now} * 1000);
      lines.push_back({std::move(line), origin});
    }
    if (!lines.empty()) co_await sink().take(std::move(lines), Durability::AtOnce);
  }

  GetSettings settings_;
  asio::thread_pool pool_;
  std::atomic<bool> stop_ = false;
  SeenRows seen_;
  std::time_t reached_ = 0;
};

}  // namespace

TransportPointer makeHttpGet(const GetSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<HttpGet>(settings, context, std::move(sink));
}

}  // namespace capture
