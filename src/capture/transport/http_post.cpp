#include <arpa/inet.h>
#include <microhttpd.h>

#include <asio/posix/stream_descriptor.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <cstring>
#include <fstream>
#include <iterator>

#include "capture/transport/http_body.h"
#include "capture/transport/kinds.h"
#include "capture/transport/session_transport.h"

namespace capture {

namespace {

constexpr std::size_t kLargestBody = 4 * 1024 * 1024;  // bytes
constexpr unsigned kIdleSeconds = 30;
constexpr unsigned kConnections = 1000;
constexpr std::chrono::milliseconds kLongestWait{1000};

struct Request {
  std::string body;
  bool tooLarge = false;
};

// Takes as long for every wrong token.
bool equalTokens(std::string_view left, std::string_view right) {
  unsigned different = left.size() == right.size() ? 0 : 1;
  for (std::size_t i = 0; i < left.size(); ++i) {
    different |=
        static_cast<unsigned char>(left[i]) ^ static_cast<unsigned char>(right.empty() ? 0 : right[i % right.size()]);
  }
  return different == 0;
}

std::string readAll(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw ConnectionFault(file.string() + ": cannot be read (" + std::strerror(errno) + ")");
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

sockaddr_storage addressOf(const HttpSettings& settings) {
  sockaddr_storage storage{};
  if (auto* four = reinterpret_cast<sockaddr_in*>(&storage);
      inet_pton(AF_INET, settings.address.c_str(), &four->sin_addr) == 1) {
    four->sin_family = AF_INET;
    four->sin_port = htons(settings.port);
  } else if (auto* six = reinterpret_cast<sockaddr_in6*>(&storage);
             inet_pton(AF_INET6, settings.address.c_str(), &six->sin6_addr) == 1) {
    six->sin6_family = AF_INET6;
    six->sin6_port = htons(settings.port);
  } else {
    throw ConnectionFault("'" + settings.address + "' is no address");
  }
  return storage;
}

// The exchange posts its records to us. It gets its 200 when they are on our disk, and a 503 when the disk refuses.
class HttpPost : public SessionTransport {
 public:
  HttpPost(HttpSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)), ready_(context), wake_(context) {}
  ~HttpPost() override { close(); }

 protected:
  asio::awaitable<void> session() override {
    open();
    established("listening on " + settings_.address + ":" + std::to_string(settings_.port) +
                (settings_.certificate.empty() ? "" : " (TLS)"));
    while (!stopping()) {
      MHD_run(daemon_);
      co_await ready();
    }
    close();
  }

  void interrupt() override {
    asio::error_code ignored;
    ready_.cancel(ignored);
    wake_.cancel();
  }

 private:
  void open() {
    close();
    sockaddr_storage address = addressOf(settings_);
    unsigned flags = MHD_USE_EPOLL | MHD_USE_ERROR_LOG;
    if (address.ss_family == AF_INET6) flags |= MHD_USE_IPv6;
    std::vector<MHD_OptionItem> options = {
        {MHD_OPTION_SOCK_ADDR, 0, &address},
        {MHD_OPTION_CONNECTION_LIMIT, kConnections, nullptr},
        {MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, nullptr},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&HttpPost::completed), nullptr},
        {MHD_OPTION_EXTERNAL_LOGGER, reinterpret_cast<std::intptr_t>(&HttpPost::ignoreLog), nullptr},
    };
    std::string certificate;
    std::string key;
    if (!settings_.certificate.empty()) {
      certificate = readAll(settings_.certificate);
      key = readAll(settings_.key);
      flags |= MHD_USE_TLS;
      options.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, certificate.data()});
      options.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, key.data()});
    }
    options.push_back({MHD_OPTION_END, 0, nullptr});
    daemon_ = MHD_start_daemon(flags, settings_.port, nullptr, nullptr, &HttpPost::answer, this, MHD_OPTION_ARRAY,
                               options.data(), MHD_OPTION_END);
    if (daemon_ == nullptr) {
      throw ConnectionFault("port " + std::to_string(settings_.port) + " on " + settings_.address +
                            " cannot be listened on: is it taken, or are certificate and key no pair?");
    }
    const MHD_DaemonInfo* info = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD);
    ready_.assign(info->epoll_fd);
  }

  void close() {
    if (daemon_ == nullptr) return;
    if (ready_.is_open()) ready_.release();  // the daemon's own
    MHD_stop_daemon(daemon_);
    daemon_ = nullptr;
  }

  // Returns when there is something to do, after a second at most: the library has time limits of its own.
  asio::awaitable<void> ready() {
    MHD_UNSIGNED_LONG_LONG wanted = 0;
    auto wait = kLongestWait;
    if (MHD_get_timeout(daemon_, &wanted) == MHD_YES && wanted < static_cast<unsigned long long>(wait.count())) {
      wait = std::chrono::milliseconds(static_cast<std::int64_t>(wanted));
    }
    wake_.expires_after(wait);
    wake_.async_wait([self = shared_from_this(), this](const asio::error_code& canceled) {
      asio::error_code ignored;
      if (!canceled) ready_.cancel(ignored);
    });
    asio::error_code canceled;
    co_await ready_.async_wait(asio::posix::stream_descriptor::wait_read,
                               asio::redirect_error(asio::use_awaitable, canceled));
    wake_.cancel();
  }

  static void ignoreLog(void*, const char*, va_list) {}

  static void completed(void*, MHD_Connection*, void** request, MHD_RequestTerminationCode) {
    delete static_cast<Request*>(*request);
    *request = nullptr;
  }

  static MHD_Result answer(void* self, MHD_Connection* connection, const char* url, const char* method, const char*,
                           const char* data, std::size_t* size, void** request) {
    return static_cast<HttpPost*>(self)->take(connection, url, method, {data, data == nullptr ? 0 : *size}, size,
                                              request);
  }

  // Called once for the head, for each piece of the body, and once at its end.
  MHD_Result take(MHD_Connection* connection, std::string_view url, std::string_view method, std::string_view piece,
                  std::size_t* size, void** kept) {
    auto* request = static_cast<Request*>(*kept);
    if (request == nullptr) {
      *kept = new Request;
      return MHD_YES;
    }
    if (*size > 0) {
      request->tooLarge = request->tooLarge || request->body.size() + piece.size() > kLargestBody;
      if (!request->tooLarge) request->body += piece;
      *size = 0;
      return MHD_YES;
    }
    const auto [status, text] = judge(connection, url, method, *request);
    return respond(connection, status, text);
  }

  std::pair<unsigned, std::string> judge(MHD_Connection* connection, std::string_view url, std::string_view method,
                                         const Request& request) {
    if (!isKnown(connection)) return {MHD_HTTP_UNAUTHORIZED, "The token is missing or wrong."};
    if (url != settings_.path) return {MHD_HTTP_NOT_FOUND, "Nothing is taken under this path."};
    if (method != "POST" && method != "PUT") return {MHD_HTTP_METHOD_NOT_ALLOWED, "Call records are posted."};
    if (request.tooLarge) return {MHD_HTTP_CONTENT_TOO_LARGE, "More than 4 MiB in one request."};
    std::vector<TakenLine> lines;
    for (std::string& line : linesOfBody(request.body)) lines.push_back({std::move(line), {}});
    if (!sink().takeNow(lines, Durability::AtOnce)) {
      return {MHD_HTTP_SERVICE_UNAVAILABLE, "The records could not be written to the disk; send them again."};
    }
    return {MHD_HTTP_OK, "OK"};
  }

  // The token is in the header "Authorization: Bearer", or in the address where an exchange cannot set headers.
  [[nodiscard]] bool isKnown(MHD_Connection* connection) const {
    if (settings_.token.empty()) return true;
    const char* header = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_AUTHORIZATION);
    const char* argument = MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, "token");
    return (header != nullptr && equalTokens(header, "Bearer " + settings_.token)) ||
           (argument != nullptr && equalTokens(argument, settings_.token));
  }

  static MHD_Result respond(MHD_Connection* connection, unsigned status, const std::string& text) {
    MHD_Response* response =
        MHD_create_response_from_buffer(text.size(), const_cast<char*>(text.data()), MHD_RESPMEM_MUST_COPY);
    if (status == MHD_HTTP_UNAUTHORIZED) MHD_add_response_header(response, MHD_HTTP_HEADER_WWW_AUTHENTICATE, "Bearer");
    const MHD_Result queued = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return queued;
  }

  HttpSettings settings_;
  MHD_Daemon* daemon_ = nullptr;
  asio::posix::stream_descriptor ready_;
  asio::steady_timer wake_;
};

}  // namespace

TransportPointer makeHttpPost(const HttpSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<HttpPost>(settings, context, std::move(sink));
}

}  // namespace capture
