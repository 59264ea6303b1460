#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace capture {

// How the lines of a source arrive, one kind a source. Names, units and defaults are those of the site file.

enum class SerialFlow { None, RtsCts, XonXoff };

struct SerialSettings {
  std::filesystem::path device;
  unsigned baud = 9600;
  unsigned dataBits = 8;  // 5..8
  char parity = 'N';      // N, E, O
  unsigned stopBits = 1;  // 1 or 2
  SerialFlow flow = SerialFlow::None;
};

// Addresses that may send: single ones ("192.0.2.10") or networks ("10.0.0.0/24"); none: everybody.
using AllowedPeers = std::vector<std::string>;

struct ListenSettings {
  std::string address = "0.0.0.0";
  std::uint16_t port = 0;
  AllowedPeers allow;
};

// One step of a login: wait for a text, then send one. Either may be empty.
struct LoginStep {
  std::string expect;
  std::string send;
};

struct ConnectSettings {
  std::string host;
  std::uint16_t port = 0;
  std::vector<LoginStep> login;
};

// Mitel 5000, Inter-Tel 5000, Axxess: a login and records of their own over TCP.
struct Mitel5000Settings {
  std::string host;
  std::uint16_t port = 4000;
  std::string password;  // of the exchange's SMDR socket: ASCII, kLongestMitelPassword characters at most
};
inline constexpr std::size_t kLongestMitelPassword = 15;

struct UdpSettings {
  std::string address = "0.0.0.0";
  std::uint16_t port = 0;
  AllowedPeers allow;
};

struct FileSettings {
  std::filesystem::path path;
  bool fromEnd = false;  // the very first time: take only what is appended from now on
};

enum class AfterFile { Keep, Delete, Move };

struct FolderSettings {
  std::filesystem::path path;
  std::string pattern = "*";  // as the shell's
  AfterFile after = AfterFile::Keep;
  unsigned settle = 2;  // seconds without a change before a file counts as whole
};

struct AmiSettings {
  std::string host = "127.0.0.1";
  std::uint16_t port = 5038;
  std::string user;
  std::string secret;
};

struct HttpSettings {
  std::string address = "127.0.0.1";
  std::uint16_t port = 0;
  std::string path = "/";
  std::string token;
  std::filesystem::path certificate;  // PEM, with `key`: TLS. Needed on every address but the loopback
  std::filesystem::path key;
};

struct GetSettings {
  std::string url;                               // {from} and {to} are replaced by the times of the window
  std::string timeFormat = "%Y-%m-%d %H:%M:%S";  // strftime, local time; "%s" for seconds since 1970
  std::string user;
  std::string password;
  std::filesystem::path authority;  // PEM of the certificate that the exchange's was signed with
  bool acceptAnyCertificate = false;
  std::vector<std::string> id;  // keys of a JSON object that name it; none: its whole text
  unsigned every = 60;          // seconds
  unsigned overlap = 3600;      // seconds that every window reaches back
};

struct SqlSettings {
  std::string kind;  // mysql, postgresql
  std::string host;
  std::uint16_t port = 0;  // 0: the kind's own
  std::string socket;      // folder (postgresql) or file (mysql) of a local socket, in the place of host and port
  std::string user;
  std::string password;
  std::string database;
  std::string table;
  std::string time;                  // column of the time, by which rows are found
  std::vector<std::string> id;       // columns that name a row
  std::vector<std::string> columns;  // columns or expressions, in the order of the format's fields
  bool json = false;                 // a line is a JSON object with the columns' names, not CSV
  unsigned every = 5;                // seconds
  unsigned overlap = 14400;          // seconds: longer than the longest call
};

using TransportSettings =
    std::variant<SerialSettings, ListenSettings, ConnectSettings, Mitel5000Settings, UdpSettings, FileSettings,
                 FolderSettings, AmiSettings, HttpSettings, GetSettings, SqlSettings>;

// The key of the site file: serial, listen, connect, mitel5000, udp, file, folder, ami, http, get, sql.
[[nodiscard]] const char* transportName(const TransportSettings& settings);

}  // namespace capture
