#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace mail {

struct Attachment {
  std::filesystem::path file;
  std::string name = {};  // as the recipient sees it
  std::string type = {};  // "application/pdf"
};

struct Message {
  std::string from = {};  // bare addresses
  std::string to = {};
  std::string subject = {};
  std::string text = {};              // plain, UTF-8
  std::string html = {};              // a whole page in place of `text`; empty: none
  std::string htmlCharset = "utf-8";  // of `html`
  std::optional<Attachment> attachment = {};
};

enum class Encryption {
  None,
  StartTls,  // the connection turns to TLS before anything is sent, or nothing is sent
  Tls,       // from the first byte
};

struct Server {
  std::string host = {};
  int port = 587;
  Encryption encryption = Encryption::StartTls;
  std::string user = {};  // empty: no login
  std::string password = {};
  std::string authorities = {};  // a PEM file of certificates to trust in place of the system's; empty: the system's
};

// The mail did not go. The text says why, and holds no password.
class MailError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Hands the mail to the server; done when the server has taken it. Blocks, two minutes at most; may run on a thread of
// its own. Throws MailError.
void send(const Server& server, const Message& message);

}  // namespace mail
