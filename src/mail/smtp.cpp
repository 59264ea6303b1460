#include "mail/smtp.h"

#include <curl/curl.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <memory>
#include <random>

#include "base/printf.h"
#include "base/version.h"
#include "mail/address.h"

namespace mail {

namespace {

constexpr long kConnectSeconds = 20;
constexpr long kWholeSeconds = 120;

struct Release {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  void operator()(curl_mime* mime) const { curl_mime_free(mime); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

void append(Owned<curl_slist>& list, const std::string& line) {
  curl_slist* longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) throw MailError("Out of memory.");
  (void)list.release();
  list.reset(longer);
}

// Unique for good, so that a mail that came twice can be recognised.
std::string messageId(const std::string& from) {
  std::random_device random;
  return base::format("<%08x%08x%08x@%s>", random(), random(), static_cast<unsigned>(::getpid()),
                      from.substr(from.find('@') + 1));
}

std::string date() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  return base::format("%s, %d %s %d %02d:%02d:%02d +0000", kDays[utc.tm_wday], utc.tm_mday, kMonths[utc.tm_mon],
                      utc.tm_year + 1900, utc.tm_hour, utc.tm_min, utc.tm_sec);
}

Owned<curl_slist> headers(const Message& message) {
  Owned<curl_slist> list;
  append(list, "Date: " + date());
  append(list, "From: " + std::string(base::kProgramName) + " <" + message.from + ">");
  append(list, "To: <" + message.to + ">");
  append(list, "Subject: " + headerText(message.subject));
  append(list, "Message-ID: " + messageId(message.from));
  append(list, "Auto-Submitted: auto-generated");
  return list;
}

void addPart(curl_mime* mime, const std::string& body, const std::string& type) {
  curl_mimepart* part = curl_mime_addpart(mime);
  curl_mime_data(part, body.data(), body.size());
  curl_mime_type(part, type.c_str());
  curl_mime_encoder(part, "base64");
}

Owned<curl_mime> bodyOf(CURL* handle, const Message& message) {
  Owned<curl_mime> mime(curl_mime_init(handle));
  if (message.html.empty()) {
    addPart(mime.get(), message.text, "text/plain; charset=utf-8");
  } else {
    addPart(mime.get(), message.html, "text/html; charset=" + message.htmlCharset);
  }
  if (message.attachment) {
    curl_mimepart* part = curl_mime_addpart(mime.get());
    if (curl_mime_filedata(part, message.attachment->file.c_str()) != CURLE_OK) {
      throw MailError(base::format("%s cannot be read.", message.attachment->file.string()));
    }
    curl_mime_filename(part, message.attachment->name.c_str());
    curl_mime_type(part, message.attachment->type.c_str());
    curl_mime_encoder(part, "base64");
  }
  return mime;
}

// What the server said last; nothing that was sent is among it.
size_t keepAnswer(char* line, size_t size, size_t count, void* answer) {
  auto& text = *static_cast<std::string*>(answer);
  text.assign(line, size * count);
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.pop_back();
  return size * count;
}

void setServer(CURL* handle, const Server& server) {
  const bool tls = server.encryption == Encryption::Tls;
  const std::string url = base::format("%s://%s:%d", tls ? "smtps" : "smtp", server.host, server.port);
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
  curl_easy_setopt(handle, CURLOPT_USE_SSL,
                   static_cast<long>(server.encryption == Encryption::None ? CURLUSESSL_NONE : CURLUSESSL_ALL));
  if (!server.authorities.empty()) curl_easy_setopt(handle, CURLOPT_CAINFO, server.authorities.c_str());
  if (!server.user.empty()) {
    curl_easy_setopt(handle, CURLOPT_USERNAME, server.user.c_str());
    curl_easy_setopt(handle, CURLOPT_PASSWORD, server.password.c_str());
  }
  curl_easy_setopt(handle, CURLOPT_PROXY, "");  // a web proxy of the environment carries no mail
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(handle, CURLOPT_TIMEOUT, kWholeSeconds);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
}

}  // namespace

void send(const Server& server, const Message& message) {
  if (!isAddress(message.from)) throw MailError(base::format("\"%s\" cannot send: no mail address.", message.from));
  if (!isAddress(message.to)) throw MailError(base::format("\"%s\" is no mail address.", message.to));
  const Owned<CURL> handle(curl_easy_init());
  if (!handle) throw MailError("The mail library cannot be started.");
  setServer(handle.get(), server);
  const Owned<curl_slist> head = headers(message);
  const Owned<curl_mime> body = bodyOf(handle.get(), message);
  Owned<curl_slist> recipients;
  append(recipients, "<" + message.to + ">");
  curl_easy_setopt(handle.get(), CURLOPT_MAIL_FROM, ("<" + message.from + ">").c_str());
  curl_easy_setopt(handle.get(), CURLOPT_MAIL_RCPT, recipients.get());
  curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, head.get());
  curl_easy_setopt(handle.get(), CURLOPT_MIMEPOST, body.get());
  std::string answer;
  curl_easy_setopt(handle.get(), CURLOPT_HEADERFUNCTION, keepAnswer);
  curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &answer);
  std::array<char, CURL_ERROR_SIZE> fault{};
  curl_easy_setopt(handle.get(), CURLOPT_ERRORBUFFER, fault.data());
  const CURLcode code = curl_easy_perform(handle.get());
  if (code == CURLE_OK) return;
  // The library's own words about these say how many milliseconds it took, and would make each try another fault.
  const bool timed = code == CURLE_COULDNT_CONNECT || code == CURLE_OPERATION_TIMEDOUT;
  std::string why = fault[0] != '\0' && !timed ? fault.data() : curl_easy_strerror(code);
  if (!answer.empty() && answer.front() >= '4') why += ": \"" + answer + "\"";
  throw MailError(
      base::format("The mail server %s:%d did not take the mail to %s: %s", server.host, server.port, message.to, why));
}

}  // namespace mail
